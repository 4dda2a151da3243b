#include "foundation/utils.h"

#include "foundation/mountedVolumes.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace QVR {

const std::string utils::distortionMapFileName = "touch.json";
const std::string utils::projectionMapFileName = "touch_projectionMap.json";
const std::string utils::clientSettingsFileName = "touch_client.json";
const std::string utils::calibrationFileDir = "QVR_calibration";
const std::string utils::distortionMapFilePath = calibrationFileDir + "/" + distortionMapFileName;
const std::string utils::projectionMapFilePath = calibrationFileDir + "/" + projectionMapFileName;
const std::string utils::clientSettingsFilePath = calibrationFileDir + "/" + clientSettingsFileName;

namespace {

// Far beyond any calibration, and little enough to hold in a host's memory.
constexpr std::uintmax_t largestDocument = 64 * 1024 * 1024;

// A pipe or a device in the place of a document may have no end, or never begin.
bool isDocument(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) &&
           std::filesystem::file_size(path, error) <= largestDocument;
}

} // namespace

std::string utils::findFilePath(std::string relativePath) {
    for (const std::string& volume : mountedVolumes()) {
        std::string candidate = volume;
        candidate += '/';
        candidate += relativePath;
        if (access(candidate.c_str(), R_OK) == 0) {
            return candidate;
        }
    }
    return relativePath;
}

std::string utils::readFileContent(const std::string& path) {
    if (access(path.c_str(), R_OK) < 0 || !isDocument(path)) {
        return "";
    }
    std::ifstream file(path);
    std::string content;
    std::array<char, 65536> buffer;
    while (file.read(buffer.data(), buffer.size()) || file.gcount() > 0) {
        content.append(buffer.data(), static_cast<std::size_t>(file.gcount()));
    }
    return content;
}

std::vector<std::string> utils::split(const char* text, char delimiter) {
    std::vector<std::string> pieces;
    const char* start = text;
    for (const char* position = text;; ++position) {
        if (*position == delimiter || *position == '\0') {
            pieces.emplace_back(start, position);
            start = position + 1;
        }
        if (*position == '\0') {
            return pieces;
        }
    }
}

double utils::inverseLerp(double a, double b, double value) {
    return a == b ? 0.0 : (value - a) / (b - a);
}

float utils::clip(float value, float lower, float upper) {
    const float raised = lower > value ? lower : value;
    return upper < raised ? upper : raised;
}

double utils::clamp01(double value) {
    if (value < 0.0) {
        return 0.0;
    }
    return value > 1.0 ? 1.0 : value;
}

} // namespace QVR
