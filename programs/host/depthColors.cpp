#include "host/depthColors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace host {

namespace {

struct Stop {
    float red, green, blue;
};

// From near to far, evenly spaced; brightness falls with the distance.
constexpr std::array<Stop, 7> stops = {{
    {255, 236, 190},
    {253, 174, 72},
    {235, 96, 52},
    {178, 48, 92},
    {104, 40, 132},
    {48, 52, 128},
    {20, 34, 66},
}};

std::uint8_t mix(float a, float b, float share) {
    return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
}

} // namespace

DepthRange usualRange(const programs::DepthImage& depth) {
    std::vector<std::size_t> counts(65536, 0);
    std::size_t measured = 0;
    for (const std::uint16_t value : depth.values) {
        if (value != 0) {
            ++counts[value];
            ++measured;
        }
    }
    if (measured == 0) {
        return {};
    }
    const std::size_t outer = measured / 100;
    DepthRange range;
    std::size_t passed = 0;
    for (std::size_t value = 1; value < counts.size(); ++value) {
        if (counts[value] == 0) {
            continue;
        }
        if (passed <= outer) {
            range.near = static_cast<std::uint16_t>(value);
        }
        passed += counts[value];
        range.far = static_cast<std::uint16_t>(value);
        if (passed >= measured - outer) {
            break;
        }
    }
    return range;
}

programs::Color depthColor(std::uint16_t depth, const DepthRange& range) {
    if (depth == 0) {
        return {};
    }
    const float span = std::max(1.0f, static_cast<float>(range.far - range.near));
    const float share =
        std::clamp((static_cast<float>(depth) - static_cast<float>(range.near)) / span, 0.0f, 1.0f);
    const float position = share * static_cast<float>(stops.size() - 1);
    const auto index = std::min(static_cast<std::size_t>(position), stops.size() - 2);
    const float between = position - static_cast<float>(index);
    const Stop& a = stops[index];
    const Stop& b = stops[index + 1];
    return {mix(a.red, b.red, between), mix(a.green, b.green, between),
            mix(a.blue, b.blue, between)};
}

programs::ColorImage colorDepth(const programs::DepthImage& depth, const DepthRange& range) {
    programs::ColorImage colors(depth.width, depth.height);
    for (std::size_t i = 0; i < depth.values.size(); ++i) {
        colors.values[i] = depthColor(depth.values[i], range);
    }
    return colors;
}

} // namespace host
