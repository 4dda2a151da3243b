// The camera information text. Hosts keep it beside their own calibration tools' output and some
// compare it literally, so its uneven separators are part of it.
#include "camera/hardwareCamera.h"

#include <locale>
#include <sstream>

#include <librealsense/rs.hpp>

namespace QVR {

namespace {

rs_extrinsics poseBetween(const rs_device* device, rs_stream from, rs_stream to) {
    rs_extrinsics pose = {};
    rs_error* error = nullptr;
    rs_get_device_extrinsics(device, from, to, &pose, &error);
    rs::error::handle(error);
    return pose;
}

rs_intrinsics intrinsicsOf(const rs_device* device, rs_stream stream) {
    rs_intrinsics intrinsics = {};
    rs_error* error = nullptr;
    rs_get_stream_intrinsics(device, stream, &intrinsics, &error);
    rs::error::handle(error);
    return intrinsics;
}

void writePose(std::ostream& text, const rs_extrinsics& pose) {
    const float* r = pose.rotation;
    const float* t = pose.translation;
    text << "    \"rXX\": " << r[0] << ",\n    \"rYX\": " << r[1] << ",\n    \"rZX\": " << r[2]
         << ",\n    \"m03\": 0.0,\n";
    text << "    \"rXY\": " << r[3] << ",     \"rYY\": " << r[4] << ",     \"rZY\": " << r[5]
         << ",     \"m13\": 0.0,\n";
    text << "    \"rXZ\": " << r[6] << ",     \"rYZ\": " << r[7] << ",     \"rZZ\": " << r[8]
         << ",     \"m23\": 0.0,\n";
    text << "    \"tX\": " << t[0] << ",     \"tY\": " << t[1] << ",     \"tZ\": " << t[2]
         << ",\n    \"m33\": 1.0\n},\n";
}

void writeIntrinsics(std::ostream& text, const rs_intrinsics& intrinsics) {
    text << "\"focalLengthX\":" << intrinsics.fx << ", \"focalLengthY\":" << intrinsics.fy
         << ", \"centerOffsetX\":" << intrinsics.ppx << ", \"centerOffsetY\":" << intrinsics.ppy;
}

} // namespace

std::string hardwareCamera::getCameraInfo() {
    std::ostringstream text;
    // A host may have set a locale with decimal commas, which JSON does not have.
    text.imbue(std::locale::classic());

    const rs_extrinsics colorToDepth = poseBetween(device, RS_STREAM_COLOR, RS_STREAM_DEPTH);
    const rs_intrinsics color = intrinsicsOf(device, RS_STREAM_COLOR);
    text << "{\n\"colorToDepthExtrinsics4x4\": {\n    ";
    writePose(text, colorToDepth);
    text << "\"colorIntrinsics\": {";
    writeIntrinsics(text, color);
    text << "},\n";

    const rs_extrinsics depthToColor = poseBetween(device, RS_STREAM_DEPTH, RS_STREAM_COLOR);
    const rs_intrinsics depth = intrinsicsOf(device, RS_STREAM_DEPTH);
    text << "\"depthToColorExtrinsics4x4\": {\n    ";
    writePose(text, depthToColor);
    text << "\"depthIntrinsics\": {";
    writeIntrinsics(text, depth);
    text << "}\n}";
    return text.str();
}

} // namespace QVR
