// The mode in which a camera is to stream: one profile of its depth sensor and one of its colour
// sensor.
#pragma once

#include "frame_source.h"
#include "sdk/sdk_device.h"

#include <optional>
#include <vector>

#include <librealsense2/rs.hpp>

namespace camera::sdk {

struct CameraMode {
    rs2::video_stream_profile depth;
    std::optional<rs2::video_stream_profile> color; // nothing when there is no colour sensor
};

// What depth (Z16) or colour (RGB8) comes in, from small to large, each mode once.
std::vector<rs_stream_mode> availableModes(const SdkDevice& device, rs_stream stream);

// The profiles that fit, both at one rate. Where a request leaves something open it becomes the
// nearest to 640 x 480 at 30 frames a second. Throws std::runtime_error, listing what there is.
CameraMode chooseMode(const SdkDevice& device, const StreamRequest& depth,
                      const StreamRequest& color);

} // namespace camera::sdk
