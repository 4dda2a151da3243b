#include "camera/StreamSettings.h"

#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"

namespace QVR {

namespace {

constexpr SettingRange imageSizes{1.0, 65535.0};
constexpr SettingRange ports{0.0, 65535.0};
constexpr SettingRange frameRates{1.0, 1000.0};
constexpr SettingRange alignments{0.0, 2.0};

template <typename Whole>
Whole readWarned(const SettingsSection& settings, const char* key, Whole fallback,
                 SettingRange sensible, const char* warning) {
    if (!settings.hasNumber(key, std::to_string(fallback))) {
        Logger::Log(warning);
    }
    return settings.whole(key, fallback, sensible);
}

} // namespace

void StreamSettings::read(const json11::Json& document) {
    const SettingsSection settings(document);
    const SettingsSection streaming = settings.section("streaming");
    sendColor = streaming.isOn("color", sendColor);
    sendDepth = streaming.isOn("depth", sendDepth);
    sendProcessed = streaming.isOn("processed", sendProcessed);
    sendTouch = streaming.isOn("touch", sendTouch);
    autoClose = streaming.isOn("autoClose", autoClose);

    constexpr const char* noResX = "Warning: Did not find resX value in calibration data.";
    constexpr const char* noResY = "Warning: Did not find resY value in calibration data.";
    colorResX = readWarned(settings, "colorResX", 640U, imageSizes, noResX);
    colorResY = readWarned(settings, "colorResY", 480U, imageSizes, noResY);
    depthResX = readWarned(settings, "depthResX", 640U, imageSizes, noResX);
    depthResY = readWarned(settings, "depthResY", 480U, imageSizes, noResY);

    port = streaming.whole("port", port, ports);
    fps = readWarned(streaming, "fps", 60, frameRates,
                     "Warning: Did not find 'fps' value in calibration data.");
}

int readStreamAlignment(const json11::Json& document) {
    return SettingsSection(document).section("streaming").whole("streamAlignment", 0, alignments);
}

} // namespace QVR
