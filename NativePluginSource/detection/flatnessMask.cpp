// The plain form of both passes, which any faster form must equal bit for bit.
//
// The rows above and below are chosen once per image row, held at the image's border there, so
// that the inner loop only holds columns. Counts are plain ints: sums of 16-bit comparison
// results, converted back at every step, are miscompiled by some optimisers.
#include "detection/flatnessMask.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace QVR {

namespace {

std::uint32_t heldBefore(std::uint32_t position, std::uint32_t distance) {
    return distance > position ? 0 : position - distance;
}

std::uint32_t heldAfter(std::uint32_t position, std::uint32_t distance, std::uint32_t size) {
    const std::uint32_t room = size - 1 - position;
    return distance > room ? size - 1 : position + distance;
}

std::uint32_t doubled(std::uint32_t radius) {
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    return radius > most / 2 ? most : 2 * radius;
}

// One row and the two rows at a distance above and below it.
struct RowTriple {
    RowTriple(const DepthView& image, std::uint32_t y, std::uint32_t radius)
        : above(image.pixels + std::size_t{heldBefore(y, radius)} * image.width),
          middle(image.pixels + std::size_t{y} * image.width),
          below(image.pixels + std::size_t{heldAfter(y, radius, image.height)} * image.width),
          width(image.width), distance(radius) {}

    int countSame(std::uint32_t x, int threshold) const {
        const std::uint32_t left = heldBefore(x, distance);
        const std::uint32_t right = heldAfter(x, distance, width);
        const int center = middle[x];
        const auto same = [center, threshold](int depth) {
            return std::abs(center - depth) < threshold ? 1 : 0;
        };
        return same(middle[left]) + same(middle[right]) + same(above[x]) + same(below[x]) +
               same(above[left]) + same(above[right]) + same(below[left]) + same(below[right]);
    }

    const unsigned short* above;
    const unsigned short* middle;
    const unsigned short* below;
    std::uint32_t width;
    std::uint32_t distance;
};

} // namespace

int countSameNeighbours(const DepthView& image, std::uint32_t x, std::uint32_t y,
                        std::uint32_t radius, std::uint16_t threshold) {
    return RowTriple(image, y, radius).countSame(x, threshold);
}

FlatnessResult markFlatPixels(const DepthView& image, const FlatnessSettings& settings,
                              std::uint8_t* mask) {
    FlatnessResult result;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const RowTriple inner(image, y, settings.radius);
        const RowTriple outer(image, y, doubled(settings.radius));
        std::uint8_t* const maskRow = mask + std::size_t{y} * image.width;
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const std::uint32_t depth = inner.middle[x];
            if (depth <= settings.nearLimit || depth >= settings.farLimit) {
                maskRow[x] = 0;
                continue;
            }
            const int mark =
                inner.countSame(x, settings.threshold) + outer.countSame(x, settings.threshold);
            maskRow[x] = static_cast<std::uint8_t>(mark);
            result.anyInRange = true;
            if (mark >= flatMark) {
                result.nearest = std::min(result.nearest, depth);
            }
        }
    }
    return result;
}

void clearBeyondCut(const unsigned short* depth, std::size_t pixelCount, std::uint16_t cut,
                    std::uint8_t* mask) {
    for (std::size_t i = 0; i < pixelCount; ++i) {
        mask[i] = depth[i] > cut ? std::uint8_t{0} : mask[i];
    }
}

} // namespace QVR
