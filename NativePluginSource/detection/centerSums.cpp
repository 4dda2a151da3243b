#include "detection/centerSums.h"

namespace QVR {

void addRowToCenter(const unsigned short* depthRow, std::uint32_t first, std::uint32_t last,
                    std::uint32_t y, std::uint16_t cutoff, std::uint32_t bias, CenterSums& sums) {
    std::uint64_t rowWeight = 0;
    for (std::uint64_t x = first; x <= last; ++x) {
        const std::uint16_t depth = depthRow[x];
        if (depth < cutoff) {
            const std::uint64_t weight =
                static_cast<std::uint64_t>(static_cast<std::uint32_t>(cutoff - depth)) * bias;
            rowWeight += weight;
            sums.weightedX += weight * x;
            sums.depth += depth;
            sums.count += 1;
        }
    }
    sums.weight += rowWeight;
    sums.weightedY += rowWeight * y;
}

} // namespace QVR
