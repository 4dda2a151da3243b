// Creation, settings and destruction of the one client.
#include "client/ClientManager.h"

#include "calibration/calibrationManager.h"
#include "client/ClientSettings.h"
#include "client/TimeLimit.h"
#include "detection/ImageDownsampler.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"
#include "serverClient/NetworkClient.h"

std::mutex clientManagerMutex;
QVR::Vector3 calibratedCoord;

namespace QVR {

ClientManager* ClientManager::_instance = nullptr;
bool ClientManager::debugLogging = false;
bool ClientManager::convertImageBuffersTo8bit4channel = true;
bool ClientManager::ranSocketsInit = false;
int ClientManager::receiveTimeoutMs = 0;
bool ClientManager::reconnectReadsHeader = false;

namespace {

// The host's log callback may throw, which would end the program in a destructor.
void logWhileDestroying(const char* message) noexcept {
    if (!ClientManager::debugLogging) {
        return;
    }
    try {
        Logger::Log(message);
    } catch (...) {
        return;
    }
}

} // namespace

void ClientManager::Init() {
    if (debugLogging) {
        Logger::Log("Client manager Init...");
    }
    const std::string path = utils::findFilePath(utils::clientSettingsFilePath);
    ClientSettings settings;
    settings.receiveTimeoutMs = receiveTimeoutMs;
    settings.reconnectReadsHeader = reconnectReadsHeader;
    settings.read(utils::readFileContent(path));
    receiveTimeoutMs = settings.receiveTimeoutMs;
    reconnectReadsHeader = settings.reconnectReadsHeader;
    Init(settings.ip, static_cast<unsigned int>(settings.port));
}

void ClientManager::Init(const std::string& ip, unsigned int port) {
    if (debugLogging) {
        Logger::Log("Connecting to Server at: " + ip + " : " + std::to_string(port));
    }
    const std::lock_guard<std::mutex> lock(clientManagerMutex);
    if (_instance != nullptr) {
        if (debugLogging) {
            Logger::Log("WARNING: Depth plugin has already been initialized.");
        }
        return;
    }
    _instance = new ClientManager(ip, std::to_string(port));
}

void ClientManager::Destroy() {
    const std::lock_guard<std::mutex> lock(clientManagerMutex);
    if (debugLogging) {
        Logger::Log("Shutting down client manager...");
    }
    if (_instance == nullptr) {
        if (debugLogging) {
            Logger::Log("WARNING: Depth plugin has already been destroyed!");
        }
        return;
    }
    delete _instance;
    _instance = nullptr;
    if (debugLogging) {
        Logger::Log("Done shutting down ClientManager.");
    }
}

ClientManager* ClientManager::Get() {
    return _instance;
}

bool ClientManager::HasInstance() {
    return _instance != nullptr;
}

ClientManager::ClientManager(const std::string& serverIp, const std::string& serverPort)
    : ip(serverIp), port(serverPort) {
    header.protocolID = noHeaderYet;
    header.endianTest = 2;
    if (debugLogging) {
        Logger::Log("Client manager starting...");
    }
    networkClient = NetworkClient::mkClient();
    if (networkClient == nullptr) {
        Logger::Log("FATAL ERROR: Could not instantiate client!!");
        return;
    }
    // A server that is down is no reason against a client: every update tries again.
    try {
        const TimeLimit limit(networkClient, receiveTimeoutMs);
        CheckClientState();
        if (debugLogging) {
            Logger::Log("Client manager instantiated.");
        }
    } catch (...) {
        closeClient();
        NetworkClient::freeClient(networkClient);
        throw;
    }
}

ClientManager::~ClientManager() {
    logWhileDestroying("Client starting destructor...");
    releaseBuffers();
    calibration_.reset();
    downsampler_.reset();
    closeClient();
    NetworkClient::freeClient(networkClient);
    logWhileDestroying("Client destructor done.");
}

bool ClientManager::isConnected() {
    return _instance != nullptr && _instance->networkClient != nullptr &&
           _instance->networkClient->isConnected();
}

void ClientManager::closeClient() {
    if (networkClient != nullptr) {
        networkClient->close();
        networkClient->cleanup();
    }
}

} // namespace QVR
