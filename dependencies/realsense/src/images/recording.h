// A recording as a camera sees it: the geometry of the camera that was recorded, and which pictures
// it delivered when.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include <librealsense/rs.h>

namespace camera {

struct RecordedFrame {
    std::filesystem::path depth;
    std::filesystem::path color;
    std::uint64_t number = 0; // the frame's number when it was recorded
    double seconds = 0.0;     // when it came, since the recorded camera's start
};

struct Recording {
    int framerate = 0;
    float depthScale = 0.0f; // metres in one depth unit
    rs_intrinsics depth{};
    rs_intrinsics color{};
    rs_extrinsics depthToColor{};
    std::vector<RecordedFrame> frames; // at least one
};

// The recording in `folder`; nothing when the folder is none. What follows the last whole line of
// its frames is not there: whoever recorded was interrupted. Throws std::runtime_error, naming the
// file and what is wrong, for a recording that cannot be read or is of another version.
std::optional<Recording> readRecording(const std::filesystem::path& folder);

} // namespace camera
