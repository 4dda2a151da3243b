#include "sdk/sdk_device.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace camera::sdk {
namespace {

bool delivers(const rs2::sensor& sensor, rs2_stream stream) {
    const auto profiles = sensor.get_stream_profiles();
    return std::any_of(profiles.begin(), profiles.end(), [&](const rs2::stream_profile& profile) {
        return profile.stream_type() == stream;
    });
}

} // namespace

SdkDevice::SdkDevice(rs2::device device)
    : device_(std::move(device)), sensors_(device_.query_sensors()) {
    if (!sensorOf(RS2_STREAM_DEPTH)) {
        throw std::runtime_error(info(RS2_CAMERA_INFO_NAME, "the device") +
                                 " has no sensor for depth");
    }
}

std::string SdkDevice::info(rs2_camera_info what, const std::string& otherwise) const {
    return device_.supports(what) ? device_.get_info(what) : otherwise;
}

bool SdkDevice::hasOption(bool ofColor, rs2_option option) const {
    const rs2::sensor* const sensor = sensorOf(ofColor ? RS2_STREAM_COLOR : RS2_STREAM_DEPTH);
    return sensor && sensor->supports(option) && !sensor->is_option_read_only(option);
}

void SdkDevice::setOption(bool ofColor, rs2_option option, float value) {
    sensorOf(ofColor ? RS2_STREAM_COLOR : RS2_STREAM_DEPTH)->set_option(option, value);
}

// The option, not the sensor's depth scale: not every device has the latter.
float SdkDevice::depthScale() const {
    const rs2::sensor& depth = *sensorOf(RS2_STREAM_DEPTH);
    if (!depth.supports(RS2_OPTION_DEPTH_UNITS)) {
        throw std::runtime_error(info(RS2_CAMERA_INFO_NAME, "the device") +
                                 " does not tell its depth units");
    }
    return depth.get_option(RS2_OPTION_DEPTH_UNITS);
}

const rs2::sensor* SdkDevice::sensorOf(rs2_stream stream) const {
    const auto found =
        std::find_if(sensors_.begin(), sensors_.end(),
                     [&](const rs2::sensor& sensor) { return delivers(sensor, stream); });
    return found == sensors_.end() ? nullptr : &*found;
}

} // namespace camera::sdk
