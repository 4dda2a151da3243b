#include "client/plugin.h"

#include "client/ClientManager.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"

#include <exception>

namespace {

using QVR::ClientManager;
using QVR::Logger;

// The log callback is the host's and may throw itself.
void reportFailure(const char* function, const char* reason) noexcept {
    try {
        Logger::Log(std::string("ERROR: ") + function + "() failed: " + reason);
    } catch (...) {
    }
}

// Runs `body`; an exception ends here, as a log line and `fallback`. No host can be expected to
// unwind through a C function.
template <typename Result, typename Body>
Result guarded(const char* function, Result fallback, Body body) noexcept {
    try {
        return body();
    } catch (const std::exception& failure) {
        reportFailure(function, failure.what());
    } catch (...) {
        reportFailure(function, "unknown exception");
    }
    return fallback;
}

template <typename Body>
void guarded(const char* function, Body body) noexcept {
    guarded(function, false, [&body] {
        body();
        return true;
    });
}

// Runs `ask` on the client, or gives `fallback` when there is none.
template <typename Result, typename Ask>
Result askClient(const char* function, Result fallback, Ask ask) noexcept {
    return guarded(function, fallback, [&]() -> Result {
        return ClientManager::HasInstance() ? ask(*ClientManager::Get()) : fallback;
    });
}

template <typename Act>
bool tellClient(const char* function, Act act) noexcept {
    return askClient(function, false, [&act](ClientManager& client) {
        act(client);
        return true;
    });
}

void warnOnlyBesideCamera(const char* function) noexcept {
    guarded(function, [function] {
        Logger::Log(std::string("WARNING: ") + function +
                    "() is not available in the client version.");
    });
}

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

extern "C" {

void registerDebugCallback(void (*callback)(const char*)) {
    Logger::RegisterDebugCallback(callback);
}

void printDebug(bool on) {
    guarded("printDebug", [on] {
        ClientManager::debugLogging = on;
        Logger::Log(std::string("Set debugging to ") + (on ? "ON" : "OFF"));
    });
}

void init() {
    guarded("init", [] {
        if (ClientManager::debugLogging) {
            Logger::Log("Init()...");
        }
        ClientManager::Init();
    });
}

void initClientWithCustomServer(const char* ip, unsigned int port) {
    guarded("initClientWithCustomServer", [ip, port] {
        const std::string host = textOf(ip);
        if (ClientManager::debugLogging) {
            Logger::Log("Init()...");
            Logger::Log("Connecting to: " + host + " : " + std::to_string(port));
        }
        ClientManager::Init(host, port);
    });
}

void shutDown() {
    guarded("shutDown", [] { ClientManager::Destroy(); });
}

void setReceiveTimeout(int milliseconds) {
    ClientManager::receiveTimeoutMs = milliseconds;
}

void setReconnectReadsHeader(bool on) {
    ClientManager::reconnectReadsHeader = on;
}

int update() {
    return guarded("update", int{QVR_UPDATE_NO_CLIENT}, [] { return ClientManager::Update(); });
}

bool hasDepthCamera() {
    return ClientManager::HasInstance();
}

int getDimX() {
    return askClient("getDimX", -1,
                     [](ClientManager& client) { return static_cast<int>(client.header.depthX); });
}

int getDimY() {
    return askClient("getDimY", -1,
                     [](ClientManager& client) { return static_cast<int>(client.header.depthY); });
}

int getColorDimX() {
    return askClient("getColorDimX", -1,
                     [](ClientManager& client) { return static_cast<int>(client.header.colorX); });
}

int getColorDimY() {
    return askClient("getColorDimY", -1,
                     [](ClientManager& client) { return static_cast<int>(client.header.colorY); });
}

int getTouchPoolSize() {
    return askClient("getTouchPoolSize", -1, [](ClientManager& client) {
        return static_cast<int>(client.header.touchCount);
    });
}

bool prepareTouchCollection() {
    return tellClient("prepareTouchCollection",
                      [](ClientManager& client) { client.prepareTouchCollection(); });
}

float getTouchData() {
    return askClient("getTouchData", -9999.0f, [](ClientManager& client) {
        return static_cast<float>(client.getTouchData());
    });
}

bool setColorTexture(unsigned char* buffer) {
    return tellClient("setColorTexture",
                      [buffer](ClientManager& client) { client.colorTexture = buffer; });
}

bool setDepthTexture(unsigned char* buffer) {
    return tellClient("setDepthTexture",
                      [buffer](ClientManager& client) { client.depthTexture = buffer; });
}

bool setProcessedTexture(unsigned char* buffer) {
    return tellClient("setProcessedTexture",
                      [buffer](ClientManager& client) { client.processedTexture = buffer; });
}

bool updateColorTexture() {
    return tellClient("updateColorTexture",
                      [](ClientManager& client) { client.updateColorTexture(); });
}

bool updateDepthTexture() {
    return tellClient("updateDepthTexture",
                      [](ClientManager& client) { client.updateDepthTexture(); });
}

bool updateProcessedTexture() {
    return tellClient("updateProcessedTexture",
                      [](ClientManager& client) { client.updateProcessedTexture(); });
}

void applyCalibrationToCoord(float x, float y, float z) {
    calibratedCoord = {x, y, z};
    tellClient("applyCalibrationToCoord",
               [](ClientManager& client) { client.applyCalibrationToCoord(calibratedCoord); });
}

float getCalibratedX() {
    return static_cast<float>(calibratedCoord.x);
}

float getCalibratedY() {
    return static_cast<float>(calibratedCoord.y);
}

float getCalibratedZ() {
    return static_cast<float>(calibratedCoord.z);
}

void setCalibration(const char* json) {
    guarded("setCalibration", [json] { setCalibrationAsString(textOf(json)); });
}

bool setProjectionMapping(const char* json, int number) {
    return askClient("setProjectionMapping", false, [json, number](ClientManager& client) {
        return client.setProjectionMap(textOf(json), number);
    });
}

bool loadProjectionMap(int number) {
    return guarded("loadProjectionMap", false, [number] {
        const std::string path = QVR::utils::findFilePath(QVR::utils::projectionMapFilePath);
        const std::string text = QVR::utils::readFileContent(path);
        if (text.empty()) {
            Logger::Log("Could not read data from: " + path);
            return false;
        }
        Logger::Log("Loading projection map file: " + path);
        return setProjectionMapping(text.c_str(), number);
    });
}

void logInternalVariables() {
    warnOnlyBesideCamera("logInternalVariables");
}

const char* getCameraInfo() {
    warnOnlyBesideCamera("getCameraInfo");
    return nullptr;
}

void setTouchLerp(float) {
    warnOnlyBesideCamera("setTouchLerp");
}

void outputCalibratedTouches(bool) {
    warnOnlyBesideCamera("outputCalibratedTouches");
}

} // extern "C"

int setCalibrationAsString(std::string json) {
    constexpr int notLoaded = -10;
    return guarded("setCalibrationAsString", notLoaded, [&json] {
        return ClientManager::HasInstance() ? ClientManager::Get()->setCalibrationData(json) : 0;
    });
}
