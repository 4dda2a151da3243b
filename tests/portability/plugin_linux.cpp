#include "camera/cameraManager.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"
#include "portability/plugin.h"

#include <cstdlib>
#include <stdexcept>

#include <dlfcn.h>

namespace portability {

const PluginFunctions& plugin() {
    static const PluginFunctions functions = [] {
        PluginFunctions found{};
        if (!findPluginFunctions(&found, dlsym, RTLD_DEFAULT)) {
            throw std::runtime_error("the library lacks functions");
        }
        return found;
    }();
    return functions;
}

void setVolumes(const std::vector<std::string>& roots) {
    std::string list;
    for (const std::string& root : roots) {
        list += root + ":";
    }
    setenv("QVR_VOLUMES", list.c_str(), 1);
}

void log(const std::string& message, float value) {
    QVR::Logger::Log(message, value);
}

void log(const std::string& message, int value) {
    QVR::Logger::Log(message, value);
}

std::string textOf(QVR::ProtocolHeader header) {
    return QVR::utils::headerToString(header);
}

std::string cameraInfo() {
    QVR::cameraManager::init();
    const std::string text = QVR::cameraManager::get()->getCameraInfoJson();
    QVR::cameraManager::destroy();
    return text;
}

std::string readoutWith(const std::string& document) {
    QVR::cameraManager::init();
    QVR::cameraManager::get()->setCalibrationData(document);
    const std::string text = QVR::cameraManager::get()->getVariableReadout();
    QVR::cameraManager::destroy();
    return text;
}

} // namespace portability
