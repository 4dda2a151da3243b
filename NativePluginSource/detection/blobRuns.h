// Extraction of horizontal runs of marked pixels from one row of the mask.
#pragma once

#include <cstddef>
#include <cstdint>

namespace QVR {

struct RunSettings {
    std::uint32_t minBlobSize;         // a run must be longer than this
    std::uint32_t minBlobSpace;        // gap that starts a new run
    std::uint32_t allowedBlobNoiseGap; // gap that ends a run
};

struct BlobRun {
    unsigned long start; // first column
    unsigned long end;   // one past the last marked column
};

// Room that findRuns needs: every run takes a marked and an unmarked pixel.
constexpr std::size_t mostRuns(std::uint32_t width) {
    return width / 2;
}

// Writes the runs of one row from left to right into `runs`, which has room for mostRuns(width),
// and returns their number. A run that is still open at the row's right edge is dropped. A run
// that was too short leaves its start behind for the next one when fewer than minBlobSpace
// unmarked pixels lie between, and so does the row's edge.
std::size_t findRuns(const std::uint8_t* maskRow, std::uint32_t width, const RunSettings& settings,
                     BlobRun* runs);

} // namespace QVR
