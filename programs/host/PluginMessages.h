// What the plug-in reports through the log callback.
#pragma once

#include "host/Plugin.h"

#include <mutex>
#include <set>
#include <string>

namespace host {

// The callback carries no pointer of ours, so there is one collector in the program. The plug-in
// calls it on the thread that calls the plug-in; it may be read on any thread.
class PluginMessages {
  public:
    // Every message goes to standard error as well while `echo` is on.
    static void attach(const PluginFunctions& plugin, bool echo);
    static void detach(const PluginFunctions& plugin);

    // The newest message a user should see once: warnings and errors, each text only the first
    // time it comes, without the lines that every connection attempt repeats.
    static std::string notable();

    // What the callback does; public for tests.
    static void receive(const char* message);

  private:
    static PluginMessages& instance();

    std::mutex mutex_;
    std::set<std::string> seen_;
    std::string notable_;
    bool echo_ = false;
};

} // namespace host
