#include "camera/cameraManager.h"

#include "foundation/Logger.h"

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
cameraManager* cameraManager::_instance = nullptr;

cameraManager* cameraManager::get() {
    return _instance;
}

void cameraManager::log(std::string message) {
    Logger::Log(message);
}

void cameraManager::log(std::string message, float value) {
    Logger::Log(message, value);
}

} // namespace QVR
