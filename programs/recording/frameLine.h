// The line of JSON that a recording has for each frame.
#pragma once

#include "recording/Frame.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recording {

// A whole line, its end included. `picture` is the number in the names of the frame's pictures.
std::string lineOf(const FrameInfo& frame, std::uint32_t picture);

// The frame of a line without its end, or nothing when it is no such line. Every number comes
// back as it was, bit for bit, but for which NaN it is.
std::optional<FrameInfo> frameOf(std::string_view line);

} // namespace recording
