// The plug-in as any host sees it: a file with C functions that are looked up by name.
//
// The program never links the plug-in. A host written for this interface on another system does
// the same, so what works here works there.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace host {

// Every C function of the plug-in. All of them are set in a plug-in that was loaded.
struct PluginFunctions {
    void (*registerDebugCallback)(void (*callback)(const char* message)) = nullptr;
    void (*printDebug)(bool on) = nullptr;
    void (*init)() = nullptr;
    void (*initClientWithCustomServer)(const char* address, unsigned port) = nullptr;
    void (*shutDown)() = nullptr;
    int (*update)() = nullptr;
    void (*setReceiveTimeout)(int milliseconds) = nullptr;
    void (*setReconnectReadsHeader)(bool on) = nullptr;
    bool (*hasDepthCamera)() = nullptr;
    int (*getDimX)() = nullptr;
    int (*getDimY)() = nullptr;
    int (*getColorDimX)() = nullptr;
    int (*getColorDimY)() = nullptr;
    int (*getTouchPoolSize)() = nullptr;
    bool (*prepareTouchCollection)() = nullptr;
    float (*getTouchData)() = nullptr;
    bool (*setColorTexture)(unsigned char* pixels) = nullptr;
    bool (*setDepthTexture)(unsigned char* pixels) = nullptr;
    bool (*setProcessedTexture)(unsigned char* pixels) = nullptr;
    bool (*updateColorTexture)() = nullptr;
    bool (*updateDepthTexture)() = nullptr;
    bool (*updateProcessedTexture)() = nullptr;
    void (*applyCalibrationToCoord)(float x, float y, float z) = nullptr;
    float (*getCalibratedX)() = nullptr;
    float (*getCalibratedY)() = nullptr;
    float (*getCalibratedZ)() = nullptr;
    void (*setCalibration)(const char* json) = nullptr;
    bool (*setProjectionMapping)(const char* json, int mapNumber) = nullptr;
    bool (*loadProjectionMap)(int mapNumber) = nullptr;
    int (*checkSettings)(const char* folder, bool asServer,
                         void (*report)(const char* line)) = nullptr;
    void (*logInternalVariables)() = nullptr;
    const char* (*getCameraInfo)() = nullptr;
    void (*setTouchLerp)(float lerp) = nullptr;
    void (*outputCalibratedTouches)(bool on) = nullptr;
};

// A loaded plug-in; unloaded with the object, after which no function may be called.
class Plugin {
  public:
    // Loads the file and looks up every function. On failure returns null and puts one line into
    // `problem`: what is missing, and what to do about it.
    static std::unique_ptr<Plugin> load(const std::filesystem::path& file, std::string& problem);
    // Loads the plug-in that belongs to the program in `programFolder`: the first of
    // `defaultPlaces` that is a file.
    static std::unique_ptr<Plugin> loadDefault(const std::filesystem::path& programFolder,
                                               std::string& problem);
    // Where a plug-in that belongs to a program may lie: beside it, and in the library folders
    // next to the program's folder.
    static std::vector<std::filesystem::path>
    defaultPlaces(const std::filesystem::path& programFolder);

    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const PluginFunctions& functions() const { return functions_; }
    const std::filesystem::path& file() const { return file_; }

  private:
    Plugin(std::filesystem::path file, void* library);
    // The name of the first function that is missing, or null.
    const char* lookUpFunctions();

    std::filesystem::path file_;
    void* library_;
    PluginFunctions functions_;
};

} // namespace host
