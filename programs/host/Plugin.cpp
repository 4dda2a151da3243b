#include "host/Plugin.h"

#include <utility>

#include <dlfcn.h>

namespace host {

namespace {

// Looks up functions until one is missing, whose name it keeps.
class Lookup {
  public:
    explicit Lookup(void* library) : library_(library) {}

    template <typename Function>
    void operator()(const char* name, Function*& function) {
        if (missing_ != nullptr) {
            return;
        }
        function = reinterpret_cast<Function*>(dlsym(library_, name));
        if (function == nullptr) {
            missing_ = name;
        }
    }
    const char* missing() const { return missing_; }

  private:
    void* library_;
    const char* missing_ = nullptr;
};

std::string oneLine(std::string text) {
    for (char& letter : text) {
        if (letter == '\n' || letter == '\r') {
            letter = ' ';
        }
    }
    return text;
}

} // namespace

Plugin::Plugin(std::filesystem::path file, void* library)
    : file_(std::move(file)), library_(library) {}

Plugin::~Plugin() {
    dlclose(library_);
}

std::unique_ptr<Plugin> Plugin::load(const std::filesystem::path& file, std::string& problem) {
    std::error_code ignored;
    // A bare file name would make the loader search the system instead of this folder.
    const std::filesystem::path path = std::filesystem::absolute(file, ignored);
    if (!std::filesystem::exists(path, ignored)) {
        problem = "plug-in not found: " + file.string() +
                  "; build it (target qvr_touch) or name its file with --plugin FILE";
        return nullptr;
    }
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        problem = "cannot load the plug-in: " + oneLine(reason != nullptr ? reason : "unknown") +
                  "; name a plug-in built for this system with --plugin FILE";
        return nullptr;
    }
    std::unique_ptr<Plugin> plugin(new Plugin(path, library));
    if (const char* missing = plugin->lookUpFunctions()) {
        problem = "the plug-in " + file.string() + " has no function " + missing +
                  "; use the plug-in of the same release as this program";
        return nullptr;
    }
    return plugin;
}

std::unique_ptr<Plugin> Plugin::loadDefault(const std::filesystem::path& programFolder,
                                            std::string& problem) {
    std::string searched;
    for (const std::filesystem::path& place : defaultPlaces(programFolder)) {
        std::error_code ignored;
        if (std::filesystem::exists(place, ignored)) {
            return load(place, problem);
        }
        searched += (searched.empty() ? "" : ", ") + place.parent_path().string();
    }
    problem = "plug-in not found: " QVR_PLUGIN_FILE " is not in " + searched +
              "; build it (target qvr_touch) or name its file with --plugin FILE";
    return nullptr;
}

std::vector<std::filesystem::path>
Plugin::defaultPlaces(const std::filesystem::path& programFolder) {
    const std::filesystem::path prefix = programFolder.parent_path();
    std::vector<std::filesystem::path> places;
    places.push_back(programFolder / QVR_PLUGIN_FILE);
    places.push_back(prefix / "lib" / QVR_PLUGIN_FILE);
    const std::filesystem::path installed = prefix / QVR_INSTALL_LIBDIR / QVR_PLUGIN_FILE;
    if (installed != places.back()) {
        places.push_back(installed);
    }
    return places;
}

const char* Plugin::lookUpFunctions() {
    PluginFunctions& f = functions_;
    Lookup lookUp(library_);
    lookUp("registerDebugCallback", f.registerDebugCallback);
    lookUp("printDebug", f.printDebug);
    lookUp("init", f.init);
    lookUp("initClientWithCustomServer", f.initClientWithCustomServer);
    lookUp("shutDown", f.shutDown);
    lookUp("update", f.update);
    lookUp("setReceiveTimeout", f.setReceiveTimeout);
    lookUp("setReconnectReadsHeader", f.setReconnectReadsHeader);
    lookUp("hasDepthCamera", f.hasDepthCamera);
    lookUp("getDimX", f.getDimX);
    lookUp("getDimY", f.getDimY);
    lookUp("getColorDimX", f.getColorDimX);
    lookUp("getColorDimY", f.getColorDimY);
    lookUp("getTouchPoolSize", f.getTouchPoolSize);
    lookUp("prepareTouchCollection", f.prepareTouchCollection);
    lookUp("getTouchData", f.getTouchData);
    lookUp("setColorTexture", f.setColorTexture);
    lookUp("setDepthTexture", f.setDepthTexture);
    lookUp("setProcessedTexture", f.setProcessedTexture);
    lookUp("updateColorTexture", f.updateColorTexture);
    lookUp("updateDepthTexture", f.updateDepthTexture);
    lookUp("updateProcessedTexture", f.updateProcessedTexture);
    lookUp("applyCalibrationToCoord", f.applyCalibrationToCoord);
    lookUp("getCalibratedX", f.getCalibratedX);
    lookUp("getCalibratedY", f.getCalibratedY);
    lookUp("getCalibratedZ", f.getCalibratedZ);
    lookUp("setCalibration", f.setCalibration);
    lookUp("setProjectionMapping", f.setProjectionMapping);
    lookUp("loadProjectionMap", f.loadProjectionMap);
    lookUp("checkSettings", f.checkSettings);
    lookUp("logInternalVariables", f.logInternalVariables);
    lookUp("getCameraInfo", f.getCameraInfo);
    lookUp("setTouchLerp", f.setTouchLerp);
    lookUp("outputCalibratedTouches", f.outputCalibratedTouches);
    return lookUp.missing();
}

} // namespace host
