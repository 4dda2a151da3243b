// Creation and destruction of the camera manager.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/ManagerFixture.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <librealsense/rs.hpp>

using QVR::cameraManager;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const found = "Found 1 connected RealSense devices.";
const char* const described = "Using device 0, an Test Camera\nSerial number: 12345\n"
                              "Firmware version:  3.10.10.0";
const char* const noDocument = "WARNING: Could not read touch calibration file. No calibration "
                               "was loaded. Is the Quellbox USB connected?";

class CameraManagerLife : public support::ManagerFixture {};

// Before any test has touched them.
const bool sendDepthAtLoad = cameraManager::serverSendDepth;
const bool sendTouchAtLoad = cameraManager::serverSendTouch;
const bool autoCloseAtLoad = cameraManager::serverAutoClose;
const bool sendColorAtLoad = cameraManager::serverSendColor;
const bool sendProcessedAtLoad = cameraManager::serverSendProcessed;
const bool textureDebugAtLoad = cameraManager::processedTextureDebug;

TEST_F(CameraManagerLife, SwitchesAtLoad) {
    EXPECT_TRUE(sendDepthAtLoad);
    EXPECT_TRUE(sendTouchAtLoad);
    EXPECT_TRUE(autoCloseAtLoad);
    EXPECT_FALSE(sendColorAtLoad);
    EXPECT_FALSE(sendProcessedAtLoad);
    EXPECT_FALSE(textureDebugAtLoad);
    EXPECT_TRUE(cameraManager::debug);
    EXPECT_EQ(cameraManager::touchLerp, 0.8f);
    EXPECT_EQ(cameraManager::calibratedCoord.x, 0.0);
    EXPECT_EQ(cameraManager::calibratedCoord.y, 0.0);
    EXPECT_EQ(cameraManager::calibratedCoord.z, 0.0);
    EXPECT_EQ(cameraManager::_instance, nullptr);
    EXPECT_EQ(cameraManager::get(), nullptr);
}

TEST_F(CameraManagerLife, LogsThroughTheLogger) {
    cameraManager::log("plain 100% text");
    cameraManager::log("value", 0.8f);
    EXPECT_THAT(log.messages(), ElementsAre("plain 100% text", "value0.8"));
}

TEST_F(CameraManagerLife, StartsWithoutDocumentsAtTheSizesOfEveryCamera) {
    cameraManager::init();
    ASSERT_NE(cameraManager::get(), nullptr);
    EXPECT_THAT(log.messages(),
                ElementsAre("Could not read data from: QVR_calibration/touch.json",
                            "Could not read data from: QVR_calibration/touch_projectionMap.json",
                            noDocument, found, described, "Camera streams initialized.",
                            "Camera initialized and ready."));
    cameraManager& manager = *cameraManager::get();
    EXPECT_EQ(manager.port, 27016);
    EXPECT_EQ(manager.fps, 60);
    EXPECT_EQ(manager.depthResX, 640U);
    EXPECT_EQ(manager.depthResY, 480U);
    EXPECT_EQ(manager.colorResX, 640U);
    EXPECT_EQ(manager.colorResY, 480U);
    EXPECT_EQ(manager.depthPixelCount, 307200U);
    EXPECT_EQ(manager.depthBuffer.size(), 307200U);
    EXPECT_EQ(manager.processedBuffer.size(), 307200U);
    EXPECT_EQ(manager.colorBuffer.size(), 921600U);
    EXPECT_EQ(manager.projectionMap, nullptr);
    EXPECT_EQ(manager.downsampler, nullptr);
    EXPECT_EQ(manager.colorTexture, nullptr);
    EXPECT_EQ(manager.depthTexture, nullptr);
    EXPECT_EQ(manager.processedTexture, nullptr);
    EXPECT_EQ(manager.blobs->oneMeter, 1000);
    EXPECT_EQ(manager.blobs->width, 640U);
    EXPECT_EQ(manager.blobs->height, 480U);
    EXPECT_TRUE(manager.isCameraStreaming());
    EXPECT_EQ(cameraManager::update(), 0);

    const std::vector<std::string> calls = fake.takeCalls();
    EXPECT_THAT(calls, testing::Contains("rs_enable_stream_ex(device, 1, 640, 480, 5, 60, 0)"));
    EXPECT_THAT(calls, testing::Contains("rs_enable_stream_ex(device, 0, 640, 480, 1, 60, 0)"));
}

TEST_F(CameraManagerLife, AppliesBothDocuments) {
    writeFile("touch.json", support::smallDocument());
    writeFile("touch_projectionMap.json", support::doublingMap(0));
    cameraManager::init();
    EXPECT_THAT(log.messages(),
                ElementsAre("Using calibration file: " + pathOf("touch.json"),
                            "Using projection map file: " + pathOf("touch_projectionMap.json"),
                            found, described, "Camera streams initialized.",
                            "Camera initialized and ready."));
    EXPECT_THAT(
        fake.takeCalls(),
        ElementsAre(
            "rs_create_context(11201)", "rs_get_device_count(context)", "rs_get_device(context, 0)",
            "rs_get_device_name(device)", "rs_get_device_serial(device)",
            "rs_get_device_firmware_version(device)", "rs_set_device_option(device, 15, 3)",
            "rs_set_device_option(device, 14, 3)", "rs_set_device_option(device, 16, 5)",
            "rs_enable_stream_ex(device, 1, 32, 24, 5, 30, 0)",
            "rs_enable_stream_ex(device, 0, 64, 48, 1, 30, 0)", "rs_start_source(device, 0)",
            "rs_get_stream_width(device, 1)", "rs_get_stream_height(device, 1)",
            "rs_get_stream_width(device, 0)", "rs_get_stream_height(device, 0)",
            "rs_get_device_depth_scale(device)", "rs_get_device_depth_scale(device)"));
    cameraManager& manager = *cameraManager::get();
    EXPECT_NE(manager.projectionMap, nullptr);
    EXPECT_EQ(manager.blobs->width, 64U);
    EXPECT_EQ(manager.blobs->height, 48U);
}

// The document is applied before the units are known: the near limit comes out as 0 and the far
// limit keeps its default until the settings are applied again.
TEST_F(CameraManagerLife, ReadsDetectionSettingsBeforeItKnowsTheUnits) {
    cameraManager& manager = start(support::smallDocument());
    EXPECT_EQ(manager.blobs->nearNoiseCutoff, 0);
    EXPECT_EQ(manager.blobs->farLimit, 2400);
    manager.setCalibrationData(support::smallDocument());
    EXPECT_EQ(manager.blobs->nearNoiseCutoff, 100);
    EXPECT_EQ(manager.blobs->farLimit, 900);
}

TEST_F(CameraManagerLife, StartsFallbackCameraWhenTheDocumentIsNoJson) {
    writeFile("touch.json", "{\"depthResX\": 320,");
    cameraManager::init();
    ASSERT_EQ(log.messages().size(), 7U);
    EXPECT_EQ(log.messages()[0], "Using calibration file: " + pathOf("touch.json"));
    EXPECT_THAT(log.messages()[2],
                testing::MatchesRegex("ERROR: There was a problem in parsing the calibration file "
                                      "contents: (.|\n)+"));
    EXPECT_EQ(log.messages()[6], "Camera initialized and ready.");
    EXPECT_EQ(cameraManager::get()->depthResX, 640U);
    EXPECT_EQ(cameraManager::get()->depthBuffer.size(), 307200U);
    EXPECT_THAT(fake.takeCalls(),
                testing::Contains("rs_enable_stream_ex(device, 0, 640, 480, 1, 60, 0)"));
}

TEST_F(CameraManagerLife, AnEmptyDocumentCountsAsMissing) {
    writeFile("touch.json", "");
    cameraManager::init();
    EXPECT_EQ(log.messages()[0], "Could not read data from: " + pathOf("touch.json"));
    EXPECT_EQ(log.messages()[2], noDocument);
}

TEST_F(CameraManagerLife, GoesOnWithoutACamera) {
    fake.deviceCount = 0;
    cameraManager::init();
    ASSERT_NE(cameraManager::get(), nullptr);
    EXPECT_EQ(log.messages()[3], "No depth cam found.");
    EXPECT_EQ(log.messages()[4], "Failed to initialize the camera.");
    EXPECT_EQ(log.messages().size(), 5U);
    EXPECT_EQ(cameraManager::get()->getCameraOneMeterScale(), -1.0f);
    EXPECT_FALSE(cameraManager::get()->isCameraStreaming());
    EXPECT_EQ(cameraManager::update(), 1);
}

TEST_F(CameraManagerLife, GoesOnWhenTheDocumentsCameraFails) {
    fake.failAt("rs_start_source");
    writeFile("touch.json", support::smallDocument());
    cameraManager::init();
    EXPECT_THAT(log.messages(), testing::IsSupersetOf({"Failed to start camera streams.",
                                                       "Failed to initialize the camera."}));
    // No second attempt at other sizes.
    EXPECT_EQ(fake.countCalls("rs_start_source"), 1);
    EXPECT_EQ(cameraManager::get()->depthResX, 64U);
    EXPECT_EQ(cameraManager::get()->depthBuffer.size(), 64U * 48U);
}

TEST_F(CameraManagerLife, ASecondInitOnlyWarns) {
    cameraManager& manager = start(support::smallDocument());
    cameraManager::init();
    EXPECT_THAT(log.messages(),
                ElementsAre("WARNING! QVR RealSense plugin has already been initialized!"));
    EXPECT_EQ(cameraManager::get(), &manager);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(CameraManagerLife, DestroyWithoutAnInstanceOnlyWarns) {
    cameraManager::destroy();
    EXPECT_THAT(log.messages(),
                ElementsAre("WARNING! QVR RealSense plugin has already been destroyed!"));
}

TEST_F(CameraManagerLife, DestroyStopsTheCamera) {
    start(support::smallDocument());
    cameraManager::destroy();
    EXPECT_EQ(cameraManager::get(), nullptr);
    EXPECT_THAT(log.messages(), ElementsAre("Stopping realsense plugin."));
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_is_device_streaming(device)", "rs_stop_source(device, 0)",
                            "rs_delete_context(context, no slot)"));
}

TEST_F(CameraManagerLife, ACameraPluggedInLaterIsFoundByTheNextInit) {
    fake.deviceCount = 0;
    cameraManager::init();
    cameraManager::destroy();
    EXPECT_EQ(fake.contextsDeleted, fake.contextsMade);
    fake.deviceCount = 1;
    cameraManager::init();
    EXPECT_EQ(fake.contextsMade, 2);
    EXPECT_EQ(cameraManager::update(), 0);
}

TEST_F(CameraManagerLife, ASecondObjectStaysWithoutACamera) {
    cameraManager& manager = start(support::smallDocument());
    {
        cameraManager second;
        EXPECT_THAT(log.messages(), ElementsAre("QVR::cRealSenseMgr singleton violation! Bug "
                                                "detected! Code is not thread safe!"));
        EXPECT_EQ(second.camera, nullptr);
        EXPECT_NE(second.blobs, nullptr);
        EXPECT_NE(second.touches, nullptr);
        EXPECT_NE(second.distortionMap, nullptr);
        EXPECT_FALSE(second.isCameraStreaming());
        EXPECT_FALSE(second.toggleCamera(true));
        EXPECT_FALSE(second.toggleCamera(false));
        EXPECT_EQ(second.getCameraInfoJson(), "");
        EXPECT_EQ(second.getCameraOneMeterScale(), -1.0f);
        const unsigned char* color = nullptr;
        const unsigned short* depth = nullptr;
        EXPECT_EQ(second.internalUpdate(color, depth), -1);
        log.messages().clear();
        EXPECT_EQ(second.setCalibrationData(support::smallDocument()), -1);
        EXPECT_THAT(log.messages(),
                    ElementsAre("ERROR: realSense not initialized. Can't load cell calibration."));
        EXPECT_TRUE(second.depthBuffer.empty());
    }
    EXPECT_EQ(cameraManager::get(), &manager);
    EXPECT_TRUE(fake.streaming);
}

TEST_F(CameraManagerLife, TexturesOfAnObjectWithoutBuffersStayUntouched) {
    start(support::smallDocument());
    cameraManager second;
    std::vector<unsigned char> texture(4, 17);
    second.colorTexture = second.depthTexture = second.processedTexture = texture.data();
    cameraManager::processedTextureDebug = true;
    second.updateColorTexture();
    second.updateDepthTexture();
    second.updateProcessedTexture();
    EXPECT_THAT(texture, ElementsAre(17, 17, 17, 17));
}

bool lockedDuringMessage = false;
bool visibleDuringMessage = false;
void watchLock(const char*) {
    std::thread([] {
        const bool taken = mtx.try_lock();
        if (taken) {
            mtx.unlock();
        }
        lockedDuringMessage = !taken;
    }).join();
    visibleDuringMessage = cameraManager::get() != nullptr;
}

TEST_F(CameraManagerLife, IsCreatedAndDestroyedUnderTheLockAndPublishedOnceComplete) {
    QVR::Logger::RegisterDebugCallback(&watchLock);
    cameraManager::init();
    EXPECT_TRUE(lockedDuringMessage);
    EXPECT_FALSE(visibleDuringMessage);
    lockedDuringMessage = false;
    cameraManager::destroy();
    EXPECT_TRUE(lockedDuringMessage);
    ASSERT_TRUE(mtx.try_lock());
    mtx.unlock();
}

TEST_F(CameraManagerLife, ACameraErrorAtStartReachesTheCallerAndLeavesNothingBehind) {
    fake.failAt("rs_get_device_depth_scale");
    EXPECT_THROW(cameraManager::init(), rs::error);
    EXPECT_EQ(cameraManager::get(), nullptr);
    EXPECT_FALSE(fake.streaming);
    EXPECT_EQ(fake.contextsDeleted, 1);
    ASSERT_TRUE(mtx.try_lock());
    mtx.unlock();
    cameraManager::init();
    EXPECT_NE(cameraManager::get(), nullptr);
}

} // namespace
