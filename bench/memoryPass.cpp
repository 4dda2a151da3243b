#include "memoryPass.h"

namespace bench {

void memoryPass(const std::uint16_t* __restrict depth, std::size_t pixelCount,
                std::uint8_t* __restrict marks) {
    for (std::size_t i = 0; i < pixelCount; ++i) {
        marks[i] = static_cast<std::uint8_t>(depth[i] >> 8);
    }
}

} // namespace bench
