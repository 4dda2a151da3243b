// The calibration document in the camera server's pipeline: read when the camera opens, and given
// to a pipeline that runs.
#include "camera/FakeRealsense.h"
#include "camera/ManagerFixture.h"
#include "camera/cameraManager.h"
#include "foundation/jsonValues.h"
#include "fuzzing.h"
#include "pipelineSwitches.h"
#include "support/TemporaryVolume.h"

#include <json11.hpp>

namespace {

constexpr support::ImageSize cameraSize{64, 48};

// A camera of one size whatever is asked for, with one finger before it.
void connectCamera() {
    support::FakeRealsense& camera = support::FakeRealsense::get();
    camera.reset();
    camera.deliveredColor = camera.deliveredDepth = cameraSize;
    camera.depthImage.resize(std::size_t{64} * 48);
    camera.colorImage.resize(std::size_t{64} * 48 * 3);
    support::showFinger(camera.depthImage);
}

// Images that are accepted and large cost time and show nothing that smaller ones do not.
bool asksForLargeImages(const json11::Json& document) {
    constexpr std::uint64_t large = 1U << 20;
    constexpr std::uint64_t refused = 256U << 20;
    const auto pixels = [&](const char* width, const char* height) {
        const auto side = [&](const char* key) {
            return static_cast<std::uint32_t>(QVR::intValue(document[key], 640));
        };
        return std::uint64_t{side(width)} * side(height);
    };
    const auto isLarge = [](std::uint64_t count) { return count > large && count <= refused; };
    return isLarge(pixels("depthResX", "depthResY")) || isLarge(pixels("colorResX", "colorResY"));
}

void run(QVR::cameraManager& manager) {
    QVR::networkFrameData frame;
    for (int count = 0; count < 2; ++count) {
        QVR::cameraManager::update(frame);
    }
    QVR::ProtocolHeader header;
    manager.getNetworkFrameInfo(header);
    manager.getVariableReadout();
    QVR::Vector3 point{31.0, 24.0, 500.0};
    manager.applyCalibrationToCoord(point);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    fuzzing::swallowMessages();
    const std::string text(reinterpret_cast<const char*>(data), size);
    volume.write("QVR_calibration/touch.json", text);
    connectCamera();
    fuzzing::resetPipelineSwitches();

    QVR::cameraManager::init();
    QVR::cameraManager& manager = *QVR::cameraManager::get();
    run(manager);
    std::string error;
    if (!asksForLargeImages(json11::Json::parse(text, error))) {
        manager.setCalibrationData(text);
        run(manager);
    }
    QVR::cameraManager::destroy();
    return 0;
}
