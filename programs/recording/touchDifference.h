// Where the touches of a frame are not those of its recording.
#pragma once

#include "recording/Frame.h"

#include <cstddef>
#include <optional>
#include <string>

namespace recording {

struct TouchDifference {
    std::size_t slot = 0;
    std::string field; // "active", "x", "y", "z", "column", "row" or "depth"
    std::string recorded;
    std::string got;
};

// The first one, slot by slot. Numbers are the same when all their bits are, or when none is a
// number.
std::optional<TouchDifference> firstDifference(const FrameInfo& recorded, const FrameInfo& got);

} // namespace recording
