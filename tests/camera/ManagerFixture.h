// A camera manager on a scripted camera library, with a private calibration folder.
#pragma once

#include "camera/FakeRealsense.h"
#include "camera/cameraManager.h"
#include "support/LogCapture.h"
#include "support/TemporaryVolume.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace support {

class ManagerFixture : public testing::Test {
  protected:
    ManagerFixture() {
        fake.reset();
        QVR::cameraManager::serverSendDepth = true;
        QVR::cameraManager::serverSendTouch = true;
        QVR::cameraManager::serverAutoClose = true;
        QVR::cameraManager::serverSendColor = false;
        QVR::cameraManager::serverSendProcessed = false;
        QVR::cameraManager::processedTextureDebug = false;
    }

    ~ManagerFixture() override {
        if (QVR::cameraManager::get() != nullptr) {
            QVR::cameraManager::destroy();
        }
    }

    std::string pathOf(const std::string& name) const {
        return volume.path("QVR_calibration/" + name);
    }

    void writeFile(const std::string& name, const std::string& content) const {
        volume.write("QVR_calibration/" + name, content);
    }

    // Creates the singleton from `document`; leaves calls and messages of the start behind.
    QVR::cameraManager& start(const std::string& document) {
        writeFile("touch.json", document);
        QVR::cameraManager::init();
        fake.takeCalls();
        log.messages().clear();
        return *QVR::cameraManager::get();
    }

    FakeRealsense& fake = FakeRealsense::get();
    LogCapture log;
    TemporaryVolume volume;
};

// Depth 64 x 48, colour 32 x 24, a calibration grid that leaves positions as they are, clip
// distances of 0.1 and 0.9 metres, no border clip; every key that warns when missing is there.
// `streaming` is the inside of the "streaming" object.
inline std::string smallDocument(const std::string& streaming = R"("fps": 30)") {
    return R"({
"colorResX": 32, "colorResY": 24, "depthResX": 64, "depthResY": 48,
"nearClipMeters": 0.1, "farClipMeters": 0.9,
"streaming": {)" +
           streaming + R"(},
"calibration": {"sizeX": 2, "sizeY": 2, "sizeZ": 2, "verts": [
    0, 0, 100, 64, 0, 100, 0, 48, 100, 64, 48, 100,
    0, 0, 900, 64, 0, 900, 0, 48, 900, 64, 48, 900]},
"touchDetection": {"confidenceThreshold": 2, "forwardFacing": {
    "maxDiffNear": 200, "maxDiffFar": 30, "blobLineAssocLimitU": 32, "blobLineAssocLimitV": 11,
    "flatnessRadius": 4, "flatnessThreshold": 27, "biasStrength": 45, "minBlobSize": 11,
    "minBlobSpace": 3, "allowedBlobNoiseGap": 3, "borderClipTop": 0, "borderClipBottom": 0,
    "borderClipLeft": 0, "borderClipRight": 0}}})";
}

// A flat fingertip at 500 depth units on a 64-wide depth image whose background is too far to
// count. Its centre is column 31, row 24.
inline void showFinger(std::vector<std::uint16_t>& depthImage) {
    for (std::size_t i = 0; i < depthImage.size(); ++i) {
        const std::size_t column = i % 64;
        const std::size_t row = i / 64;
        const bool tip = column >= 20 && column <= 43 && row >= 15 && row <= 34;
        depthImage[i] = tip ? 500 : 3000;
    }
}

// A projection map document whose map `number` doubles x and y of the small document's box and
// leaves z.
inline std::string doublingMap(int number) {
    return R"({"map)" + std::to_string(number) + R"(": {
"Xmin": 0, "Xmax": 64, "Ymin": 0, "Ymax": 48, "Zmin": 100, "Zmax": 900, "calibration": {
    "xyz": {"x": 0, "y": 0, "z": 100}, "Xyz": {"x": 128, "y": 0, "z": 100},
    "XYz": {"x": 128, "y": 96, "z": 100}, "xYz": {"x": 0, "y": 96, "z": 100},
    "xYZ": {"x": 0, "y": 96, "z": 900}, "XYZ": {"x": 128, "y": 96, "z": 900},
    "XyZ": {"x": 128, "y": 0, "z": 900}, "xyZ": {"x": 0, "y": 0, "z": 900}}}})";
}

} // namespace support
