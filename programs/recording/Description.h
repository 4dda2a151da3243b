// What a recording says once: the camera, its geometry, and how touches were made of its pictures.
#pragma once

#include <string>

#include <librealsense/rs.h>
#include <nlohmann/json_fwd.hpp>

namespace recording {

constexpr const char* formatName = "qvr-recording";
constexpr int formatVersion = 1;

struct Description {
    std::string recorder; // the program and its version
    std::string uri;      // of the camera source; "" for a connected camera
    std::string name;
    std::string serial;
    std::string firmware;
    int fps = 0;
    float depthScale = 0.0F; // metres in one depth unit
    rs_intrinsics depth{};
    rs_intrinsics color{};
    rs_extrinsics depthToColor{};
    bool calibrated = true;    // the touches' positions; else pixels and depth units
    std::string detectionForm; // "plain", "sse", ...; all give the same touches
};

// What `device`, whose streams run, says of itself; the caller knows the rest. Throws rs::error.
Description describe(rs_device* device);

// As it stands in recording.json.
nlohmann::ordered_json jsonOf(const Description& description);
// Takes what describes the touches; throws RecordingError when it is no recording or of another
// version. The camera library reads the rest.
Description describedTouches(const nlohmann::ordered_json& document);

} // namespace recording
