// The blob manager's settings as a document gives them and as the readout prints them.
#include "detection/blobManager.h"
#include "detection/detectionKernels.h"
#include "detection/settingField.h"
#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"
#include "foundation/numbers.h"

#include <cmath>
#include <string>

#include <json11.hpp>

namespace QVR {

namespace {

float readMeters(const SettingsSection& settings, const char* key, double fallback,
                 const char* warning) {
    if (!settings.hasNumber(key, SettingsSection::textOf(fallback))) {
        Logger::Log(warning);
    }
    return static_cast<float>(settings.number(key, fallback, {0.0}));
}

// Depths have 16 bits, and a distance beyond them comes out anywhere.
void tellWrappedDepth(const SettingsSection& settings, const char* key, float depth,
                      std::uint16_t kept) {
    if (truncateToInt(depth) != kept) {
        settings.tell(
            key, "a distance of " + SettingsSection::textOf(std::trunc(depth)) + " depth units",
            std::to_string(kept));
    }
}

} // namespace

void blobManager::loadJson(json11::Json& calibration) {
    if (calibration.is_null()) {
        return;
    }
    const SettingsSection settings(calibration);
    const auto units = static_cast<float>(oneMeter);
    const float nearMeters =
        readMeters(settings, "nearClipMeters", 0.07,
                   "Warning: Did not find nearClipMeters value in calibration data.");
    nearNoiseCutoff = static_cast<std::uint16_t>(truncateToInt(units * nearMeters));
    tellWrappedDepth(settings, "nearClipMeters", units * nearMeters, nearNoiseCutoff);
    const float farMeters =
        readMeters(settings, "farClipMeters", 0.3,
                   "Warning: Did not find farClipMeters value in calibration data!");
    setFarClipping(farMeters);
    if (oneMeter != 0) {
        tellWrappedDepth(settings, "farClipMeters", units * farMeters, farLimit);
    }

    const SettingsSection section = settings.section("touchDetection").section("forwardFacing");
    readField(section, "maxDiffNear", maxDiffNear);
    readField(section, "maxDiffFar", maxDiffFar);
    readField(section, "blobLineAssocLimitU", blobLineAssocLimitU, {1.0});
    readField(section, "blobLineAssocLimitV", blobLineAssocLimitV, {1.0});
    readField(section, "flatnessRadius", flatnessRadius);
    readField(section, "flatnessThreshold", flatnessThreshold, {1.0});
    readField(section, "biasStrength", biasStrength, {1.0});
    readField(section, "minBlobSize", minBlobSize);
    readField(section, "minBlobSpace", minBlobSpace);
    readField(section, "allowedBlobNoiseGap", allowedBlobNoiseGap);
    if (gapsContradict()) {
        section.tell("allowedBlobNoiseGap",
                     std::to_string(allowedBlobNoiseGap) + ", above a minBlobSpace of " +
                         std::to_string(minBlobSpace),
                     "both, which finds blobs badly");
    }
}

bool blobManager::gapsContradict() const {
    return allowedBlobNoiseGap > minBlobSpace;
}

std::string blobManager::getVariableReadout() {
    std::string text = "\n//////blobManager:\n";
    const auto line = [&text](const char* label, auto value) {
        text += label + std::to_string(value) + "\n";
    };
    line("maxDiffNear ", maxDiffNear);
    line("maxDiffFar ", maxDiffFar);
    line("nearNoiseCutoff ", nearNoiseCutoff);
    line("farLimit ", farLimit);
    line("blobLineAssocLimitU ", blobLineAssocLimitU);
    line("blobLineAssocLimitV ", blobLineAssocLimitV);
    line("flatnessRadius ", flatnessRadius);
    line("flatnessThreshold ", flatnessThreshold);
    line("biasStrength ", biasStrength);
    line("minBlobSize ", minBlobSize);
    line("minBlobSpace ", minBlobSpace);
    line("allowedBlobNoiseGap ", allowedBlobNoiseGap);
    line("oneMeter ", oneMeter);
    return text;
}

std::string blobManager::getKernelReadout() {
    return activeKernels().name;
}

} // namespace QVR
