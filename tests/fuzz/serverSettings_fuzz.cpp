// The calibration document in the camera server as a whole: from the file to the header that its
// clients get, on a small simulated camera.
#include "CameraSession.h"
#include "CameraSource.h"
#include "Options.h"
#include "ServerError.h"
#include "camera/cameraManager.h"
#include "fuzzing.h"
#include "pipelineSwitches.h"
#include "support/TemporaryVolume.h"

#include <optional>

namespace {

server::Options smallCamera() {
    server::Options options;
    options.camera = "simulated:pace=off,noise=0,depth=32x24,color=16x16";
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    static const server::Options options = [] {
        const server::Options chosen = smallCamera();
        server::selectCameraSource(chosen);
        return chosen;
    }();
    fuzzing::swallowMessages();
    fuzzing::resetPipelineSwitches();
    volume.write("QVR_calibration/touch.json",
                 std::string(reinterpret_cast<const char*>(data), size));
    try {
        server::CameraSession session(options);
        QVR::networkFrameData frame;
        for (int count = 0; count < 2; ++count) {
            QVR::cameraManager::update(frame);
        }
        fuzzing::require(session.framePeriod().count() > 0, "time passes between frames");
    } catch (const server::ServerError& problem) {
        fuzzing::require(problem.what()[0] != '\0', "a refusal says why");
    }
    return 0;
}
