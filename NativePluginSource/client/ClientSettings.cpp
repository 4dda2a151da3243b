#include "client/ClientSettings.h"

#include "foundation/SettingsSection.h"

namespace QVR {

namespace {

constexpr SettingRange ports{1.0, 65535.0};

// A server that has lost its camera fills in with the last frame after a second.
constexpr int longestSilenceMs = 1000;

} // namespace

void ClientSettings::read(const std::string& text) {
    if (text.empty()) {
        return;
    }
    std::string error = "noError";
    const json11::Json document = json11::Json::parse(text, error);
    if (error != "noError") {
        return;
    }
    const SettingsSection settings(document);
    // A readable file without a host name means the empty name, not the default.
    ip = settings.text("ip");
    port = settings.whole("port", port, ports);
    receiveTimeoutMs = settings.whole("receiveTimeoutMs", receiveTimeoutMs, {0.0});
    if (receiveTimeoutMs > 0 && receiveTimeoutMs <= longestSilenceMs) {
        settings.tell("receiveTimeoutMs", std::to_string(receiveTimeoutMs),
                      "it, which breaks connections whose camera is silent for a moment");
    }
    reconnectReadsHeader = settings.truth("reconnectReadsHeader", reconnectReadsHeader);
}

} // namespace QVR
