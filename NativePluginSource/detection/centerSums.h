// The sums behind a blob's centre.
#pragma once

#include <cstdint>

namespace QVR {

// All sums wrap as unsigned 64-bit.
struct CenterSums {
    std::uint64_t weight = 0;
    std::uint64_t weightedX = 0;
    std::uint64_t weightedY = 0;
    std::uint64_t depth = 0; // unweighted
    std::uint64_t count = 0; // pixels; the centre uses its low 16 bits
};

// Adds the pixels of columns `first` to `last` (inclusive, inside the row) of image row `y` that
// are nearer than `cutoff`. A pixel's weight is its distance from the cutoff times `bias`.
void addRowToCenter(const unsigned short* depthRow, std::uint32_t first, std::uint32_t last,
                    std::uint32_t y, std::uint16_t cutoff, std::uint32_t bias, CenterSums& sums);

} // namespace QVR
