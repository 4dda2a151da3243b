// Colour pictures for a folder of depth images.
#pragma once

#include "source_options.h"

#include <cstdint>
#include <span>

namespace camera {

// `from` (RGB bytes) stretched to the size of `to`; each pixel takes the nearest one.
void scaleColor(std::span<const std::uint8_t> from, ImageSize fromSize, std::span<std::uint8_t> to,
                ImageSize toSize);

// A grey picture of `depth` stretched likewise: the nearest sample white, farther ones darker, no
// measurement black.
void paintDepth(std::span<const std::uint16_t> depth, ImageSize depthSize,
                std::span<std::uint8_t> to, ImageSize toSize);

} // namespace camera
