#include "literalDetection.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace literal {

std::size_t Image::index(std::int64_t x, std::int64_t y) const {
    if (x < 0 || y < 0 || x >= std::int64_t{width} || y >= std::int64_t{height}) {
        throw std::out_of_range("a pixel outside the image was read");
    }
    return static_cast<std::size_t>(y * width + x);
}

void apply(const Settings& settings, QVR::blobManager& manager) {
    manager.maxDiffNear = settings.maxDiffNear;
    manager.maxDiffFar = settings.maxDiffFar;
    manager.nearNoiseCutoff = settings.nearNoiseCutoff;
    manager.farLimit = settings.farLimit;
    manager.blobLineAssocLimitU = settings.blobLineAssocLimitU;
    manager.blobLineAssocLimitV = settings.blobLineAssocLimitV;
    manager.flatnessRadius = settings.flatnessRadius;
    manager.flatnessThreshold = settings.flatnessThreshold;
    manager.biasStrength = settings.biasStrength;
    manager.minBlobSize = settings.minBlobSize;
    manager.minBlobSpace = settings.minBlobSpace;
    manager.allowedBlobNoiseGap = settings.allowedBlobNoiseGap;
}

int countSame(const Image& image, std::int64_t x, std::int64_t y, std::int64_t radius,
              std::uint16_t threshold) {
    int count = 0;
    for (int down = -1; down <= 1; ++down) {
        for (int right = -1; right <= 1; ++right) {
            if (down == 0 && right == 0) {
                continue;
            }
            std::int64_t column = x + right * radius;
            std::int64_t row = y + down * radius;
            if (column < 0) {
                column = 0;
            }
            if (column >= image.width) {
                column = image.width - 1;
            }
            if (row < 0) {
                row = 0;
            }
            if (row >= image.height) {
                row = image.height - 1;
            }
            const int difference = image.at(x, y) - image.at(column, row);
            if (std::abs(difference) < threshold) {
                count += 1;
            }
        }
    }
    return count;
}

void Detection::processFrame(const Image& image) {
    std::int64_t nearest = 64000;
    bool anyInRange = false;
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            const std::uint16_t depth = image.at(x, y);
            std::uint8_t& mark = mask.at(static_cast<std::size_t>(y * image.width + x));
            if (depth <= settings.nearNoiseCutoff || depth >= settings.farLimit) {
                mark = 0;
                continue;
            }
            const std::int64_t radius = settings.flatnessRadius;
            const int same = countSame(image, x, y, radius, settings.flatnessThreshold) +
                             countSame(image, x, y, 2 * radius, settings.flatnessThreshold);
            mark = static_cast<std::uint8_t>(same);
            anyInRange = true;
            if (same >= 11 && depth < nearest) {
                nearest = depth;
            }
        }
    }
    if (!anyInRange) {
        return;
    }
    const std::int64_t base = nearest > settings.farLimit ? cutoffDepth : nearest;
    const double nearLimit = settings.nearNoiseCutoff;
    const double farLimit = settings.farLimit;
    double t = nearLimit == farLimit
                   ? 0.0
                   : (static_cast<double>(base) - nearLimit) / (farLimit - nearLimit);
    t = std::min(1.0, std::max(0.0, t));
    const double band = settings.maxDiffNear + (settings.maxDiffFar - settings.maxDiffNear) * t;
    cutoffDepth = static_cast<std::uint16_t>(base + static_cast<std::int64_t>(std::trunc(band)));
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            if (image.at(x, y) > cutoffDepth) {
                mask.at(static_cast<std::size_t>(y * image.width + x)) = 0;
            }
        }
    }
}

std::vector<Run> runsOfRow(const std::vector<std::uint8_t>& row, std::uint32_t y,
                           const Settings& settings) {
    std::vector<Run> runs;
    std::uint64_t start = 0;
    std::uint32_t run = 0;
    std::uint32_t gap = 0;
    for (std::size_t x = 0; x < row.size(); ++x) {
        if (row.at(x) != 0) {
            if (gap >= settings.minBlobSpace) {
                start = x;
            }
            gap = 0;
            run = run + 1;
        } else {
            gap = gap + 1;
            if (run <= settings.minBlobSize) {
                run = 0;
            } else if (gap >= settings.allowedBlobNoiseGap) {
                runs.push_back({start, start + (run - gap) + 1, y});
                run = 0;
            } else {
                run = run + 1;
            }
        }
    }
    return runs;
}

void Detection::extractBlobs(const Image& image) {
    runs.clear();
    for (Blob& blob : blobs) {
        blob = Blob();
        blob.lineStart.assign(image.height, -1);
        blob.lineEnd.assign(image.height, -1);
    }
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const auto first = mask.begin() + static_cast<std::ptrdiff_t>(y) * image.width;
        const std::vector<std::uint8_t> row(first, first + image.width);
        for (const Run& run : runsOfRow(row, y, settings)) {
            runs.push_back(run);
            place(run);
        }
    }
    for (Blob& blob : blobs) {
        if (blob.valid) {
            computeCenter(image, blob);
        }
    }
}

void Detection::place(const Run& run) {
    const auto middle = static_cast<float>((run.start + run.end) / 2);
    Blob* taker = nullptr;
    for (Blob& blob : blobs) {
        const auto rows = static_cast<std::int32_t>(run.y - static_cast<std::uint32_t>(blob.maxY));
        if (taker == nullptr && blob.valid && settings.blobLineAssocLimitV > rows &&
            std::fabs(blob.lineCenterX - middle) <
                static_cast<float>(settings.blobLineAssocLimitU)) {
            taker = &blob;
        }
    }
    for (Blob& blob : blobs) {
        if (taker == nullptr && !blob.valid) {
            taker = &blob;
        }
    }
    if (taker == nullptr) {
        return;
    }
    if (taker->valid) {
        taker->minX = std::min(taker->minX, run.start);
        taker->maxX = std::max(taker->maxX, run.end);
        taker->minY = std::min<std::uint64_t>(taker->minY, run.y);
        taker->maxY = std::max<std::uint64_t>(taker->maxY, run.y);
    } else {
        taker->minY = taker->maxY = run.y;
        taker->valid = true;
    }
    taker->lineStart.at(run.y) = static_cast<std::int32_t>(run.start);
    taker->lineEnd.at(run.y) = static_cast<std::int32_t>(run.end);
    taker->lineCount += 1;
    taker->sumStart += run.start;
    taker->sumEnd += run.end;
    taker->lineCenterX = static_cast<float>(taker->sumStart + taker->sumEnd) /
                         static_cast<float>(2 * taker->lineCount);
}

void Detection::computeCenter(const Image& image, Blob& blob) const {
    std::uint64_t weight = 0;
    std::uint64_t weightedX = 0;
    std::uint64_t weightedY = 0;
    std::uint64_t depthSum = 0;
    std::uint16_t count = 0;
    for (std::uint64_t y = blob.minY; y <= blob.maxY; ++y) {
        const std::int64_t start = blob.lineStart.at(y);
        const std::int64_t end = blob.lineEnd.at(y);
        if (start < 0 || end < 0 || start > end) {
            continue;
        }
        for (std::int64_t x = start; x <= end; ++x) {
            if (x >= image.width) {
                continue;
            }
            const std::uint16_t depth = image.at(x, static_cast<std::int64_t>(y));
            if (depth < cutoffDepth) {
                const std::uint64_t w =
                    static_cast<std::uint64_t>(cutoffDepth - depth) * settings.biasStrength;
                weight += w;
                weightedX += w * static_cast<std::uint64_t>(x);
                weightedY += w * y;
                depthSum += depth;
                count = static_cast<std::uint16_t>(count + 1);
            }
        }
    }
    if (weight == 0 || count == 0) {
        blob.valid = false;
        return;
    }
    blob.centerX = static_cast<float>(weightedX / weight);
    blob.centerY = static_cast<float>(weightedY / weight);
    blob.centerDepth = static_cast<float>(depthSum / count);
    blob.dirty = false;
}

} // namespace literal
