#include "enum_names.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace camera {
namespace {

template <std::size_t Count>
std::string named(int code, const std::array<std::string_view, Count>& names, int first = 0) {
    const int index = code - first;
    if (code < first || static_cast<std::size_t>(index) >= Count) {
        return std::to_string(code);
    }
    return std::string(names[static_cast<std::size_t>(index)]);
}

} // namespace

std::string nameOf(rs_stream stream) {
    static constexpr std::array<std::string_view, RS_STREAM_COUNT> names{
        "DEPTH",
        "COLOR",
        "INFRARED",
        "INFRARED2",
        "FISHEYE",
        "POINTS",
        "RECTIFIED_COLOR",
        "COLOR_ALIGNED_TO_DEPTH",
        "INFRARED2_ALIGNED_TO_DEPTH",
        "DEPTH_ALIGNED_TO_COLOR",
        "DEPTH_ALIGNED_TO_RECTIFIED_COLOR",
        "DEPTH_ALIGNED_TO_INFRARED2",
    };
    return named(stream, names);
}

std::string nameOf(rs_format format) {
    static constexpr std::array<std::string_view, RS_FORMAT_COUNT> names{
        "ANY",   "Z16",   "DISPARITY16", "XYZ32F", "YUYV",  "RGB8",  "BGR8",
        "RGBA8", "BGRA8", "Y8",          "Y16",    "RAW10", "RAW16", "RAW8"};
    return named(format, names);
}

std::string nameOf(rs_source source) {
    static constexpr std::array<std::string_view, RS_SOURCE_COUNT> names{"VIDEO", "MOTION_TRACKING",
                                                                         "ALL"};
    return named(source, names);
}

std::string nameOf(rs_option option) {
    static constexpr std::array<std::string_view, 6> names{
        "F200_LASER_POWER",          "F200_ACCURACY",   "F200_MOTION_RANGE", "F200_FILTER_OPTION",
        "F200_CONFIDENCE_THRESHOLD", "F200_DYNAMIC_FPS"};
    return named(option, names, RS_OPTION_F200_LASER_POWER);
}

} // namespace camera
