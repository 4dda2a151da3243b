#include "CameraRecording.h"

#include "CameraSource.h"
#include "Options.h"
#include "ServerError.h"
#include "ServerLog.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/utils.h"
#include "recording/RecordingError.h"

#include <algorithm>
#include <cstddef>

#include <librealsense/rs.hpp>
#include <nlohmann/json.hpp>

namespace server {

using QVR::cameraManager;

namespace {

constexpr std::chrono::seconds dropReportPeriod{10};

recording::RecordingFolder freshFolder(const std::string& folder) {
    try {
        return recording::RecordingFolder(folder);
    } catch (const recording::RecordingError& error) {
        throw ServerError(exitBadOption, error.what());
    }
}

std::size_t pixels(const rs_intrinsics& image) {
    return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
}

// Null when there is none.
const void* nativePicture(rs_stream stream) {
    return rs_get_frame_data(cameraManager::get()->camera->device, stream, nullptr);
}

recording::Description currentDescription(const Options& options) {
    const cameraManager& manager = *cameraManager::get();
    recording::Description description = recording::describe(manager.camera->device);
    description.recorder = options.program + " " QVR_VERSION;
    description.uri = cameraSource(options);
    description.fps = manager.fps;
    description.calibrated = manager.touches->outputCalibratedTouches;
    description.detectionForm = manager.blobs->getKernelReadout();
    return description;
}

// What the pipeline found of them. A document that is not there is an empty one.
std::map<std::string, std::string> currentSettings() {
    std::map<std::string, std::string> settings;
    for (const std::string& place :
         {QVR::utils::distortionMapFilePath, QVR::utils::projectionMapFilePath,
          QVR::utils::clientSettingsFilePath})
        settings[place] = QVR::utils::readFileContent(QVR::utils::findFilePath(place));
    return settings;
}

recording::Tracking currentTracking() {
    const cameraManager& manager = *cameraManager::get();
    return {manager.blobs->cutoffDepth, manager.touches->touchSlots};
}

std::string frames(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

} // namespace

CameraRecording::CameraRecording(const std::string& folder, std::uint64_t every,
                                 recording::WhenFull whenFull)
    : folder_(freshFolder(folder)), every_(every), whenFull_(whenFull) {}

CameraRecording::~CameraRecording() {
    finish();
}

void CameraRecording::cameraStarted(const Options& options) {
    if (ended_)
        return;
    before_ = {};
    restarted_ = recorder_.has_value();
    try {
        const recording::Description description = currentDescription(options);
        Settings settings = currentSettings();
        if (!recorder_) {
            settings_ = std::move(settings);
            begin(description);
        } else if (jsonOf(description) != jsonOf(description_) || settings != settings_) {
            end("the camera came back with other sizes or settings");
        }
    } catch (const rs::error& error) {
        if (!recorder_)
            throw ServerError(exitNoCamera, error.what());
        end(error.what());
    }
}

void CameraRecording::begin(const recording::Description& description) {
    description_ = description;
    try {
        folder_.begin(description_, settings_);
    } catch (const recording::RecordingError& error) {
        throw ServerError(exitBadOption, error.what());
    }
    const std::size_t depth = pixels(description_.depth);
    const std::size_t color = pixels(description_.color) * 3;
    recorder_.emplace(
        depth, color, recording::Recorder::bufferCount(depth, color), every_,
        [this](const recording::FrameInfo& frame, const recording::PictureView& pictures) {
            folder_.write(frame, pictures);
        },
        [this](const std::string& why) {
            ServerLog::notice("WARNING: the recording ends after " + frames(folder_.frameCount()) +
                              ": " + why);
        },
        whenFull_);
}

void CameraRecording::takeFrame(std::uint64_t number, double seconds,
                                const QVR::NetworkTouch* records) {
    if (ended_ || !recorder_)
        return;
    const FrameStamp stamp = currentFrameStamp({number, seconds});
    recording::FrameInfo frame;
    frame.number = stamp.number;
    frame.seconds = stamp.seconds;
    std::copy_n(records, frame.touches.size(), frame.touches.begin());
    const recording::Tracking after = currentTracking();
    std::transform(after.slots.begin(), after.slots.end(), frame.tracked.begin(),
                   [](const QVR::cTouch& slot) { return slot.lerpedPos; });
    if (restarted_)
        frame.tracking = before_;
    restarted_ = false;
    const auto* const depth = static_cast<const std::uint16_t*>(nativePicture(RS_STREAM_DEPTH));
    const auto* const color = static_cast<const std::uint8_t*>(nativePicture(RS_STREAM_COLOR));
    if (depth == nullptr || color == nullptr) {
        end("the camera does not give its pictures");
        return;
    }
    recorder_->offer(frame,
                     {{depth, pixels(description_.depth)}, {color, pixels(description_.color) * 3}},
                     before_);
    before_ = after;
    reportDropped();
}

void CameraRecording::reportDropped() {
    const std::uint64_t dropped = recorder_->dropped();
    const Clock::time_point now = Clock::now();
    if (dropped == reportedDrops_ || now - reported_ < dropReportPeriod)
        return;
    ServerLog::notice("WARNING: the disk or the processor is too slow for the recording; " +
                      frames(dropped) + " left out so far");
    reportedDrops_ = dropped;
    reported_ = now;
}

void CameraRecording::end(const std::string& why) {
    ended_ = true;
    ServerLog::notice("WARNING: the recording ends: " + why);
}

bool CameraRecording::ended() const {
    return ended_ || (recorder_ && recorder_->failed());
}

void CameraRecording::finish() {
    if (!recorder_)
        return;
    recorder_->finish();
    ServerLog::notice(
        "recorded " + frames(recorder_->written()) + " to " + folder_.path().string() +
        (recorder_->dropped() == 0 ? "" : "; " + frames(recorder_->dropped()) + " left out"));
    recorder_.reset();
}

} // namespace server
