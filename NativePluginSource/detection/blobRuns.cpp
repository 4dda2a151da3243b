#include "detection/blobRuns.h"

namespace QVR {

std::size_t findRuns(const std::uint8_t* maskRow, std::uint32_t width, const RunSettings& settings,
                     BlobRun* runs) {
    std::size_t found = 0;
    std::uint32_t start = 0;
    std::uint32_t run = 0; // pixels in the open run, short gaps included
    std::uint32_t gap = 0; // unmarked pixels since the last marked one
    for (std::uint32_t x = 0; x < width; ++x) {
        if (maskRow[x] != 0) {
            if (gap >= settings.minBlobSpace) {
                start = x;
            }
            gap = 0;
            run += 1;
            continue;
        }
        gap += 1;
        if (run <= settings.minBlobSize) {
            run = 0;
        } else if (gap >= settings.allowedBlobNoiseGap) {
            const std::uint32_t markedSpan = run - gap;
            runs[found] = {start, static_cast<unsigned long>(start) + markedSpan + 1};
            found += 1;
            run = 0;
        } else {
            run += 1;
        }
    }
    return found;
}

} // namespace QVR
