// What the calibration document and the projection map document set, and the buffers that follow
// from them.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/StreamSettings.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/Logger.h"
#include "foundation/numbers.h"
#include "foundation/utils.h"

#include <algorithm>

#include <json11.hpp>
#include <librealsense/rs.hpp>

namespace QVR {

namespace {

// No camera has larger images; a damaged document must not take all of the machine's memory.
constexpr std::uint64_t largestImageBytes = 256ULL << 20;

// Nor a longer side: detection keeps room for every row and column, also of an image so thin, or so
// empty, that its pixels take little.
constexpr unsigned int longestSide = 65535;

bool isImageSize(unsigned int width, unsigned int height, unsigned int bytesPerPixel) {
    const std::uint64_t pixels = std::uint64_t{width} * height;
    return std::max(width, height) <= longestSide && pixels <= largestImageBytes / bytesPerPixel;
}

} // namespace

int cameraManager::setCalibrationData(const std::string& text) {
    if (!camera) {
        log("ERROR: realSense not initialized. Can't load cell calibration.");
        return -1;
    }
    if (text.empty()) {
        log("WARNING: Could not read touch calibration file. No calibration was loaded. "
            "Is the Quellbox USB connected?");
        resetBuffers();
        return -2;
    }
    std::string error = "noError";
    json11::Json document = json11::Json::parse(text, error);
    if (error != "noError") {
        Logger::Log("ERROR: There was a problem in parsing the calibration file contents: " +
                    error);
        resetBuffers();
        return -3;
    }

    readStreamSettings(document);
    if (!camera->isStreaming()) {
        openCamera(fps, document);
    }
    resetBuffers();
    distortionMap->importCellCalibration(document, getCameraOneMeterScale());
    touches->loadSettings(document, static_cast<int>(depthResX), static_cast<int>(depthResY));
    blobs->loadJson(document);
    return 0;
}

void cameraManager::readStreamSettings(const json11::Json& document) {
    StreamSettings settings;
    settings.sendColor = serverSendColor;
    settings.sendDepth = serverSendDepth;
    settings.sendProcessed = serverSendProcessed;
    settings.sendTouch = serverSendTouch;
    settings.autoClose = serverAutoClose;
    settings.port = port;
    settings.read(document);
    serverSendColor = settings.sendColor;
    serverSendDepth = settings.sendDepth;
    serverSendProcessed = settings.sendProcessed;
    serverSendTouch = settings.sendTouch;
    serverAutoClose = settings.autoClose;
    colorResX = settings.colorResX;
    colorResY = settings.colorResY;
    depthResX = settings.depthResX;
    depthResY = settings.depthResY;
    port = settings.port;
    fps = settings.fps;
}

void cameraManager::resetBuffers() {
    const bool depthFits = isImageSize(depthResX, depthResY, 2);
    const bool colorFits = isImageSize(colorResX, colorResY, 3);
    depthPixelCount = depthFits ? depthResX * depthResY : 0;
    depthBuffer.assign(depthPixelCount, 0);
    processedBuffer.assign(depthPixelCount, 0);
    colorBuffer.assign(colorFits ? std::size_t{colorResX} * colorResY * 3 : 0, 0);

    // A camera that was opened anew with other sizes than at start-up: detection reads whole
    // frames, so it has to follow. Until start-up has configured it, it has no size and waits.
    if (detectionConfigured && (blobs->width != depthResX || blobs->height != depthResY)) {
        configureDetection(blobs->oneMeter);
    }
}

void cameraManager::configureDetection(float oneMeter) {
    const bool fits = isImageSize(depthResX, depthResY, 2);
    blobs->setConfig(oneMeter, fits ? depthResX : 0, fits ? depthResY : 0);
    detectionConfigured = true;
}

float cameraManager::getCameraOneMeterScale() {
    if (!camera || camera->device == nullptr) {
        return -1.0f;
    }
    rs_error* error = nullptr;
    const float metersPerUnit = rs_get_device_depth_scale(camera->device, &error);
    rs::error::handle(error);
    return unitsPerMeter(metersPerUnit);
}

bool cameraManager::loadProjectionMapFromFile(int mode) {
    const std::string path = utils::findFilePath(utils::projectionMapFilePath);
    const std::string content = utils::readFileContent(path);
    if (content.empty()) {
        log("Could not read data from: " + path);
        return false;
    }
    log("Using projection map file: " + path);
    return setProjectionMap(content, mode);
}

bool cameraManager::setProjectionMap(const std::string& text, int mode) {
    if (text.empty()) {
        projectionMap.reset();
        return true;
    }
    if (!projectionMap) {
        projectionMap = std::make_unique<calibrationCell>();
    }
    if (!projectionMap->set(text, mode)) {
        log("Something went wrong in setting the projection map.");
        return false;
    }
    return true;
}

} // namespace QVR
