#include "sdk/sources.h"

#include "sdk/connected_camera.h"
#include "sdk/recording.h"
#include "sdk/sdk_source.h"

namespace camera {
namespace {

std::unique_ptr<FrameSource> sourceFrom(const sdk::DeviceOpener& open) {
    auto device = open();
    return device ? std::make_unique<sdk::SdkSource>(std::move(device), open) : nullptr;
}

} // namespace

std::unique_ptr<FrameSource> openRealsense(const SourceOptions& options) {
    options.acceptOnly({});
    return sourceFrom([serial = options.positional()] { return sdk::connectedCamera(serial); });
}

std::unique_ptr<FrameSource> openBag(const SourceOptions& options) {
    return sourceFrom([recording = sdk::recordingOptions(options)] {
        return std::make_unique<sdk::Recording>(recording);
    });
}

std::vector<std::unique_ptr<FrameSource>> connectedSources() {
    std::vector<std::unique_ptr<FrameSource>> sources;
    for (auto& camera : sdk::connectedCameras()) {
        const std::string serial = camera->info(RS2_CAMERA_INFO_SERIAL_NUMBER, "");
        sources.push_back(std::make_unique<sdk::SdkSource>(
            std::move(camera), [serial] { return sdk::connectedCamera(serial); }));
    }
    return sources;
}

} // namespace camera
