#include "macos/bundle/LibcxxString.h"
#include "macos/bundle/Plugin.h"
#include "portability/plugin.h"

namespace portability {

namespace {

// Names in which the compiler spells the text of its own C++ library.
const std::string text = "NSt3__112basic_stringIcNS1_11char_traitsIcEENS1_9allocatorIcEEEE";

// A text that a member function returns is made in a place that the caller names first.
std::string textFrom(const std::string& function, void* argument) {
    LibcxxString result;
    macosPlugin().function<void(LibcxxString*, void*)>(function)(&result, argument);
    return result.text();
}

class CameraManager {
  public:
    CameraManager() {
        macosPlugin().function<void()>("_ZN3QVR13cameraManager4initEv")();
        object_ = macosPlugin().function<void*()>("_ZN3QVR13cameraManager3getEv")();
    }
    ~CameraManager() { macosPlugin().function<void()>("_ZN3QVR13cameraManager7destroyEv")(); }
    CameraManager(const CameraManager&) = delete;
    CameraManager& operator=(const CameraManager&) = delete;

    void* object() const { return object_; }

  private:
    void* object_ = nullptr;
};

} // namespace

const PluginFunctions& plugin() {
    return macosPlugin().c();
}

void setVolumes(const std::vector<std::string>& roots) {
    macosPlugin().setVolumes(roots);
}

// Texts that are passed by value are the caller's, and the function gets where they are.
void log(const std::string& message, float value) {
    LibcxxString copy(message);
    macosPlugin().function<void(LibcxxString*, float)>("_ZN3QVR6Logger3LogE" + text + "f")(&copy,
                                                                                           value);
}

void log(const std::string& message, int value) {
    LibcxxString copy(message);
    macosPlugin().function<void(LibcxxString*, int)>("_ZN3QVR6Logger3LogE" + text + "i")(&copy,
                                                                                         value);
}

std::string textOf(QVR::ProtocolHeader header) {
    return textFrom("_ZN3QVR5utils14headerToStringERNS_14ProtocolHeaderE", &header);
}

std::string cameraInfo() {
    const CameraManager manager;
    return textFrom("_ZN3QVR13cameraManager17getCameraInfoJsonEv", manager.object());
}

std::string readoutWith(const std::string& document) {
    const CameraManager manager;
    const LibcxxString copy(document);
    macosPlugin().function<int(void*, const LibcxxString*)>(
        "_ZN3QVR13cameraManager18setCalibrationDataERK" + text)(manager.object(), &copy);
    return textFrom("_ZN3QVR13cameraManager18getVariableReadoutEv", manager.object());
}

} // namespace portability
