// The check behind the C interface.
#include "check/SettingsCheck.h"
#include "client/plugin.h"
#include "foundation/Logger.h"

#include <exception>
#include <string>

namespace {

constexpr int notChecked = -1;

// The log callback is the host's and may throw itself.
int failed(const char* reason) noexcept {
    try {
        QVR::Logger::Log(std::string("ERROR: checkSettings() failed: ") + reason);
    } catch (...) {
        return notChecked;
    }
    return notChecked;
}

} // namespace

extern "C" int checkSettings(const char* folder, bool asServer, void (*report)(const char* line)) {
    try {
        if (folder == nullptr || report == nullptr) {
            return failed("no folder or no function to report to");
        }
        const QVR::Role role = asServer ? QVR::Role::server : QVR::Role::host;
        return QVR::SettingsCheck(folder, role,
                                  [report](const std::string& line) { report(line.c_str()); })
            .run();
    } catch (const std::exception& failure) {
        return failed(failure.what());
    } catch (...) {
        return failed("unknown exception");
    }
}
