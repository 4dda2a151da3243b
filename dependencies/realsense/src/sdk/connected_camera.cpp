#include "sdk/connected_camera.h"

#include <algorithm>
#include <utility>

namespace camera::sdk {
namespace {

bool hasDepth(const rs2::device& device) {
    for (const rs2::sensor& sensor : device.query_sensors()) {
        if (sensor.is<rs2::depth_sensor>()) {
            return true;
        }
    }
    return false;
}

} // namespace

// A context of its own each time: it sees what is plugged in now. Never one into which a recording
// was loaded, for enumerating that crashes.
std::vector<std::unique_ptr<SdkDevice>> connectedCameras() {
    std::vector<std::unique_ptr<SdkDevice>> cameras;
    const rs2::context context;
    const rs2::device_list list = context.query_devices();
    for (std::uint32_t index = 0; index < list.size(); ++index) {
        rs2::device device = list[index];
        if (hasDepth(device)) {
            cameras.push_back(std::make_unique<SdkDevice>(std::move(device)));
        }
    }
    return cameras;
}

std::unique_ptr<SdkDevice> connectedCamera(const std::string& serial) {
    for (auto& camera : connectedCameras()) {
        if (serial.empty() || camera->info(RS2_CAMERA_INFO_SERIAL_NUMBER, "") == serial) {
            return std::move(camera);
        }
    }
    return nullptr;
}

} // namespace camera::sdk
