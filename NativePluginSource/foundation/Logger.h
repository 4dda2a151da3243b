// The one way out for messages: the host's log callback, or standard output without one.
#pragma once

#include "foundation/qvrApi.h"

#include <string>

namespace QVR {

class QVR_API Logger {
  public:
    // Sends later messages to `callback`; null sends them to standard output again. The callback
    // must be callable from every thread the library runs on and must stay valid until replaced.
    // The text it gets is valid during the call only and carries no line ending of ours.
    static void RegisterDebugCallback(void (*callback)(const char*));

    // Emits the message. Any thread; takes no lock; never throws on its own account.
    static void Log(std::string message);

    // Emits the message followed directly by the number, in the stream's default formatting
    // (six significant digits for a float).
    static void Log(std::string message, int value);
    static void Log(std::string message, float value);

    // The registered callback, or null. Read by every Log without a lock.
    static void (*logCallback)(const char*);
};

} // namespace QVR
