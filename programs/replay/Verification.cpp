#include "replay/Verification.h"

#include "camera/cameraManager.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "recording/RecordingError.h"
#include "server/CameraSource.h"
#include "server/ServerLog.h"

#include <algorithm>
#include <cstdlib>

namespace replay {

using QVR::cameraManager;
using recording::FrameInfo;

namespace {

server::Options optionsFor(const recording::Description& description) {
    // The recording stands for the display's volume.
    ::setenv("QVR_VOLUMES", ".", 1);
    server::Options options;
    options.camera = "images:.,pace=off";
    options.rawTouches = !description.calibrated;
    server::selectCameraSource(options);
    return options;
}

} // namespace

Verification::Verification(recording::RecordedFrames& frames)
    : frames_(frames), options_(optionsFor(frames.description())), session_(options_) {}

std::string Verification::form() const {
    return cameraManager::get()->blobs->getKernelReadout();
}

Result Verification::run(const std::function<void()>& step) {
    Result result;
    while (const std::optional<FrameInfo> recorded = frames_.next()) {
        result.frame = recorded->number;
        if (recorded->dropped != 0 && !recorded->tracking) {
            throw recording::RecordingError("frames are missing before frame " +
                                            std::to_string(recorded->number) +
                                            ", and what the tracking knew then");
        }
        result.gaps += recorded->dropped != 0 ? 1 : 0;
        result.missing += recorded->dropped;
        result.difference = recording::firstDifference(*recorded, play(*recorded));
        if (result.difference) {
            return result;
        }
        ++result.verified;
        step();
    }
    return result;
}

FrameInfo Verification::play(const FrameInfo& recorded) {
    cameraManager& manager = *cameraManager::get();
    if (recorded.tracking) {
        manager.blobs->cutoffDepth = recorded.tracking->cutoff;
        manager.touches->touchSlots = recorded.tracking->slots;
    }
    QVR::networkFrameData parts;
    const bool good = cameraManager::update(parts) == 0;
    FrameInfo got;
    got.number = server::currentFrameStamp({}).number;
    if (!good || got.number != recorded.number) {
        const std::string complaint = server::ServerLog::cameraComplaint();
        throw recording::RecordingError("the pictures of frame " + std::to_string(recorded.number) +
                                        " cannot be played" +
                                        (complaint.empty() ? "" : ": " + complaint));
    }
    const QVR::NetworkTouch* records = nullptr;
    manager.touches->getTouches(&records);
    std::copy_n(records, got.touches.size(), got.touches.begin());
    std::transform(manager.touches->touchSlots.begin(), manager.touches->touchSlots.end(),
                   got.tracked.begin(), [](const QVR::cTouch& slot) { return slot.lerpedPos; });
    return got;
}

} // namespace replay
