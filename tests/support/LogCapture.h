// Collects every log message while it lives, in order.
#pragma once

#include "foundation/Logger.h"

#include <string>
#include <vector>

namespace support {

class LogCapture {
  public:
    LogCapture() {
        messages().clear();
        QVR::Logger::RegisterDebugCallback(&LogCapture::receive);
    }
    ~LogCapture() { QVR::Logger::RegisterDebugCallback(nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    static std::vector<std::string>& messages() {
        static std::vector<std::string> collected;
        return collected;
    }

  private:
    static void receive(const char* message) { messages().emplace_back(message); }
};

} // namespace support
