// One finger-sized patch of marked pixels: at most one run of columns per image row, and its
// depth-weighted centre.
#pragma once

#include "foundation/qvrApi.h"

#include <cstdint>
#include <vector>

namespace QVR {

// One thread at a time.
class QVR_API cImageBlob {
  public:
    // Sets the image size in pixels and makes room for a run in each row. Allocates.
    void setSize(unsigned int width, unsigned int height);

    // Empties the blob; the size stays.
    void reset();

    // Adds the run of columns `start` to `end` in row `y`. A second run in a row replaces the
    // first there, though both count in the mean run centre. The limits in X leave out the
    // blob's first run. A row outside the image does nothing; columns outside it are kept, but
    // count for nothing in the centre.
    void addLine(unsigned long start, unsigned long end, unsigned int y);

    // The low 32 bits of each limit, in pixels; Y limits include both rows.
    void getLimits(int& minX, int& maxX, int& minY, int& maxY);

    // Computes the centre over the blob's runs in `depth` (row-major, width x height depth
    // units); pixels nearer than `cutoff` count, by their distance from it times `bias`. A blob
    // without any weight becomes invalid. `ignored` has no effect. Does nothing unless valid.
    void calculateCenter(const unsigned short* depth, unsigned short ignored, unsigned short cutoff,
                         unsigned int bias);

    // The centre in whole columns, rows and depth units; -1, -1, 0 and a log line while runs
    // were added since it was computed.
    void getCenter(float& x, float& y, float& depth);

    std::vector<std::int32_t> lineStart; // per row: first column of the run, -1 without one
    std::vector<std::int32_t> lineEnd;   // per row: last column of the run, -1 without one
    std::uint64_t minX = 65535;
    std::uint64_t maxX = 0;
    std::uint64_t minY = 65535;
    std::uint64_t maxY = 0;
    std::uint64_t sumStart = 0;
    std::uint64_t sumEnd = 0;
    std::uint64_t lineCount = 0;
    float lineCenterX = 0.0f; // mean centre column of all runs added
    float centerX = -1.0f;
    float centerY = -1.0f;
    float centerDepth = -1.0f;
    bool valid = false; // holds a run and, once the centre is computed, has a usable one
    bool dirty = true;  // runs were added since the centre was computed
    unsigned int width = 0;
    unsigned int height = 0;
};

} // namespace QVR
