#include "detection/cImageBlob.h"

#include "detection/detectionKernels.h"
#include "foundation/Logger.h"

#include <algorithm>

namespace QVR {

void cImageBlob::setSize(unsigned int imageWidth, unsigned int imageHeight) {
    width = imageWidth;
    height = imageHeight;
    lineStart.resize(height, -1);
    lineEnd.resize(height, -1);
}

void cImageBlob::reset() {
    std::fill(lineStart.begin(), lineStart.end(), -1);
    std::fill(lineEnd.begin(), lineEnd.end(), -1);
    minX = 65535;
    maxX = 0;
    minY = 65535;
    maxY = 0;
    sumStart = 0;
    sumEnd = 0;
    lineCount = 0;
    lineCenterX = 0.0f;
    centerX = -1.0f;
    centerY = -1.0f;
    centerDepth = -1.0f;
    valid = false;
    dirty = true;
}

void cImageBlob::addLine(unsigned long start, unsigned long end, unsigned int y) {
    if (y >= lineStart.size() || y >= lineEnd.size()) {
        return;
    }
    if (start > end) {
        Logger::Log("BAD INPUT!");
    }
    if (valid) {
        minX = std::min<std::uint64_t>(minX, start);
        maxX = std::max<std::uint64_t>(maxX, end);
        minY = std::min<std::uint64_t>(minY, y);
        maxY = std::max<std::uint64_t>(maxY, y);
    } else {
        minY = y;
        maxY = y;
        valid = true;
    }
    lineStart[y] = static_cast<std::int32_t>(start);
    lineEnd[y] = static_cast<std::int32_t>(end);
    lineCount += 1;
    sumStart += start;
    sumEnd += end;
    lineCenterX = static_cast<float>(sumStart + sumEnd) / static_cast<float>(2 * lineCount);
    dirty = true;
}

void cImageBlob::getLimits(int& left, int& right, int& top, int& bottom) {
    left = static_cast<std::int32_t>(minX);
    right = static_cast<std::int32_t>(maxX);
    top = static_cast<std::int32_t>(minY);
    bottom = static_cast<std::int32_t>(maxY);
}

void cImageBlob::calculateCenter(const unsigned short* depth, unsigned short, unsigned short cutoff,
                                 unsigned int bias) {
    if (!valid) {
        return;
    }
    // Crossed row limits leave the sums empty, and the blob becomes invalid below.
    const DetectionKernels& kernels = activeKernels();
    CenterSums sums;
    const std::size_t rows = std::min({lineStart.size(), lineEnd.size(), std::size_t{height}});
    for (std::size_t y = minY; y < rows && y <= maxY; ++y) {
        const std::int64_t start = lineStart[y];
        const std::int64_t end = std::min<std::int64_t>(lineEnd[y], std::int64_t{width} - 1);
        if (start >= 0 && start <= end) {
            kernels.addRowToCenter(depth + y * width, static_cast<std::uint32_t>(start),
                                   static_cast<std::uint32_t>(end), static_cast<std::uint32_t>(y),
                                   cutoff, bias, sums);
        }
    }

    const auto count = static_cast<std::uint16_t>(sums.count);
    if (sums.weight == 0 || count == 0) {
        valid = false;
        return;
    }
    centerX = static_cast<float>(sums.weightedX / sums.weight);
    centerY = static_cast<float>(sums.weightedY / sums.weight);
    centerDepth = static_cast<float>(sums.depth / count);
    dirty = false;
}

void cImageBlob::getCenter(float& x, float& y, float& depth) {
    if (dirty) {
        Logger::Log("Tried to use dirty blob data!");
        x = -1.0f;
        y = -1.0f;
        depth = 0.0f;
        return;
    }
    x = centerX;
    y = centerY;
    depth = centerDepth;
}

} // namespace QVR
