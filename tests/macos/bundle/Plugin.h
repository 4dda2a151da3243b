// The plug-in in two of its builds, both loaded into this process.
#pragma once

#include "client/pluginFunctions.h"

#include <stdexcept>
#include <string>
#include <vector>

class Plugin {
  public:
    virtual ~Plugin() = default;
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const PluginFunctions& c() const { return functions_; }

    // A function of an exported class, by the name that compilers give it. Those that take or
    // return texts have other names and other texts in each build.
    template <typename Signature>
    Signature* function(const std::string& name) const {
        return reinterpret_cast<Signature*>(find(name));
    }

    // What is looked through for settings and calibrations, before anything else.
    virtual void setVolumes(const std::vector<std::string>& roots) = 0;

  protected:
    Plugin() = default;
    // To be called when `find` works. Throws when a C function is missing.
    void findFunctions();
    // Throws when there is no such export.
    virtual void* find(const std::string& name) const = 0;

  private:
    PluginFunctions functions_{};
};

// Loaded with the first call, for the life of the process.
Plugin& linuxPlugin();
Plugin& macosPlugin();
