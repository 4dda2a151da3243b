// Blob detection pixel by pixel, exactly as the algorithm is worded: no hoisting, a bounds test at
// every step, every depth read checked. Slow on purpose; the product is compared with it.
#pragma once

#include "detection/blobManager.h"

#include <array>
#include <cstdint>
#include <vector>

namespace literal {

struct Image {
    Image(std::uint32_t columns, std::uint32_t rows, std::uint16_t fill = 0)
        : width(columns), height(rows), pixels(std::size_t{columns} * rows, fill) {}

    std::uint16_t& at(std::int64_t x, std::int64_t y) { return pixels.at(index(x, y)); }
    std::uint16_t at(std::int64_t x, std::int64_t y) const { return pixels.at(index(x, y)); }
    const std::uint16_t* data() const { return pixels.data(); }

    std::uint32_t width;
    std::uint32_t height;
    std::vector<std::uint16_t> pixels;

  private:
    std::size_t index(std::int64_t x, std::int64_t y) const;
};

struct Settings {
    std::uint16_t maxDiffNear = 200;
    std::uint16_t maxDiffFar = 30;
    std::uint16_t nearNoiseCutoff = 600;
    std::uint16_t farLimit = 2400;
    std::int32_t blobLineAssocLimitU = 32;
    std::int32_t blobLineAssocLimitV = 11;
    std::uint32_t flatnessRadius = 4;
    std::uint16_t flatnessThreshold = 27;
    std::uint32_t biasStrength = 45;
    std::uint32_t minBlobSize = 11;
    std::uint32_t minBlobSpace = 3;
    std::uint32_t allowedBlobNoiseGap = 3;
};

void apply(const Settings& settings, QVR::blobManager& manager);

struct Run {
    std::uint64_t start;
    std::uint64_t end;
    std::uint32_t y;
};

struct Blob {
    std::vector<std::int32_t> lineStart;
    std::vector<std::int32_t> lineEnd;
    std::uint64_t minX = 65535;
    std::uint64_t maxX = 0;
    std::uint64_t minY = 65535;
    std::uint64_t maxY = 0;
    std::uint64_t sumStart = 0;
    std::uint64_t sumEnd = 0;
    std::uint64_t lineCount = 0;
    float lineCenterX = 0.0f;
    float centerX = -1.0f;
    float centerY = -1.0f;
    float centerDepth = -1.0f;
    bool valid = false;
    bool dirty = true;
};

int countSame(const Image& image, std::int64_t x, std::int64_t y, std::int64_t radius,
              std::uint16_t threshold);

// The runs of one mask row from left to right.
std::vector<Run> runsOfRow(const std::vector<std::uint8_t>& row, std::uint32_t y,
                           const Settings& settings);

class Detection {
  public:
    Detection(std::uint32_t width, std::uint32_t height) : mask(std::size_t{width} * height, 0) {}

    void processFrame(const Image& image);
    void extractBlobs(const Image& image);

    Settings settings;
    std::vector<std::uint8_t> mask;
    std::uint16_t cutoffDepth = 0;
    std::vector<Run> runs;
    std::array<Blob, 10> blobs;

  private:
    void place(const Run& run);
    void computeCenter(const Image& image, Blob& blob) const;
};

} // namespace literal
