// Depth as colours that a person can read: near is warm, far is cold, black was not measured.
#pragma once

#include "common/Image.h"

#include <cstdint>

namespace host {

struct DepthRange {
    std::uint16_t near = 0; // warmest at and before this depth
    std::uint16_t far = 0;  // coldest at and beyond it

    bool operator==(const DepthRange&) const = default;
};

// The depths between which all but the outermost hundredth at each end of the measurements lie;
// 0 to 0 when nothing was measured.
DepthRange usualRange(const programs::DepthImage& depth);

programs::Color depthColor(std::uint16_t depth, const DepthRange& range);

programs::ColorImage colorDepth(const programs::DepthImage& depth, const DepthRange& range);

} // namespace host
