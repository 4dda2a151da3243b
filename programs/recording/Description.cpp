#include "recording/Description.h"

#include "common/cameraCall.h"
#include "recording/RecordingError.h"

#include <array>

#include <nlohmann/json.hpp>

namespace recording {

using nlohmann::ordered_json;
using programs::cameraCall;

namespace {

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

// In the order of the codes.
constexpr std::array<const char*, RS_DISTORTION_COUNT> distortionNames = {
    "none", "modified-brown-conrady", "inverse-brown-conrady", "ftheta"};

ordered_json jsonOf(const rs_intrinsics& lens) {
    const auto model = static_cast<std::size_t>(lens.model);
    return {{"width", lens.width},
            {"height", lens.height},
            {"fx", lens.fx},
            {"fy", lens.fy},
            {"ppx", lens.ppx},
            {"ppy", lens.ppy},
            {"distortion", distortionNames[model < distortionNames.size() ? model : 0]},
            {"coefficients", std::to_array(lens.coeffs)}};
}

} // namespace

Description describe(rs_device* device) {
    Description description;
    description.name = textOf(cameraCall(rs_get_device_name, device));
    description.serial = textOf(cameraCall(rs_get_device_serial, device));
    description.firmware = textOf(cameraCall(rs_get_device_firmware_version, device));
    description.depthScale = cameraCall(rs_get_device_depth_scale, device);
    cameraCall(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH, &description.depth);
    cameraCall(rs_get_stream_intrinsics, device, RS_STREAM_COLOR, &description.color);
    cameraCall(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR,
               &description.depthToColor);
    return description;
}

ordered_json jsonOf(const Description& description) {
    return {{"format", formatName},
            {"version", formatVersion},
            {"recorder", description.recorder},
            {"source",
             {{"uri", description.uri},
              {"name", description.name},
              {"serial", description.serial},
              {"firmware", description.firmware}}},
            {"fps", description.fps},
            {"depthScale", description.depthScale},
            {"depth", jsonOf(description.depth)},
            {"color", jsonOf(description.color)},
            {"depthToColor",
             {{"rotation", std::to_array(description.depthToColor.rotation)},
              {"translation", std::to_array(description.depthToColor.translation)}}},
            {"touches", description.calibrated ? "calibrated" : "raw"},
            {"detectionForm", description.detectionForm}};
}

Description describedTouches(const ordered_json& document) {
    if (!document.is_object() || !document.contains("format") || document["format"] != formatName) {
        throw RecordingError("recording.json does not describe a recording");
    }
    if (!document.contains("version") || document["version"] != formatVersion) {
        throw RecordingError("the recording is of another version than " +
                             std::to_string(formatVersion) + ", the one known here");
    }
    Description description;
    const auto touches = document.find("touches");
    if (touches == document.end() || (*touches != "calibrated" && *touches != "raw")) {
        throw RecordingError("recording.json does not say whether its touches are calibrated");
    }
    description.calibrated = *touches == "calibrated";
    const auto form = document.find("detectionForm");
    if (form != document.end() && form->is_string()) {
        description.detectionForm = form->get<std::string>();
    }
    return description;
}

} // namespace recording
