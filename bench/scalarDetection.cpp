#include "scalarDetection.h"

#include <algorithm>
#include <cstdlib>

namespace bench {

namespace {

int sameNeighbours(const literal::Image& image, int x, int y, int radius, int threshold) {
    const int width = static_cast<int>(image.width);
    const int height = static_cast<int>(image.height);
    const int left = std::max(x - radius, 0);
    const int right = x + radius >= width ? width - 1 : x + radius;
    const int top = std::max(y - radius, 0);
    const int bottom = y + radius >= height ? height - 1 : y + radius;
    const std::uint16_t* const depth = image.data();
    const int center = depth[y * width + x];
    int same = 0;
    same += std::abs(center - depth[y * width + left]) < threshold ? 1 : 0;
    same += std::abs(center - depth[y * width + right]) < threshold ? 1 : 0;
    same += std::abs(center - depth[top * width + x]) < threshold ? 1 : 0;
    same += std::abs(center - depth[bottom * width + x]) < threshold ? 1 : 0;
    same += std::abs(center - depth[top * width + left]) < threshold ? 1 : 0;
    same += std::abs(center - depth[top * width + right]) < threshold ? 1 : 0;
    same += std::abs(center - depth[bottom * width + left]) < threshold ? 1 : 0;
    same += std::abs(center - depth[bottom * width + right]) < threshold ? 1 : 0;
    return same;
}

} // namespace

std::uint16_t scalarProcessFrame(const literal::Image& image, const literal::Settings& settings,
                                 std::uint16_t lastCut, std::uint8_t* mask) {
    const int radius = static_cast<int>(settings.flatnessRadius);
    const std::uint16_t* const depth = image.data();
    std::uint32_t nearest = 64000;
    bool anyInRange = false;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const std::size_t i = std::size_t{y} * image.width + x;
            if (depth[i] <= settings.nearNoiseCutoff || depth[i] >= settings.farLimit) {
                mask[i] = 0;
                continue;
            }
            const int column = static_cast<int>(x);
            const int row = static_cast<int>(y);
            const int mark =
                sameNeighbours(image, column, row, radius, settings.flatnessThreshold) +
                sameNeighbours(image, column, row, 2 * radius, settings.flatnessThreshold);
            mask[i] = static_cast<std::uint8_t>(mark);
            anyInRange = true;
            if (mark >= 11) {
                nearest = std::min<std::uint32_t>(nearest, depth[i]);
            }
        }
    }
    if (!anyInRange) {
        return lastCut;
    }
    const std::uint32_t base = nearest > settings.farLimit ? lastCut : nearest;
    const double t = std::clamp((double{1} * base - settings.nearNoiseCutoff) /
                                    (settings.farLimit - settings.nearNoiseCutoff),
                                0.0, 1.0);
    const double band = settings.maxDiffNear + (settings.maxDiffFar - settings.maxDiffNear) * t;
    const auto cut = static_cast<std::uint16_t>(base + static_cast<std::uint32_t>(band));
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        if (depth[i] > cut) {
            mask[i] = 0;
        }
    }
    return cut;
}

} // namespace bench
