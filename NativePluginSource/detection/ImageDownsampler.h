// Reduces a 16-bit depth image by point sampling, and takes pixels of the reduced image back to
// pixels of the full one.
#pragma once

#include "foundation/qvrApi.h"

#include <memory>

namespace QVR {

// One thread at a time. The sizes are fixed: other sizes are a new object.
class QVR_API ImageDownsampler {
  public:
    // Sizes in pixels. Computes the whole map, so that a frame costs one indexed copy per target
    // pixel. There is no map when a size is 0 or when an image has more pixels than a signed
    // 32-bit index can number. Allocates; throws std::bad_alloc when memory cannot be had.
    ImageDownsampler(unsigned int sourceWidth, unsigned int sourceHeight, unsigned int targetWidth,
                     unsigned int targetHeight);

    // Maps a target pixel to its source pixel in place. Negative coordinates count as 0, and what
    // rounds past the last source pixel becomes that pixel. An axis with target size 0 gives 0.
    void convertTargetPixelToSourcePixel(int& x, int& y);

    // The reduced image, row-major, targetWidth x targetHeight depth units: each pixel is exactly
    // one source pixel. `source` holds at least sourceWidth x sourceHeight pixels. The result
    // belongs to this object and is overwritten by the next call; null without a map.
    const unsigned short* downSample16bitImage(const unsigned short* source);

    unsigned int sourceWidth;
    unsigned int sourceHeight;
    unsigned int targetWidth;
    unsigned int targetHeight;
    std::unique_ptr<int[]> sourceIndexMap;    // source pixel of every target pixel, or null
    std::unique_ptr<unsigned short[]> output; // the result buffer, reused every call
    unsigned int targetPixelCount = 0;
};

} // namespace QVR
