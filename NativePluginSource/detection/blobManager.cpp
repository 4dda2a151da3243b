#include "detection/blobManager.h"

#include "detection/detectionKernels.h"
#include "detection/touchManager.h"
#include "foundation/Logger.h"
#include "foundation/numbers.h"
#include "foundation/utils.h"

#include <algorithm>
#include <cmath>

namespace QVR {

blobManager::blobManager() = default;
blobManager::~blobManager() = default;

void blobManager::setConfig(float oneMeterUnits, unsigned int imageWidth,
                            unsigned int imageHeight) {
    oneMeter = static_cast<std::uint16_t>(truncateToInt(oneMeterUnits));
    width = imageWidth;
    height = imageHeight;
    pixelCount = width * height;
    const bool countable = std::uint64_t{width} * height == pixelCount;
    mask.assign(countable ? pixelCount : 0, 0);
    rowRuns.resize(countable ? mostRuns(width) : 0);
    countedBlocks.resize(countable ? blocksInRow(width) * height : 0);
    for (cImageBlob& blob : blobs) {
        blob.setSize(width, countable ? height : 0);
    }
}

void blobManager::setFarClipping(float meters) {
    if (oneMeter != 0) {
        farLimit = static_cast<std::uint16_t>(truncateToInt(static_cast<float>(oneMeter) * meters));
    }
}

// Whether there is an image size, and all that setConfig made fits it.
bool blobManager::hasImage() const {
    return !mask.empty() && mask.size() == std::uint64_t{width} * height &&
           rowRuns.size() >= mostRuns(width) && countedBlocks.size() == blocksInRow(width) * height;
}

void blobManager::processFrame(const unsigned short* depth) {
    if (!hasImage()) {
        return;
    }
    const DetectionKernels& kernels = activeKernels();
    const DepthView image{depth, width, height};
    const FlatnessSettings settings{nearNoiseCutoff, farLimit, flatnessRadius, flatnessThreshold};
    const FlatnessResult found =
        kernels.findNearest(image, settings, countedBlocks.data(), mask.data());
    if (!found.anyInRange) {
        std::fill(mask.begin(), mask.end(), std::uint8_t{0});
        return;
    }
    // Without a flat pixel the cut of the last frame stands in, so it moves on by one band.
    const std::uint32_t base = found.nearest > farLimit ? cutoffDepth : found.nearest;
    const double t = utils::clamp01(utils::inverseLerp(nearNoiseCutoff, farLimit, base));
    const int band = truncateToInt(maxDiffNear + (maxDiffFar - maxDiffNear) * t);
    const auto cut = static_cast<std::uint16_t>(base + static_cast<std::uint32_t>(band));
    kernels.markUpTo(image, settings, cut, countedBlocks.data(), mask.data());
    cutoffDepth = cut;
}

void blobManager::extractBlobs(const unsigned short* depth) {
    for (cImageBlob& blob : blobs) {
        blob.reset();
    }
    if (gapsContradict()) {
        Logger::Log("WARNING! minBlobSpace must be bigger than allowedBlobNoiseGap for blob "
                    "detection to work properly!");
    }
    if (!hasImage()) {
        return;
    }
    const DetectionKernels& kernels = activeKernels();
    const RunSettings settings{minBlobSize, minBlobSpace, allowedBlobNoiseGap};
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint8_t* const maskRow = mask.data() + std::size_t{y} * width;
        const std::size_t count = kernels.findRuns(maskRow, width, settings, rowRuns.data());
        for (std::size_t i = 0; i < count; ++i) {
            processBlobLine(rowRuns[i].start, rowRuns[i].end, y);
        }
    }
    for (cImageBlob& blob : blobs) {
        if (blob.valid) {
            blob.calculateCenter(depth, 0, cutoffDepth, biasStrength);
        }
    }
}

void blobManager::updateTouches(touchManager* touches) {
    if (touches != nullptr) {
        touches->update(blobs);
    }
}

void blobManager::processBlobLine(unsigned long start, unsigned long end, unsigned int y) {
    const auto middle = static_cast<float>((start + end) / 2);
    for (cImageBlob& blob : blobs) {
        const auto rowsBelow = static_cast<std::int32_t>(y - static_cast<std::uint32_t>(blob.maxY));
        if (blob.valid && blobLineAssocLimitV > rowsBelow &&
            std::fabs(blob.lineCenterX - middle) < static_cast<float>(blobLineAssocLimitU)) {
            blob.addLine(start, end, y);
            return;
        }
    }
    for (cImageBlob& blob : blobs) {
        if (!blob.valid) {
            blob.addLine(start, end, y);
            return;
        }
    }
}

unsigned int blobManager::arrPos(int x, int y) {
    return static_cast<unsigned int>(y) * width + static_cast<unsigned int>(x);
}

unsigned int blobManager::check8PointSame(const unsigned short* depth, unsigned int x,
                                          unsigned int y, unsigned int radius,
                                          unsigned short threshold) {
    if (x >= width || y >= height) {
        return 0;
    }
    return static_cast<unsigned int>(
        countSameNeighbours({depth, width, height}, x, y, radius, threshold));
}

} // namespace QVR
