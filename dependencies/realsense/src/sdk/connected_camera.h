// Cameras that are plugged in.
#pragma once

#include "sdk/sdk_device.h"

#include <string>
#include <vector>

namespace camera::sdk {

// Those with a depth sensor, in the SDK's order; ordinary webcams are listed by the SDK as well and
// left out here.
std::vector<std::unique_ptr<SdkDevice>> connectedCameras();

// The first one, or the one with this serial number when it is not ""; null when it is not
// plugged in.
std::unique_ptr<SdkDevice> connectedCamera(const std::string& serial);

} // namespace camera::sdk
