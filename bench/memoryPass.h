// The least work a pass over a depth image can be: read each 16-bit pixel, write an 8-bit mark.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

// Writes the high byte of each pixel. The compiler makes a plain vector loop of it.
void memoryPass(const std::uint16_t* depth, std::size_t pixelCount, std::uint8_t* marks);

} // namespace bench
