// The blob manager's settings as a document gives them and as the readout prints them.
#include "detection/blobManager.h"
#include "detection/detectionKernels.h"
#include "detection/settingField.h"
#include "foundation/Logger.h"
#include "foundation/jsonValues.h"
#include "foundation/numbers.h"

#include <string>

#include <json11.hpp>

namespace QVR {

namespace {

float readMeters(const json11::Json& value, float fallback, const char* warning) {
    if (!value.is_number()) {
        Logger::Log(warning);
    }
    return static_cast<float>(numberValue(value, fallback));
}

} // namespace

void blobManager::loadJson(json11::Json& calibration) {
    if (calibration.is_null()) {
        return;
    }
    const auto units = static_cast<float>(oneMeter);
    const float nearMeters =
        readMeters(calibration["nearClipMeters"], 0.07f,
                   "Warning: Did not find nearClipMeters value in calibration data.");
    nearNoiseCutoff = static_cast<std::uint16_t>(truncateToInt(units * nearMeters));
    const float farMeters =
        readMeters(calibration["farClipMeters"], 0.3f,
                   "Warning: Did not find farClipMeters value in calibration data!");
    setFarClipping(farMeters);

    const json11::Json& section = calibration["touchDetection"]["forwardFacing"];
    readField(section, "maxDiffNear", maxDiffNear);
    readField(section, "maxDiffFar", maxDiffFar);
    readField(section, "blobLineAssocLimitU", blobLineAssocLimitU);
    readField(section, "blobLineAssocLimitV", blobLineAssocLimitV);
    readField(section, "flatnessRadius", flatnessRadius);
    readField(section, "flatnessThreshold", flatnessThreshold);
    readField(section, "biasStrength", biasStrength);
    readField(section, "minBlobSize", minBlobSize);
    readField(section, "minBlobSpace", minBlobSpace);
    readField(section, "allowedBlobNoiseGap", allowedBlobNoiseGap);
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
