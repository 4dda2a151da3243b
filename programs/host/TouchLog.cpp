#include "host/TouchLog.h"

#include <cerrno>
#include <cmath>
#include <cstring>

namespace host {

namespace {

std::string number(const char* name, float value) {
    char text[64];
    if (std::isfinite(value)) {
        std::snprintf(text, sizeof text, ",\"%s\":%.9g", name, static_cast<double>(value));
    } else {
        std::snprintf(text, sizeof text, ",\"%s\":null", name);
    }
    return text;
}

} // namespace

std::unique_ptr<TouchLog> TouchLog::open(const std::string& path, std::string& problem) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        problem = "cannot write the touch log " + path + ": " + std::strerror(errno);
        return nullptr;
    }
    return std::unique_ptr<TouchLog>(new TouchLog(file));
}

std::string TouchLog::line(const HostState& state) {
    char head[128];
    std::snprintf(head, sizeof head, "{\"frame\":%llu,\"time\":%.6f,\"result\":%d,\"touches\":[",
                  static_cast<unsigned long long>(state.frames), state.now, state.result);
    std::string text = head;
    const char* separator = "";
    for (const Touch& touch : state.touches) {
        text += separator;
        text += "{\"slot\":" + std::to_string(touch.slot) + number("x", touch.x) +
                number("y", touch.y) + number("z", touch.z) + "}";
        separator = ",";
    }
    return text + "]}";
}

void TouchLog::write(const HostState& state) {
    std::fprintf(file_.get(), "%s\n", line(state).c_str());
    std::fflush(file_.get());
}

} // namespace host
