#include "sdk/sdk_codes.h"

#include <algorithm>
#include <iterator>

namespace camera::sdk {
namespace {

// Colour control has the first codes in both interfaces, in the same order.
constexpr int colorControlCount = 12;
static_assert(RS2_OPTION_BACKLIGHT_COMPENSATION == 0 &&
              RS2_OPTION_ENABLE_AUTO_WHITE_BALANCE == colorControlCount - 1);

rs_distortion modelFrom(rs2_distortion model) {
    switch (model) {
    case RS2_DISTORTION_MODIFIED_BROWN_CONRADY:
        return RS_DISTORTION_MODIFIED_BROWN_CONRADY;
    case RS2_DISTORTION_INVERSE_BROWN_CONRADY:
        return RS_DISTORTION_INVERSE_BROWN_CONRADY;
    case RS2_DISTORTION_FTHETA:
        return RS_DISTORTION_FTHETA;
    default:
        return RS_DISTORTION_NONE;
    }
}

} // namespace

std::optional<rs2_option> optionCode(rs_option option) {
    switch (option) {
    case RS_OPTION_F200_LASER_POWER:
        return RS2_OPTION_LASER_POWER;
    case RS_OPTION_F200_ACCURACY:
        return RS2_OPTION_ACCURACY;
    case RS_OPTION_F200_MOTION_RANGE:
        return RS2_OPTION_MOTION_RANGE;
    case RS_OPTION_F200_FILTER_OPTION:
        return RS2_OPTION_FILTER_OPTION;
    case RS_OPTION_F200_CONFIDENCE_THRESHOLD:
        return RS2_OPTION_CONFIDENCE_THRESHOLD;
    default:
        break;
    }
    if (isColorControl(option)) {
        return static_cast<rs2_option>(option);
    }
    return std::nullopt;
}

bool isColorControl(rs_option option) {
    return option >= 0 && option < colorControlCount;
}

rs2_stream streamCode(rs_stream stream) {
    switch (stream) {
    case RS_STREAM_DEPTH:
        return RS2_STREAM_DEPTH;
    case RS_STREAM_COLOR:
        return RS2_STREAM_COLOR;
    case RS_STREAM_INFRARED:
    case RS_STREAM_INFRARED2: // there two streams of one code
        return RS2_STREAM_INFRARED;
    case RS_STREAM_FISHEYE:
        return RS2_STREAM_FISHEYE;
    default:
        return RS2_STREAM_ANY;
    }
}

rs2_format formatCode(rs_format format) {
    static_assert(RS2_FORMAT_ANY == static_cast<int>(RS_FORMAT_ANY) &&
                  RS2_FORMAT_Z16 == static_cast<int>(RS_FORMAT_Z16) &&
                  RS2_FORMAT_RGB8 == static_cast<int>(RS_FORMAT_RGB8) &&
                  RS2_FORMAT_RAW8 == static_cast<int>(RS_FORMAT_RAW8));
    return static_cast<rs2_format>(format);
}

rs_intrinsics intrinsicsFrom(const rs2_intrinsics& lens) {
    rs_intrinsics result{};
    result.width = lens.width;
    result.height = lens.height;
    result.ppx = lens.ppx;
    result.ppy = lens.ppy;
    result.fx = lens.fx;
    result.fy = lens.fy;
    result.model = modelFrom(lens.model);
    if (result.model != RS_DISTORTION_NONE) {
        std::copy(std::begin(lens.coeffs), std::end(lens.coeffs), std::begin(result.coeffs));
    }
    return result;
}

rs_extrinsics extrinsicsFrom(const rs2_extrinsics& pose) {
    rs_extrinsics result;
    std::copy(std::begin(pose.rotation), std::end(pose.rotation), std::begin(result.rotation));
    std::copy(std::begin(pose.translation), std::end(pose.translation),
              std::begin(result.translation));
    return result;
}

} // namespace camera::sdk
