#include "CameraSource.h"

#include "ServerError.h"

#include <algorithm>
#include <cstdlib>

#if QVR_HAVE_CAMERA_SOURCES
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"

#include <librealsense/camera_source.h>
#endif

namespace server {

std::string cameraSource(const Options& options) {
    if (options.camera)
        return *options.camera;
    const char* variable = std::getenv("QVR_CAMERA");
    return variable != nullptr ? variable : "";
}

#if QVR_HAVE_CAMERA_SOURCES

void selectCameraSource(const Options& options) {
    const std::string source = cameraSource(options);
    if (source.empty())
        return;
    rs_error* error = nullptr;
    rs_select_camera_source(source.c_str(), &error);
    if (error == nullptr)
        return;
    const std::string message = rs_get_error_message(error);
    rs_free_error(error);
    throw ServerError(exitBadCameraSource, "camera source '" + source + "': " + message);
}

namespace {

std::optional<rs_scene_truth> currentScene() {
    rs_scene_truth scene{};
    rs_error* error = nullptr;
    rs_get_scene_truth(QVR::cameraManager::get()->camera->device, &scene, &error);
    if (error != nullptr) {
        rs_free_error(error);
        return std::nullopt;
    }
    return scene;
}

} // namespace

FrameStamp currentFrameStamp(const FrameStamp& fallback) {
    const std::optional<rs_scene_truth> scene = currentScene();
    if (!scene)
        return fallback;
    return {scene->frame, scene->timed != 0 ? scene->seconds : fallback.seconds};
}

std::optional<SceneTruth> currentSceneTruth() {
    const std::optional<rs_scene_truth> scene = currentScene();
    if (!scene || scene->known == 0)
        return std::nullopt;
    SceneTruth truth;
    const int count = std::clamp(scene->finger_count, 0, RS_SCENE_MAX_FINGERS);
    for (int i = 0; i < count; ++i) {
        const rs_scene_finger& finger = scene->fingers[i];
        truth.push_back({finger.id,
                         finger.touching != 0,
                         {finger.pixel[0], finger.pixel[1]},
                         finger.depth,
                         {finger.display[0], finger.display[1], finger.display[2]}});
    }
    return truth;
}

#else

void selectCameraSource(const Options& options) {
    if (options.camera)
        throw ServerError(exitBadOption, "--camera: the camera library of this build knows "
                                         "connected cameras only");
}

std::optional<SceneTruth> currentSceneTruth() {
    return std::nullopt;
}

FrameStamp currentFrameStamp(const FrameStamp& fallback) {
    return fallback;
}

#endif

} // namespace server
