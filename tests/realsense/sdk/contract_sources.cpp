// The sources of RealSense SDK 2 that need no camera.
#include "realsense/sdk/SoftwareCamera.h"
#include "realsense/support/SourceCase.h"
#include "realsense/support/calls.h"
#include "sdk/sdk_source.h"

namespace camera_test {
namespace {

void selectSoftwareDevice(const PictureFolder&) {
    selectSource([] {
        const camera::sdk::DeviceOpener open = [] {
            return std::make_unique<SoftwareCamera>(std::make_shared<SoftwareScript>());
        };
        return std::make_unique<camera::sdk::SdkSource>(open(), open);
    });
}

void selectBag(const PictureFolder& folder) {
    const std::string file = folder.file("pictures.bag");
    recordBag(file, SoftwareScript(), 8);
    const std::string uri = "bag:" + file + ",pace=off";
    call(rs_select_camera_source, uri.c_str());
}

} // namespace

std::vector<SourceCase> sdkSources() {
    return {{"SdkSoftwareDevice", selectSoftwareDevice, 8, 6, 16, 10, false},
            {"SdkBag", selectBag, 8, 6, 16, 10, false}};
}

} // namespace camera_test
