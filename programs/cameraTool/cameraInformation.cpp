#include "cameraTool/cameraInformation.h"

#include "camera/hardwareCamera.h"
#include "server/ServerError.h"

#include <nlohmann/json.hpp>

namespace cameraTool {

using nlohmann::ordered_json;

std::string cameraInformation(const OpenCamera& camera, bool raw) {
    if (!camera.hasColor()) {
        throw server::ServerError(server::exitNoCamera,
                                  "the camera has no colour, so there is no pose between its two "
                                  "streams to tell");
    }
    // Borrows the device for the one question.
    QVR::hardwareCamera asked;
    asked.device = camera.device();
    const std::string text = asked.getCameraInfo();
    asked.device = nullptr;
    return raw ? text : ordered_json::parse(text).dump(2) + "\n";
}

} // namespace cameraTool
