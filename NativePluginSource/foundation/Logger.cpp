#include "foundation/Logger.h"

#include <cstdio>
#include <sstream>

namespace QVR {

void (*Logger::logCallback)(const char*) = nullptr;

namespace {

template <typename Number>
std::string withNumber(const std::string& message, Number value) {
    std::stringstream text;
    text << message << value;
    return text.str();
}

} // namespace

void Logger::RegisterDebugCallback(void (*callback)(const char*)) {
    logCallback = callback;
}

void Logger::Log(std::string message) {
    if (logCallback != nullptr) {
        logCallback(message.c_str());
        return;
    }
    // The message is data, never a format: a "%" in a path or in a parser's error text prints as
    // it stands.
    message += "\n";
    std::printf("%s", message.c_str());
}

void Logger::Log(std::string message, int value) {
    Log(withNumber(message, value));
}

void Logger::Log(std::string message, float value) {
    Log(withNumber(message, value));
}

} // namespace QVR
