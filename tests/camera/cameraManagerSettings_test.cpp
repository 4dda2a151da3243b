// What the calibration and projection documents set.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/ManagerFixture.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"

#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <librealsense/rs.hpp>

using QVR::cameraManager;
using support::smallDocument;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class CameraManagerSettings : public support::ManagerFixture {
  protected:
    // Applies a document with these contents of "streaming" to a running manager.
    void applyStreaming(const std::string& streaming) {
        if (cameraManager::get() == nullptr) {
            start(smallDocument());
        }
        EXPECT_EQ(cameraManager::get()->setCalibrationData(smallDocument(streaming)), 0);
    }
};

struct Switch {
    const char* key;
    bool* flag;
};
const Switch switches[] = {{"color", &cameraManager::serverSendColor},
                           {"depth", &cameraManager::serverSendDepth},
                           {"processed", &cameraManager::serverSendProcessed},
                           {"touch", &cameraManager::serverSendTouch},
                           {"autoClose", &cameraManager::serverAutoClose}};

TEST_F(CameraManagerSettings, SwitchesTakeBooleansAndNumbers) {
    const std::pair<const char*, bool> values[] = {{"true", true}, {"false", false}, {"1", true},
                                                   {"0", false},   {"2.5", true},    {"0.9", false},
                                                   {"-1", false}};
    for (const Switch& s : switches) {
        for (const auto& [text, expected] : values) {
            *s.flag = !expected;
            applyStreaming("\"" + std::string(s.key) + "\": " + text);
            EXPECT_EQ(*s.flag, expected) << s.key << " " << text;
        }
    }
}

TEST_F(CameraManagerSettings, SwitchesStayWithoutAUsableValue) {
    for (const Switch& s : switches) {
        for (const char* value : {"\"no\"", "null", "[true]", "{}"}) {
            for (const bool before : {true, false}) {
                *s.flag = before;
                applyStreaming("\"" + std::string(s.key) + "\": " + value);
                EXPECT_EQ(*s.flag, before) << s.key << " " << value;
            }
        }
        *s.flag = true;
        applyStreaming("");
        EXPECT_TRUE(*s.flag) << s.key;
    }
}

TEST_F(CameraManagerSettings, ASwitchDoesNotMoveTheOthers) {
    for (const Switch& s : switches) {
        for (const Switch& each : switches) {
            *each.flag = true;
        }
        applyStreaming("\"" + std::string(s.key) + "\": false");
        for (const Switch& each : switches) {
            EXPECT_EQ(*each.flag, each.flag != s.flag) << s.key << " " << each.key;
        }
    }
}

TEST_F(CameraManagerSettings, WarnsForEachMissingValueAndTakesDefaults) {
    cameraManager& manager = start(smallDocument());
    EXPECT_EQ(manager.setCalibrationData("{}"), 0);
    ASSERT_GE(log.messages().size(), 6U);
    const std::vector<std::string> first(log.messages().begin(), log.messages().begin() + 6);
    // The last one is the distortion map's own: it reads the same key.
    EXPECT_THAT(first, ElementsAre("Warning: Did not find resX value in calibration data.",
                                   "Warning: Did not find resY value in calibration data.",
                                   "Warning: Did not find resX value in calibration data.",
                                   "Warning: Did not find resY value in calibration data.",
                                   "Warning: Did not find 'fps' value in calibration data.",
                                   "Warning: Did not find resX value in calibration data."));
    EXPECT_EQ(manager.colorResX, 640U);
    EXPECT_EQ(manager.colorResY, 480U);
    EXPECT_EQ(manager.depthResX, 640U);
    EXPECT_EQ(manager.depthResY, 480U);
    EXPECT_EQ(manager.fps, 60);
    EXPECT_EQ(manager.port, 27016);
}

TEST_F(CameraManagerSettings, EachResolutionHasItsOwnWarningAndDefault) {
    cameraManager& manager = start(smallDocument());
    const std::pair<std::string, const char*> keys[] = {{"colorResX\": 32", "resX"},
                                                        {"colorResY\": 24", "resY"}};
    for (const auto& [key, name] : keys) {
        std::string document = smallDocument();
        const std::size_t colon = document.find(key) + key.find(':');
        document.insert(colon + 1, " \"text\", \"other\":");
        log.messages().clear();
        EXPECT_EQ(manager.setCalibrationData(document), 0);
        EXPECT_THAT(log.messages(), ElementsAre(std::string("Warning: Did not find ") + name +
                                                " value in calibration data."));
    }
    std::string document = smallDocument();
    document.replace(document.find("\"colorResX\": 32"), 15, "\"colorResX\": 99");
    manager.setCalibrationData(document);
    EXPECT_EQ(manager.colorResX, 99U);
    document.replace(document.find("\"colorResX\""), 11, "\"nothing\"");
    log.messages().clear();
    manager.setCalibrationData(document);
    EXPECT_EQ(manager.colorResX, 640U);
    EXPECT_THAT(log.messages(),
                ElementsAre("Warning: Did not find resX value in calibration data."));
}

TEST_F(CameraManagerSettings, TakesTheWholePartOfNumbers) {
    cameraManager& manager = start(smallDocument(R"("fps": 30.5, "port": 4000.9)"));
    EXPECT_EQ(manager.fps, 30);
    EXPECT_EQ(manager.port, 4000);
}

TEST_F(CameraManagerSettings, OpensTheCameraWithTheDocumentsValues) {
    writeFile("touch.json", smallDocument(R"("fps": 30.5, "streamAlignment": 2)"));
    cameraManager::init();
    const std::vector<std::string> calls = fake.takeCalls();
    EXPECT_THAT(calls, Contains("rs_enable_stream_ex(device, 1, 32, 24, 5, 30, 0)"));
    EXPECT_THAT(calls, Contains("rs_enable_stream_ex(device, 0, 64, 48, 1, 30, 0)"));
    cameraManager& manager = *cameraManager::get();
    EXPECT_EQ(manager.camera->depthStream, 9);
    // Depth now has the colour camera's size, and so has everything made for it.
    EXPECT_EQ(manager.depthResX, 32U);
    EXPECT_EQ(manager.depthResY, 24U);
    EXPECT_EQ(manager.depthBuffer.size(), 32U * 24U);
    EXPECT_EQ(manager.blobs->width, 32U);
    EXPECT_EQ(manager.touches->borderClipRight, 32);
    EXPECT_EQ(manager.touches->borderClipBottom, 24);
}

TEST_F(CameraManagerSettings, PortStaysSilentlyWithoutAUsableValue) {
    applyStreaming(R"("fps": 30, "port": 1234)");
    log.messages().clear();
    applyStreaming(R"("fps": 30)");
    applyStreaming(R"("fps": 30, "port": "80")");
    EXPECT_EQ(cameraManager::get()->port, 1234);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(CameraManagerSettings, FpsReturnsToItsDefault) {
    applyStreaming(R"("fps": 15)");
    EXPECT_EQ(cameraManager::get()->fps, 15);
    log.messages().clear();
    applyStreaming(R"("fps": "15")");
    EXPECT_EQ(cameraManager::get()->fps, 60);
    EXPECT_THAT(log.messages(),
                ElementsAre("Warning: Did not find 'fps' value in calibration data."));
}

TEST_F(CameraManagerSettings, AStreamingCameraIsLeftAsItIs) {
    cameraManager& manager = start(smallDocument());
    std::string document = smallDocument();
    document.replace(document.find("\"depthResX\": 64"), 15, "\"depthResX\": 32");
    EXPECT_EQ(manager.setCalibrationData(document), 0);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_is_device_streaming(device)", "rs_get_device_depth_scale(device)"));
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_EQ(manager.depthResX, 32U);
    EXPECT_EQ(manager.depthBuffer.size(), 32U * 48U);
}

TEST_F(CameraManagerSettings, AStoppedCameraIsOpenedAnewAndDetectionFollowsItsSize) {
    cameraManager& manager = start(smallDocument());
    ASSERT_TRUE(manager.toggleCamera(false));
    std::string document = smallDocument();
    document.replace(document.find("\"depthResX\": 64"), 15, "\"depthResX\": 16");
    log.messages().clear();
    fake.depthImage.clear(); // so that the camera makes images of the new size
    EXPECT_EQ(manager.setCalibrationData(document), 0);
    EXPECT_THAT(log.messages(), Contains("Camera initialized and ready."));
    EXPECT_EQ(fake.depthImage.size(), 16U * 48U);
    EXPECT_EQ(manager.depthBuffer.size(), 16U * 48U);
    EXPECT_EQ(manager.blobs->width, 16U);
    EXPECT_EQ(manager.blobs->height, 48U);
    EXPECT_EQ(manager.blobs->oneMeter, 1000);
    EXPECT_EQ(cameraManager::update(), 0);
}

TEST_F(CameraManagerSettings, EmptyTextIsMinusTwoAndEmptiesTheBuffers) {
    cameraManager& manager = start(smallDocument());
    manager.depthBuffer[5] = 77;
    manager.processedBuffer[5] = 77;
    manager.colorBuffer[5] = 77;
    EXPECT_EQ(manager.setCalibrationData(""), -2);
    EXPECT_THAT(log.messages(),
                ElementsAre("WARNING: Could not read touch calibration file. No calibration was "
                            "loaded. Is the Quellbox USB connected?"));
    EXPECT_EQ(manager.depthBuffer[5], 0);
    EXPECT_EQ(manager.processedBuffer[5], 0);
    EXPECT_EQ(manager.colorBuffer[5], 0);
    EXPECT_EQ(manager.depthResX, 64U);
}

TEST_F(CameraManagerSettings, InvalidJsonIsMinusThreeAndEmptiesTheBuffers) {
    cameraManager& manager = start(smallDocument());
    manager.depthBuffer[5] = 77;
    EXPECT_EQ(manager.setCalibrationData("{\"streaming\": {\"depth\": false}"), -3);
    ASSERT_EQ(log.messages().size(), 1U);
    const std::string prefix =
        "ERROR: There was a problem in parsing the calibration file contents: ";
    EXPECT_EQ(log.messages()[0].substr(0, prefix.size()), prefix);
    EXPECT_GT(log.messages()[0].size(), prefix.size());
    EXPECT_THAT(log.messages()[0], Not(testing::HasSubstr("noError")));
    EXPECT_EQ(manager.depthBuffer[5], 0);
    EXPECT_TRUE(cameraManager::serverSendDepth);
}

TEST_F(CameraManagerSettings, ADocumentThatIsNoObjectReadsAsOneWithoutKeys) {
    cameraManager& manager = start(smallDocument());
    for (const char* text : {"null", "[]", "7", "\"text\""}) {
        EXPECT_EQ(manager.setCalibrationData(text), 0) << text;
        EXPECT_EQ(manager.depthResX, 640U);
    }
}

TEST_F(CameraManagerSettings, ImportsTheDistortionGridWithTheCamerasUnits) {
    fake.depthScale = 0.000125f; // 8000 units: near 800, far 7200, not the grid's own 100 to 900
    cameraManager& manager = start(smallDocument());
    QVR::Vector3 nearest{0.0, 0.0, 800.0};
    manager.applyCalibrationToCoord(nearest);
    EXPECT_NEAR(nearest.z, 100.0, 1e-9);
    QVR::Vector3 farthest{0.0, 0.0, 7199.0};
    manager.applyCalibrationToCoord(farthest);
    EXPECT_NEAR(farthest.z, 900.0 - 800.0 / 6400.0, 1e-9);
}

TEST_F(CameraManagerSettings, ResetBuffersSizesAllThree) {
    cameraManager& manager = start(smallDocument());
    manager.depthResX = 7;
    manager.depthResY = 5;
    manager.colorResX = 3;
    manager.colorResY = 2;
    manager.resetBuffers();
    EXPECT_EQ(manager.depthPixelCount, 35U);
    EXPECT_EQ(manager.depthBuffer, std::vector<std::uint16_t>(35, 0));
    EXPECT_EQ(manager.processedBuffer, std::vector<std::uint8_t>(35, 0));
    EXPECT_EQ(manager.colorBuffer, std::vector<std::uint8_t>(18, 0));
    manager.depthResX = 0;
    manager.colorResY = 0;
    manager.resetBuffers();
    EXPECT_EQ(manager.depthPixelCount, 0U);
    EXPECT_TRUE(manager.depthBuffer.empty());
    EXPECT_TRUE(manager.processedBuffer.empty());
    EXPECT_TRUE(manager.colorBuffer.empty());
}

TEST_F(CameraManagerSettings, SizesThatNoCameraHasTakeNoMemory) {
    std::string document = smallDocument();
    document.replace(document.find("\"depthResX\": 64"), 15, "\"depthResX\": 2000000000");
    document.replace(document.find("\"colorResX\": 32"), 15, "\"colorResX\": -1");
    fake.failAt("rs_enable_stream_ex");
    cameraManager& manager = start(document);
    EXPECT_EQ(manager.depthResX, 2000000000U);
    EXPECT_EQ(manager.colorResX, 4294967295U);
    EXPECT_EQ(manager.depthPixelCount, 0U);
    EXPECT_TRUE(manager.depthBuffer.empty());
    EXPECT_TRUE(manager.colorBuffer.empty());
    EXPECT_TRUE(manager.blobs->mask.empty());
    cameraManager::serverSendProcessed = true;
    QVR::networkFrameData frame;
    EXPECT_EQ(cameraManager::update(frame), 1);
    EXPECT_EQ(frame.processed, nullptr);
    // A sound document later brings everything up.
    EXPECT_EQ(manager.setCalibrationData(smallDocument()), 0);
    EXPECT_EQ(manager.blobs->mask.size(), 64U * 48U);
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(CameraManagerSettings, ThinImagesThatNoCameraHasTakeNoMemory) {
    cameraManager& manager = start(smallDocument());
    const std::pair<unsigned int, unsigned int> sizes[] = {
        {4294967295U, 0}, {0, 4294967295U}, {65536, 1}, {1, 65536}};
    for (const auto& [width, height] : sizes) {
        manager.depthResX = manager.colorResX = width;
        manager.depthResY = manager.colorResY = height;
        manager.resetBuffers();
        EXPECT_TRUE(manager.depthBuffer.empty()) << width << " x " << height;
        EXPECT_TRUE(manager.colorBuffer.empty()) << width << " x " << height;
        EXPECT_EQ(manager.blobs->width, 0U) << width << " x " << height;
        EXPECT_EQ(manager.blobs->height, 0U) << width << " x " << height;
    }
    manager.depthResX = 65535;
    manager.depthResY = 1;
    manager.resetBuffers();
    EXPECT_EQ(manager.blobs->mask.size(), 65535U);
}

TEST_F(CameraManagerSettings, OneMeterScaleIsAWholeNumberWhereTheCameraMeansOne) {
    cameraManager& manager = start(smallDocument());
    EXPECT_EQ(manager.getCameraOneMeterScale(), 1000.0f);
    fake.depthScale = 0.000125f;
    EXPECT_EQ(manager.getCameraOneMeterScale(), 8000.0f);
    fake.failAt("rs_get_device_depth_scale");
    EXPECT_THROW(manager.getCameraOneMeterScale(), rs::error);
}

TEST_F(CameraManagerSettings, LoadsTheProjectionMapOfTheGivenNumber) {
    cameraManager& manager = start(smallDocument());
    EXPECT_FALSE(manager.loadProjectionMapFromFile(3));
    EXPECT_THAT(log.messages(),
                ElementsAre("Could not read data from: QVR_calibration/touch_projectionMap.json"));
    writeFile("touch_projectionMap.json", support::doublingMap(3));
    log.messages().clear();
    EXPECT_TRUE(manager.loadProjectionMapFromFile(3));
    EXPECT_FALSE(manager.loadProjectionMapFromFile(0));
    const std::string line = "Using projection map file: " + pathOf("touch_projectionMap.json");
    EXPECT_THAT(log.messages(),
                ElementsAre(line, line, "Something went wrong in setting the projection map."));
}

TEST_F(CameraManagerSettings, AtStartTheFilesMapZeroIsTaken) {
    writeFile("touch_projectionMap.json", support::doublingMap(1));
    writeFile("touch.json", smallDocument());
    cameraManager::init();
    EXPECT_EQ(log.messages()[2], "Something went wrong in setting the projection map.");
}

TEST_F(CameraManagerSettings, SetsKeepsAndRemovesTheProjectionMap) {
    cameraManager& manager = start(smallDocument());
    EXPECT_TRUE(manager.setProjectionMap("", 0));
    EXPECT_EQ(manager.projectionMap, nullptr);

    EXPECT_TRUE(manager.setProjectionMap(support::doublingMap(-1), -1));
    const QVR::calibrationCell* map = manager.projectionMap.get();
    ASSERT_NE(map, nullptr);
    QVR::Vector3 p{31.0, 24.0, 500.0};
    manager.applyCalibrationToCoord(p);
    EXPECT_NEAR(p.x, 62.0, 1e-9);

    EXPECT_FALSE(manager.setProjectionMap("{}", 0));
    EXPECT_THAT(log.messages(), ElementsAre("Something went wrong in setting the projection map."));
    EXPECT_EQ(manager.projectionMap.get(), map);

    EXPECT_TRUE(manager.setProjectionMap("", 0));
    EXPECT_EQ(manager.projectionMap, nullptr);
}

TEST_F(CameraManagerSettings, ARejectedFirstMapStaysInPlaceAndMapsToZero) {
    cameraManager& manager = start(smallDocument());
    EXPECT_FALSE(manager.setProjectionMap("{}", 0));
    ASSERT_NE(manager.projectionMap, nullptr);
    QVR::Vector3 p{31.0, 24.0, 500.0};
    manager.applyCalibrationToCoord(p);
    EXPECT_EQ(p.x, 0.0);
    EXPECT_EQ(p.y, 0.0);
    EXPECT_EQ(p.z, 0.0);
}

} // namespace
