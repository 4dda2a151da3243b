#include "images/color_picture.h"

#include <algorithm>
#include <cstddef>

namespace camera {
namespace {

// The sample under the middle of pixel `index` of `count`, among `sourceCount`.
std::size_t nearestIndex(int index, int count, int sourceCount) {
    return (static_cast<std::size_t>(index) * 2 + 1) * static_cast<std::size_t>(sourceCount) /
           (static_cast<std::size_t>(count) * 2);
}

// Calls paint(index of the source pixel, the three bytes to fill) for every pixel of `to`.
template <class Paint>
void forEachPixel(ImageSize fromSize, std::span<std::uint8_t> to, ImageSize toSize, Paint&& paint) {
    std::uint8_t* pixel = to.data();
    for (int y = 0; y < toSize.height; ++y) {
        const std::size_t row = nearestIndex(y, toSize.height, fromSize.height) *
                                static_cast<std::size_t>(fromSize.width);
        for (int x = 0; x < toSize.width; ++x, pixel += 3) {
            paint(row + nearestIndex(x, toSize.width, fromSize.width), pixel);
        }
    }
}

} // namespace

void scaleColor(std::span<const std::uint8_t> from, ImageSize fromSize, std::span<std::uint8_t> to,
                ImageSize toSize) {
    forEachPixel(fromSize, to, toSize, [&](std::size_t index, std::uint8_t* pixel) {
        std::copy_n(from.data() + index * 3, 3, pixel);
    });
}

void paintDepth(std::span<const std::uint16_t> depth, ImageSize depthSize,
                std::span<std::uint8_t> to, ImageSize toSize) {
    constexpr int darkest = 32;
    int nearest = 65535;
    int farthest = 1;
    for (const int sample : depth) {
        if (sample != 0) {
            nearest = std::min(nearest, sample);
            farthest = std::max(farthest, sample);
        }
    }
    const int range = std::max(farthest - nearest, 1);
    forEachPixel(depthSize, to, toSize, [&](std::size_t index, std::uint8_t* pixel) {
        const int sample = depth[index];
        const int grey = sample ? 255 - (sample - nearest) * (255 - darkest) / range : 0;
        std::fill_n(pixel, 3, static_cast<std::uint8_t>(grey));
    });
}

} // namespace camera
