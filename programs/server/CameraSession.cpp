#include "CameraSession.h"

#include "CameraSource.h"
#include "ServerError.h"
#include "ServerLog.h"
#include "SettingsDocument.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <string>

#include <librealsense/rs.hpp>

namespace server {

using QVR::cameraManager;

namespace {

constexpr std::uint32_t protocolVersion = 1;
constexpr std::uint32_t byteOrderMarker = 0x01020304;

// Hosts refuse images above 256 MiB; a pixel has two bytes.
constexpr double largestImagePixels = 128.0 * 1024.0 * 1024.0;

std::string complaint() {
    const std::string text = ServerLog::cameraComplaint();
    return text.empty() ? text : "\nThe camera said: " + text;
}

} // namespace

CameraSession::Pipeline::Pipeline() {
    try {
        cameraManager::init();
    } catch (const rs::error& error) {
        throw ServerError(exitNoCamera, "the camera cannot be used: " + std::string(error.what()));
    } catch (const std::exception& error) {
        throw ServerError(exitBadSettings, "the settings in touch.json cannot be used: " +
                                               std::string(error.what()));
    }
}

CameraSession::Pipeline::~Pipeline() {
    cameraManager::destroy();
}

CameraSession::CameraSession(const Options& options) {
    requireStreaming(options);
    applyOptions(options);
    SettingsDocument document = SettingsDocument::read();
    applyDocument(document);
    makeDownsampler(document);
    header_.protocolID = protocolVersion;
    header_.endianTest = byteOrderMarker;
    cameraManager::get()->getNetworkFrameInfo(header_);
}

std::chrono::nanoseconds CameraSession::framePeriod() const {
    const int fps = std::clamp(cameraManager::get()->fps, 1, 1000);
    return std::chrono::nanoseconds(std::chrono::seconds(1)) / fps;
}

int CameraSession::port() const {
    return cameraManager::get()->port;
}

void CameraSession::requireStreaming(const Options& options) {
    cameraManager* const manager = cameraManager::get();
    if (manager->isCameraStreaming())
        return;
    // A source of pictures is always there; it does not fit then, most likely in size.
    const std::string source = cameraSource(options);
    if (!source.empty() && !source.starts_with("realsense"))
        throw ServerError(exitBadCameraSource,
                          "camera source '" + source +
                              "' does not start with the sizes and frame rate asked for (" +
                              std::to_string(manager->colorResX) + " x " +
                              std::to_string(manager->colorResY) + " colour, " +
                              std::to_string(manager->depthResX) + " x " +
                              std::to_string(manager->depthResY) + " depth, " +
                              std::to_string(manager->fps) + " frames a second)" + complaint());
    throw ServerError(exitNoCamera, "no camera that can be started. Connect a depth camera, or try "
                                    "--camera simulated" +
                                        complaint());
}

void CameraSession::applyOptions(const Options& options) {
    cameraManager::serverSendColor = options.color.value_or(cameraManager::serverSendColor);
    cameraManager::serverSendDepth = options.depth.value_or(cameraManager::serverSendDepth);
    cameraManager::serverSendProcessed =
        options.processed.value_or(cameraManager::serverSendProcessed);
    cameraManager::serverSendTouch = options.touch.value_or(cameraManager::serverSendTouch);
    if (options.rawTouches)
        cameraManager::get()->setOutputCalibratedTouches(false);
}

// The pipeline reads the clip distances before it knows how many units make a metre. Reading the
// detection section once more is what makes a user's distances count.
void CameraSession::applyDocument(SettingsDocument& document) {
    if (!document.value.is_null())
        cameraManager::get()->blobs->loadJson(document.value);
}

void CameraSession::makeDownsampler(const SettingsDocument& document) {
    const json11::Json& width = document.value["downsampleDepthX"];
    const json11::Json& height = document.value["downsampleDepthY"];
    if (!width.is_number() || !height.is_number())
        return;
    // The sizes that hosts make a downsampler of, so that both ends have one or neither has.
    constexpr double smallest = 3.0;
    const double targetX = std::trunc(width.number_value());
    const double targetY = std::trunc(height.number_value());
    cameraManager* const manager = cameraManager::get();
    if (targetX < smallest || targetY < 0.0 || manager->depthResX < smallest ||
        manager->depthResY < smallest)
        return;
    if (targetX == manager->depthResX && targetY == manager->depthResY)
        return;
    if (targetX * std::max(targetY, 1.0) > largestImagePixels) {
        ServerLog::notice("WARNING: downsampleDepthX and downsampleDepthY in " + document.path +
                          " make too large an image; depth is sent in full size");
        return;
    }
    manager->downsampler = std::make_unique<QVR::ImageDownsampler>(
        manager->depthResX, manager->depthResY, static_cast<unsigned int>(targetX),
        static_cast<unsigned int>(targetY));
}

} // namespace server
