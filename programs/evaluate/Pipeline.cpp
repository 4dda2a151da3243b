#include "evaluate/Pipeline.h"

#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "evaluate/EvaluationError.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <map>

#include <json11.hpp>
#include <librealsense/camera_source.h>
#include <librealsense/rs.h>

namespace evaluate {

using QVR::cameraManager;

namespace {

constexpr std::size_t keptMessages = 12;

std::deque<std::string>& messageLines() {
    static std::deque<std::string> lines;
    return lines;
}

void keepMessage(const char* text) {
    std::deque<std::string>& lines = messageLines();
    lines.emplace_back(text);
    if (lines.size() > keptMessages) {
        lines.pop_front();
    }
}

// What a call of the camera library said, or "".
std::string taken(rs_error* error) {
    if (error == nullptr) {
        return "";
    }
    const std::string message = rs_get_error_message(error);
    rs_free_error(error);
    return message;
}

void selectCamera(const std::string& camera) {
    rs_error* error = nullptr;
    rs_select_camera_source(camera.empty() ? nullptr : camera.c_str(), &error);
    const std::string problem = taken(error);
    if (!problem.empty()) {
        throw EvaluationError(exitBadOption, problem);
    }
}

rs_device* device() {
    return cameraManager::get()->camera->device;
}

std::vector<TrueFinger> trueFingers() {
    rs_scene_truth scene{};
    rs_error* error = nullptr;
    rs_get_scene_truth(device(), &scene, &error);
    std::vector<TrueFinger> fingers;
    if (!taken(error).empty() || scene.known == 0) {
        return fingers;
    }
    const int count = std::clamp(scene.finger_count, 0, RS_SCENE_MAX_FINGERS);
    for (int i = 0; i < count; ++i) {
        const rs_scene_finger& finger = scene.fingers[i];
        fingers.push_back({finger.id,
                           finger.touching != 0,
                           {finger.pixel[0], finger.pixel[1], finger.depth},
                           {finger.display[0], finger.display[1], finger.display[2]}});
    }
    return fingers;
}

std::vector<SeenTouch> seenTouches(const QVR::NetworkTouch* records) {
    std::vector<SeenTouch> touches;
    if (records == nullptr) {
        return touches;
    }
    const auto& slots = cameraManager::get()->touches->touchSlots;
    for (std::size_t slot = 0; slot < slots.size(); ++slot) {
        const QVR::NetworkTouch& record = records[slot];
        // A touch outside the grid is sent at this place, and a host cannot use it.
        const bool unusable = record.x == -1.0 && record.y == -1.0 && record.z == -1.0;
        if (record.active == 1 && !unusable) {
            const QVR::TouchPosition& place = slots[slot].lerpedPos;
            touches.push_back({static_cast<int>(slot),
                               {place.x, place.y, place.z},
                               {record.x, record.y, record.z}});
        }
    }
    return touches;
}

std::vector<SeenBlob> seenBlobs() {
    std::vector<SeenBlob> blobs;
    for (QVR::cImageBlob& blob : cameraManager::get()->blobs->blobs) {
        if (blob.valid) {
            blobs.push_back({{blob.centerX, blob.centerY, blob.centerDepth},
                             static_cast<int>(blob.minY),
                             static_cast<int>(blob.maxY)});
        }
    }
    return blobs;
}

} // namespace

Pipeline::Messages::Messages() {
    messageLines().clear();
    QVR::Logger::RegisterDebugCallback(&keepMessage);
}

Pipeline::Messages::~Messages() {
    QVR::Logger::RegisterDebugCallback(nullptr);
}

std::string Pipeline::Messages::text() {
    std::string text;
    for (const std::string& line : messageLines()) {
        text += "\n  " + line;
    }
    return text;
}

Pipeline::Pipeline(const std::string& camera, const std::string& touchJson)
    : volume_(std::map<std::string, std::string>{{QVR::utils::distortionMapFilePath, touchJson}}) {
    selectCamera(camera);
    try {
        start(touchJson);
    } catch (...) {
        if (cameraManager::get() != nullptr) {
            cameraManager::destroy();
        }
        selectCamera("");
        throw;
    }
}

void Pipeline::start(const std::string& touchJson) {
    try {
        cameraManager::init();
    } catch (const std::exception& error) {
        throw EvaluationError(exitBadSettings,
                              "the pipeline does not start: " + std::string(error.what()));
    }
    cameraManager* const manager = cameraManager::get();
    if (!manager->isCameraStreaming()) {
        throw EvaluationError(exitBadSettings,
                              "the camera does not start with these settings:" + Messages::text());
    }
    // The grid leads straight to the display, whatever lies about on other volumes.
    std::string none;
    manager->setProjectionMap(none, 0);
    // As the camera server does, once more now that the units are known, for the clip distances.
    std::string error;
    json11::Json document = json11::Json::parse(touchJson, error);
    manager->blobs->loadJson(document);
}

Pipeline::~Pipeline() {
    cameraManager::destroy();
    rs_error* error = nullptr;
    rs_select_camera_source(nullptr, &error);
    taken(error);
}

FrameRecord Pipeline::next() {
    QVR::networkFrameData frame{};
    if (cameraManager::update(frame) != 0) {
        throw EvaluationError(exitFailed, "the camera stopped:" + Messages::text());
    }
    long long count = 0;
    depthFrame_ = cameraManager::get()->camera->getDepthFrame(count);
    return {seenTouches(frame.touches), seenBlobs(), trueFingers()};
}

double Pipeline::unitsPerMeter() const {
    return static_cast<double>(cameraManager::get()->getCameraOneMeterScale());
}

Pinhole Pipeline::pinhole() const {
    rs_intrinsics intrinsics{};
    rs_error* error = nullptr;
    rs_get_stream_intrinsics(device(), RS_STREAM_DEPTH, &intrinsics, &error);
    if (const std::string problem = taken(error); !problem.empty()) {
        throw EvaluationError(exitFailed, problem);
    }
    return {intrinsics.fx, intrinsics.fy, intrinsics.ppx, intrinsics.ppy, 1000.0 / unitsPerMeter()};
}

host::Snapshot Pipeline::snapshot(const FrameRecord& frame) const {
    const cameraManager& manager = *cameraManager::get();
    const int width = static_cast<int>(manager.depthResX);
    const int height = static_cast<int>(manager.depthResY);
    host::Snapshot snapshot;
    snapshot.depth = programs::DepthImage(width, height);
    std::copy_n(depthFrame_, snapshot.depth.values.size(), snapshot.depth.values.begin());
    snapshot.processed = programs::GrayImage(width, height);
    snapshot.processed.values = manager.blobs->mask;
    for (const SeenTouch& touch : frame.touches) {
        snapshot.touches.push_back(
            {{touch.slot, static_cast<float>(touch.display[0]),
              static_cast<float>(touch.display[1]), static_cast<float>(touch.display[2])},
             true,
             static_cast<float>(touch.measured[0]),
             static_cast<float>(touch.measured[1])});
    }
    return snapshot;
}

void Pipeline::setCalibrated(bool on) {
    cameraManager::get()->setOutputCalibratedTouches(on);
}

} // namespace evaluate
