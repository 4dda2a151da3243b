// The client's touch calibration: from files, from the host, and applied to points.
#include "calibration/calibrationManager.h"
#include "client/ClientManager.h"
#include "detection/ImageDownsampler.h"
#include "detection/miniDepth.h"
#include "foundation/Logger.h"
#include "foundation/numbers.h"
#include "foundation/utils.h"

#include <new>
#include <optional>

#include <json11.hpp>

namespace QVR {

void ClientManager::loadCalibrationFiles() {
    const std::string distortionPath = utils::findFilePath(utils::distortionMapFilePath);
    const std::string distortionText = utils::readFileContent(distortionPath);
    if (distortionText.empty()) {
        Logger::Log("Could not read data from: " + distortionPath + "\nFile appears empty.");
        return;
    }
    calibration_ = std::make_unique<calibrationManager>();
    calibration_->distortionMap.importCellCalibration(distortionText,
                                                      static_cast<float>(header.oneMeterValue));

    // By its bare name: a client's projection map lies at the root of a volume, apart from the
    // server's in the calibration folder.
    const std::string projectionPath = utils::findFilePath(utils::projectionMapFileName);
    const std::string projectionText = utils::readFileContent(projectionPath);
    if (projectionText.empty()) {
        if (debugLogging) {
            Logger::Log("Client could not read data from: " + projectionPath +
                        "\nFile appears empty.");
        }
        return;
    }
    calibration_->importProjectionMap(projectionText, 0);
    if (debugLogging) {
        Logger::Log("Client loaded projection map: " + projectionPath);
    }
}

void ClientManager::applyCalibrationToCoord(Vector3& point) {
    if (calibration_ == nullptr) {
        return;
    }
    if (downsampler_ != nullptr) {
        int x = truncateToInt(point.x);
        int y = truncateToInt(point.y);
        downsampler_->convertTargetPixelToSourcePixel(x, y);
        point.x = x;
        point.y = y;
    }
    calibration_->calibrateVector(point);
}

int ClientManager::setCalibrationData(const std::string& text) {
    if (text.empty()) {
        Logger::Log("WARNING: Could not read touch calibration because it appears to be empty.");
        return -1;
    }
    std::string error = "noError";
    json11::Json document = json11::Json::parse(text, error);
    if (error != "noError") {
        Logger::Log("ERROR: There was a problem in parsing the calibration file contents: " +
                    error);
        return -2;
    }
    handleMiniDepth(document);
    if (debugLogging) {
        Logger::Log("Loading distortion map touch calibration...");
    }
    if (calibration_ == nullptr) {
        Logger::Log("Failed to load distortion calibration. Init() was never called, or "
                    "previously failed, possibly because the server could not be found.");
        return -10;
    }
    return calibration_->distortionMap.importCellCalibration(
        document, static_cast<float>(header.oneMeterValue));
}

bool ClientManager::setProjectionMap(const std::string& text, int number) {
    if (debugLogging) {
        Logger::Log("Loading projection map touch calibration...");
    }
    if (calibration_ == nullptr) {
        Logger::Log("Failed to load projection map. Init() was never called, or previously "
                    "failed, possibly because the server could not be found.");
        return false;
    }
    return calibration_->importProjectionMap(text, number);
}

void ClientManager::handleMiniDepth(const json11::Json& document) {
    const std::optional<MiniDepth> sizes = readMiniDepth(document);
    if (!sizes) {
        return;
    }
    try {
        downsampler_ = std::make_unique<ImageDownsampler>(sizes->fullX, sizes->fullY, sizes->miniX,
                                                          sizes->miniY);
    } catch (const std::bad_alloc&) {
        Logger::Log("WARNING: There is no memory for an image of downsampleDepthX and "
                    "downsampleDepthY, which are ignored.");
    }
}

} // namespace QVR
