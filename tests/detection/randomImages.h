// Random and adversarial depth images and settings, reproducible from a seed.
#pragma once

#include "literalDetection.h"

#include <cstdint>
#include <random>

namespace literal {

class RandomCases {
  public:
    explicit RandomCases(std::uint32_t seed) : source_(seed) {}

    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(source_() % end); }
    std::uint16_t depth() { return static_cast<std::uint16_t>(source_()); }
    bool oneIn(std::uint32_t number) { return below(number) == 0; }

    // Limits in any order, radii up to beyond every image, thresholds over all 16 bits, and small
    // run settings, so that narrow images have runs.
    Settings settings();

    Image image(std::uint32_t width, std::uint32_t height, const Settings& settings);

    // A mask row of runs and gaps about as long as the limits that settings() draws.
    std::vector<std::uint8_t> maskRow(std::uint32_t width);

  private:
    std::uint16_t pixel(std::uint32_t kind, std::uint32_t x, std::uint32_t y, std::uint16_t base,
                        const Settings& settings);

    std::mt19937 source_;
};

} // namespace literal
