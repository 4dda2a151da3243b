// The camera manager's life: creation and destruction of the singleton, and its shared switches.
#include "camera/cameraManager.h"

#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/cWandManager.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"

#include <json11.hpp>

std::mutex mtx;

namespace QVR {

bool cameraManager::serverSendDepth = true;
bool cameraManager::serverSendTouch = true;
bool cameraManager::serverAutoClose = true;
bool cameraManager::debug = true;
float cameraManager::touchLerp = 0.8f;
bool cameraManager::serverSendColor = false;
bool cameraManager::serverSendProcessed = false;
bool cameraManager::processedTextureDebug = false;
Vector3 cameraManager::calibratedCoord;
// A plain pointer on purpose: a host that unloads the library without destroy() must not find the
// camera being stopped, and messages logged, among static destructors.
cameraManager* cameraManager::_instance = nullptr;

void cameraManager::init() {
    const std::lock_guard<std::mutex> lock(mtx);
    if (_instance != nullptr) {
        log("WARNING! QVR RealSense plugin has already been initialized!");
        return;
    }
    _instance = new cameraManager();
}

void cameraManager::destroy() {
    const std::lock_guard<std::mutex> lock(mtx);
    if (_instance == nullptr) {
        log("WARNING! QVR RealSense plugin has already been destroyed!");
        return;
    }
    delete _instance;
    _instance = nullptr;
}

cameraManager* cameraManager::get() {
    return _instance;
}

void cameraManager::log(std::string message) {
    Logger::Log(message);
}

void cameraManager::log(std::string message, float value) {
    Logger::Log(message, value);
}

cameraManager::cameraManager()
    : blobs(std::make_unique<blobManager>()), touches(std::make_unique<touchManager>()),
      distortionMap(std::make_unique<calibrationBlock>()) {
    if (_instance != nullptr) {
        log("QVR::cRealSenseMgr singleton violation! Bug detected! Code is not thread safe!");
        return;
    }
    cWandManager::init();
    try {
        camera = std::make_unique<hardwareCamera>();
    } catch (...) {
        log("Caught exception while initializing camera.");
    }

    const std::string path = utils::findFilePath(utils::distortionMapFilePath);
    const std::string document = utils::readFileContent(path);
    log((document.empty() ? "Could not read data from: " : "Using calibration file: ") + path);
    loadProjectionMapFromFile(0);
    if (setCalibrationData(document) < 0) {
        openFallbackCamera();
    }
    configureDetection(getCameraOneMeterScale());
}

// Each part goes while what it may lean on is still there; the camera's destructor stops the
// streams.
cameraManager::~cameraManager() {
    blobs.reset();
    touches.reset();
    projectionMap.reset();
    camera.reset();
    downsampler.reset();
    cWandManager::shutdown();
}

// Without a usable document touches still work at the sizes that every camera has.
void cameraManager::openFallbackCamera() {
    colorResX = 640;
    colorResY = 480;
    depthResX = 640;
    depthResY = 480;
    json11::Json noSettings;
    openCamera(60, noSettings);
}

void cameraManager::openCamera(int framesPerSecond, json11::Json& settings) {
    const bool open = camera && camera->init(colorResX, colorResY, depthResX, depthResY,
                                             framesPerSecond, settings) >= 0;
    log(open ? "Camera initialized and ready." : "Failed to initialize the camera.");
}

} // namespace QVR
