// Finds finger blobs in full-resolution depth images.
#pragma once

#include "detection/cImageBlob.h"
#include "foundation/qvrApi.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace json11 {
class Json;
}

namespace QVR {

struct BlobRun;
class touchManager;

// Per frame, in this order: processFrame, extractBlobs, updateTouches. No frame allocates. One
// thread at a time. Depths are the camera's raw units; before setConfig the image size is 0 and
// every step does nothing.
class QVR_API blobManager {
  public:
    blobManager();
    ~blobManager();

    // Sets depth units per metre (truncated to 16 bits) and the depth image's size in pixels, and
    // makes room for mask and blobs; an image whose pixels 32 bits cannot count gets none, and
    // every step does nothing. Allocates.
    void setConfig(float oneMeterUnits, unsigned int width, unsigned int height);

    // Moves the far limit to a distance in metres; nothing while the units per metre are unknown.
    void setFarClipping(float meters);

    // Takes the detection settings of the calibration document; each missing key keeps its value
    // and logs a warning, the clip distances fall back to 0.07 m and 0.3 m. A null document does
    // nothing.
    void loadJson(json11::Json& calibration);

    // Marks the pixels of near, flat surfaces in `mask`. `depth` is row-major, width x height.
    // A frame without any flat pixel builds on the cut of the frame before.
    void processFrame(const unsigned short* depth);

    // Rebuilds `blobs` from `mask`, with their centres from `depth`.
    void extractBlobs(const unsigned short* depth);

    // Hands the blobs of this frame to the touch tracking; null does nothing.
    void updateTouches(touchManager* touches);

    // Gives the run of columns `start` to `end` in row `y` to the first blob near it, else to a
    // free blob, else to none. A row outside the image does nothing.
    void processBlobLine(unsigned long start, unsigned long end, unsigned int y);

    // Position of a pixel in a row-major image.
    unsigned int arrPos(int x, int y);

    // How many of the eight neighbours at distance `radius`, held at the image's border, differ
    // from pixel (x, y) by less than `threshold`: 0 to 8; 0 for a pixel outside the image.
    unsigned int check8PointSame(const unsigned short* depth, unsigned int x, unsigned int y,
                                 unsigned int radius, unsigned short threshold);

    // The settings as text, one line each.
    std::string getVariableReadout();

    // The name of the form in which the inner steps run: "plain", "sse", "avx2" or "avx512". All
    // give the same results. The best one the processor has, unless the environment variable
    // QVR_DETECTION_KERNELS names another when the process first uses detection.
    std::string getKernelReadout();

    std::uint16_t maxDiffNear = 200;       // band above the nearest flat depth at the near limit
    std::uint16_t maxDiffFar = 30;         // the same band at the far limit
    std::uint16_t nearNoiseCutoff = 600;   // depths at or below are ignored
    std::uint16_t farLimit = 2400;         // depths at or above are ignored
    std::int32_t blobLineAssocLimitU = 32; // columns within which a run joins a blob
    std::int32_t blobLineAssocLimitV = 11; // rows within which a run joins a blob
    std::uint32_t flatnessRadius = 4;      // neighbour distance of the flatness test, pixels
    std::uint16_t flatnessThreshold = 27;  // a smaller depth difference is the same surface
    std::uint32_t biasStrength = 45;       // multiplier of the centre weights
    std::uint32_t minBlobSize = 11;        // a run must be longer, pixels
    std::uint32_t minBlobSpace = 3;        // gap that starts a new run, pixels
    std::uint32_t allowedBlobNoiseGap = 3; // gap that ends a run, pixels
    std::uint16_t oneMeter = 0;            // depth units in one metre
    std::uint16_t cutoffDepth = 0;         // farthest depth that stayed marked in the last frame
    std::array<cImageBlob, 10> blobs;
    std::vector<std::uint8_t> mask; // per pixel: 0 not marked, 1 to 16 marked
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelCount = 0;

  private:
    bool hasImage() const;
    bool gapsContradict() const;

    std::vector<BlobRun> rowRuns;            // the runs of one row while blobs are extracted
    std::vector<std::uint8_t> countedBlocks; // blocks with counts while pixels are marked
};

} // namespace QVR
