#include "host/PluginMessages.h"

#include <cstdio>
#include <string_view>

namespace host {

namespace {

// Texts that differ without end are not all kept.
constexpr std::size_t mostTexts = 1000;

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool isNotable(std::string_view text) {
    if (startsWith(text, "ERROR!  The networkClient could not connect!")) {
        return false; // the connection state says it already
    }
    for (const std::string_view start :
         {"ERROR", "Error", "WARNING", "Warning", "FATAL", "Could not", "Failed", "Wrong"}) {
        if (startsWith(text, start)) {
            return true;
        }
    }
    return false;
}

std::string oneLine(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    for (char& letter : text) {
        if (static_cast<unsigned char>(letter) < ' ') {
            letter = ' ';
        }
    }
    return text;
}

} // namespace

PluginMessages& PluginMessages::instance() {
    static PluginMessages messages;
    return messages;
}

void PluginMessages::attach(const PluginFunctions& plugin, bool echo) {
    {
        PluginMessages& self = instance();
        const std::lock_guard lock(self.mutex_);
        self.seen_.clear();
        self.notable_.clear();
        self.echo_ = echo;
    }
    plugin.registerDebugCallback(&PluginMessages::receive);
}

void PluginMessages::detach(const PluginFunctions& plugin) {
    plugin.registerDebugCallback(nullptr);
}

std::string PluginMessages::notable() {
    PluginMessages& self = instance();
    const std::lock_guard lock(self.mutex_);
    return self.notable_;
}

void PluginMessages::receive(const char* message) {
    PluginMessages& self = instance();
    const std::string text = oneLine(message != nullptr ? message : "");
    const std::lock_guard lock(self.mutex_);
    if (self.echo_) {
        std::fprintf(stderr, "plug-in: %s\n", text.c_str());
    }
    if (isNotable(text) && self.seen_.size() < mostTexts && self.seen_.insert(text).second) {
        self.notable_ = text;
    }
}

} // namespace host
