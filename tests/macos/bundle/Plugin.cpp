#include "macos/bundle/Plugin.h"

#include "macos/gnustep/FixedVolumes.h"
#include "macos/loader/Bundle.h"

#include <cstdlib>

#include <dlfcn.h>

namespace {

class LinuxPlugin final : public Plugin {
  public:
    LinuxPlugin() : library_(dlopen(LINUX_PLUGIN, RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
        findFunctions();
    }

    void setVolumes(const std::vector<std::string>& roots) override {
        std::string list;
        for (const std::string& root : roots) {
            list += (list.empty() ? "" : ":") + root;
        }
        setenv("QVR_VOLUMES", list.c_str(), 1);
    }

  private:
    void* find(const std::string& name) const override {
        void* symbol = dlsym(library_, name.c_str());
        if (symbol == nullptr) {
            throw std::runtime_error(dlerror());
        }
        return symbol;
    }

    void* library_;
};

class MacosPlugin final : public Plugin {
  public:
    MacosPlugin() { findFunctions(); }

    void setVolumes(const std::vector<std::string>& roots) override {
        gnustep::setFixedVolumes(roots);
    }

  private:
    void* find(const std::string& name) const override { return bundle_.find(name); }

    loader::Bundle bundle_{MACOS_PLUGIN};
};

} // namespace

void Plugin::findFunctions() {
    const auto findIn = [](void* plugin, const char* name) -> void* {
        try {
            return static_cast<Plugin*>(plugin)->find(name);
        } catch (const std::runtime_error&) {
            return nullptr;
        }
    };
    if (!findPluginFunctions(&functions_, findIn, this)) {
        throw std::runtime_error("the plug-in lacks functions");
    }
}

Plugin& linuxPlugin() {
    static LinuxPlugin plugin;
    return plugin;
}

Plugin& macosPlugin() {
    static MacosPlugin plugin;
    return plugin;
}
