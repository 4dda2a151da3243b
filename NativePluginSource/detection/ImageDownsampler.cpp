#include "detection/ImageDownsampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace QVR {

namespace {

// One axis of the conversion. The scale is source / target with rounding, so the last target
// pixel can round to the source size and is held at the last source pixel.
int convertAxis(int position, unsigned int sourceSize, unsigned int targetSize) {
    if (targetSize == 0) {
        return 0;
    }
    const float fraction = static_cast<float>(position) / static_cast<float>(targetSize);
    const float scaled = static_cast<float>(sourceSize) * fraction;
    // Only the low 32 bits count below; those of a result that no 64-bit integer holds are 0.
    constexpr float beyondLong = 9223372036854775808.0f;
    const std::uint32_t rounded =
        scaled < beyondLong ? static_cast<std::uint32_t>(std::llrint(scaled)) : 0U;
    return static_cast<int>(sourceSize > rounded ? rounded : sourceSize - 1U);
}

bool isIndexable(unsigned int width, unsigned int height) {
    const std::uint64_t pixels = std::uint64_t{width} * height;
    return pixels > 0 && pixels <= std::uint64_t{std::numeric_limits<int>::max()};
}

} // namespace

ImageDownsampler::ImageDownsampler(unsigned int fullWidth, unsigned int fullHeight,
                                   unsigned int reducedWidth, unsigned int reducedHeight)
    : sourceWidth(fullWidth), sourceHeight(fullHeight), targetWidth(reducedWidth),
      targetHeight(reducedHeight) {
    if (!isIndexable(sourceWidth, sourceHeight) || !isIndexable(targetWidth, targetHeight)) {
        return;
    }
    targetPixelCount = targetWidth * targetHeight;
    sourceIndexMap = std::make_unique<int[]>(targetPixelCount);
    output = std::make_unique<unsigned short[]>(targetPixelCount);

    int* index = sourceIndexMap.get();
    for (unsigned int targetY = 0; targetY < targetHeight; ++targetY) {
        for (unsigned int targetX = 0; targetX < targetWidth; ++targetX) {
            int x = static_cast<int>(targetX);
            int y = static_cast<int>(targetY);
            convertTargetPixelToSourcePixel(x, y);
            // Both are held inside the source image, whose pixels an int can number.
            *index++ = y * static_cast<int>(sourceWidth) + x;
        }
    }
}

void ImageDownsampler::convertTargetPixelToSourcePixel(int& x, int& y) {
    x = convertAxis(std::max(x, 0), sourceWidth, targetWidth);
    y = convertAxis(std::max(y, 0), sourceHeight, targetHeight);
}

const unsigned short* ImageDownsampler::downSample16bitImage(const unsigned short* source) {
    if (sourceIndexMap == nullptr) {
        return nullptr;
    }
    const int* const map = sourceIndexMap.get();
    unsigned short* const reduced = output.get();
    for (unsigned int i = 0; i < targetPixelCount; ++i) {
        reduced[i] = source[map[i]];
    }
    return reduced;
}

} // namespace QVR
