#include "check/settingsDocuments.h"

#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/StreamSettings.h"
#include "client/ClientSettings.h"
#include "detection/blobManager.h"
#include "detection/miniDepth.h"
#include "detection/touchManager.h"
#include "foundation/utils.h"

#include <charconv>

#include <json11.hpp>

namespace QVR {

namespace {

// Depth units in a metre of the coarsest camera: clip distances that differ for it differ for all.
constexpr float unitsPerMeter = 1000.0f;

void readClientSettings(const std::string& text) {
    ClientSettings().read(text);
}

void readGrid(const std::string& text) {
    calibrationBlock().importCellCalibration(text, unitsPerMeter);
}

// As cameraManager::setCalibrationData does, without a camera to open.
void readCameraDocument(const std::string& text) {
    std::string error;
    json11::Json document = json11::Json::parse(text, error);
    StreamSettings streams;
    streams.read(document);
    readStreamAlignment(document);
    calibrationBlock().importCellCalibration(document, unitsPerMeter);
    touchManager().loadSettings(document, static_cast<int>(streams.depthResX),
                                static_cast<int>(streams.depthResY));
    blobManager blobs;
    blobs.setConfig(unitsPerMeter, 0, 0);
    blobs.loadJson(document);
    readMiniDepth(document);
}

// Map 0 is read at the start, any other one when a host asks for it by its number.
void readMaps(const std::string& text) {
    std::string error;
    const json11::Json document = json11::Json::parse(text, error);
    calibrationCell().set(text, 0);
    for (const auto& [key, map] : document.object_items()) {
        int number = 0;
        if (key.starts_with("map")) {
            std::from_chars(key.data() + 3, key.data() + key.size(), number);
        }
        if (key == "map" + std::to_string(number)) {
            calibrationCell().set(text, number);
        }
    }
}

std::vector<SettingsDocument> documentsOfHost() {
    const std::string usual = "localhost, port 27016";
    const std::string noGrid = "no distortion grid: positions pass uncorrected";
    const std::string toZero = "none: every point that is calibrated becomes (0, 0, 0)";
    const std::string noMaps = "none when loadProjectionMap asks for it";
    return {
        {utils::clientSettingsFilePath, usual, usual, false, readClientSettings, nullptr},
        {utils::distortionMapFilePath, noGrid, noGrid, true, readGrid, readCameraDocument},
        {utils::projectionMapFileName, toZero, toZero, true, readMaps, nullptr},
        {utils::projectionMapFilePath, noMaps, noMaps, false, readMaps, readMaps},
    };
}

std::vector<SettingsDocument> documentsOfServer() {
    const std::string defaults =
        "no distortion grid, and streams of 640 x 480 at 60 frames a second";
    const std::string noStart = "nothing: the server does not start";
    const std::string noMap = "no projection map: touches are sent in camera space";
    return {
        {utils::distortionMapFilePath, defaults, noStart, true, readCameraDocument, readGrid},
        {utils::projectionMapFilePath, noMap, noMap, false, readMaps, readMaps},
        {utils::clientSettingsFilePath, "", "", false, nullptr, readClientSettings},
        {utils::projectionMapFileName, "", "", false, nullptr, readMaps},
    };
}

} // namespace

std::vector<SettingsDocument> settingsDocuments(Role role) {
    return role == Role::host ? documentsOfHost() : documentsOfServer();
}

} // namespace QVR
