// One frame of the pipeline: record, header, failures, switching the camera.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/ManagerFixture.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <librealsense/rs.hpp>

using QVR::cameraManager;
using support::smallDocument;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class CameraManagerFrame : public support::ManagerFixture {
  protected:
    cameraManager& startAll() {
        cameraManager& running = start(smallDocument());
        cameraManager::serverSendColor = true;
        cameraManager::serverSendProcessed = true;
        support::showFinger(fake.depthImage);
        return running;
    }

    // A document with another width for one image, applied while the camera streams, leaves
    // buffers that do not fit the camera.
    void misfit(const char* before, const char* after) {
        std::string document = smallDocument();
        document.replace(document.find(before), std::string(before).size(), after);
        ASSERT_EQ(cameraManager::get()->setCalibrationData(document), 0);
    }

    QVR::networkFrameData frame;
    const unsigned char* color = nullptr;
    const unsigned short* depth = nullptr;
};

TEST_F(CameraManagerFrame, WithoutAnInstanceIsMinusFiveAndEmptiesTheRecord) {
    const QVR::NetworkTouch touch;
    const unsigned char byte = 0;
    const unsigned short sample = 0;
    frame = {&touch, &byte, &sample, &byte};
    EXPECT_EQ(cameraManager::update(frame), -5);
    EXPECT_EQ(frame.touches, nullptr);
    EXPECT_EQ(frame.color, nullptr);
    EXPECT_EQ(frame.depth, nullptr);
    EXPECT_EQ(frame.processed, nullptr);
    EXPECT_EQ(cameraManager::update(), -5);
}

TEST_F(CameraManagerFrame, FillsAllFourSlots) {
    cameraManager& manager = startAll();
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.color, fake.colorImage.data());
    EXPECT_EQ(frame.depth, fake.depthImage.data());
    EXPECT_EQ(frame.processed, manager.blobs->mask.data());
    EXPECT_EQ(frame.processed[24 * 64 + 31], 16);
    EXPECT_EQ(frame.processed[0], 0);
    ASSERT_NE(frame.touches, nullptr);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_is_device_streaming(device)", "rs_wait_for_frames(device)",
                            "rs_get_frame_data(device, 0)", "rs_get_frame_data(device, 1)"));
}

TEST_F(CameraManagerFrame, EachSwitchGatesItsOwnSlot) {
    startAll();
    for (unsigned int bits = 0; bits < 16; ++bits) {
        SCOPED_TRACE(bits);
        cameraManager::serverSendColor = (bits & 1) != 0;
        cameraManager::serverSendDepth = (bits & 2) != 0;
        cameraManager::serverSendProcessed = (bits & 4) != 0;
        cameraManager::serverSendTouch = (bits & 8) != 0;
        EXPECT_EQ(cameraManager::update(frame), 0);
        EXPECT_EQ(frame.color != nullptr, cameraManager::serverSendColor);
        EXPECT_EQ(frame.depth != nullptr, cameraManager::serverSendDepth);
        EXPECT_EQ(frame.processed != nullptr, cameraManager::serverSendProcessed);
        EXPECT_EQ(frame.touches != nullptr, cameraManager::serverSendTouch);
    }
}

TEST_F(CameraManagerFrame, AFingerIsATouchFromItsSecondFrame) {
    startAll();
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.touches[0].active, 0);
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.touches[0].active, 1);
    const double x = frame.touches[0].x;
    const double y = frame.touches[0].y;
    const double z = frame.touches[0].z;
    EXPECT_NEAR(x, 31.0, 1e-4);
    EXPECT_NEAR(y, 24.0, 1e-4);
    EXPECT_NEAR(z, 500.0, 1e-3);
    for (int slot = 1; slot < 10; ++slot) {
        EXPECT_EQ(frame.touches[slot].active, 0);
        const double unused = frame.touches[slot].x;
        EXPECT_EQ(unused, -1.0);
    }
}

TEST_F(CameraManagerFrame, TouchesAreInCalibratedCoordinatesUnlessSwitchedOff) {
    cameraManager& manager = startAll();
    ASSERT_TRUE(manager.setProjectionMap(support::doublingMap(0), 0));
    cameraManager::update(frame);
    cameraManager::update(frame);
    const double calibrated = frame.touches[0].x;
    EXPECT_NEAR(calibrated, 62.0, 1e-3);
    manager.setOutputCalibratedTouches(false);
    cameraManager::update(frame);
    const double raw = frame.touches[0].x;
    EXPECT_NEAR(raw, 31.0, 1e-4);
    manager.setOutputCalibratedTouches(true);
    cameraManager::update(frame);
    const double again = frame.touches[0].x;
    EXPECT_NEAR(again, 62.0, 1e-3);
}

TEST_F(CameraManagerFrame, AveragePositionIsInCameraSpaceWhateverTheOutputIs) {
    cameraManager& manager = startAll();
    ASSERT_TRUE(manager.setProjectionMap(support::doublingMap(0), 0));
    cameraManager::update(frame);
    cameraManager::update(frame);
    QVR::Vector3 average;
    manager.touches->getAveragePos(average);
    EXPECT_NEAR(average.x, 31.0, 1e-4);
    EXPECT_NEAR(average.y, 24.0, 1e-4);
}

TEST_F(CameraManagerFrame, PreparesTheTouchCollection) {
    cameraManager& manager = startAll();
    cameraManager::update(frame);
    cameraManager::update(frame);
    manager.prepareTouchCollection();
    EXPECT_NEAR(manager.touches->getTouchData(), 31.0, 1e-4);
    manager.prepareTouchCollection();
    EXPECT_NEAR(manager.touches->getTouchData(), 31.0, 1e-4);
}

TEST_F(CameraManagerFrame, UpdateWithoutARecordRunsTheSamePipeline) {
    cameraManager& manager = startAll();
    EXPECT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(cameraManager::update(), 0);
    EXPECT_GE(manager.touches->touchSlots[0].confidence, 2);
    manager.toggleCamera(false);
    EXPECT_EQ(cameraManager::update(), 1);
}

TEST_F(CameraManagerFrame, AStoppedCameraStillCarriesTouchesAndMarks) {
    cameraManager& manager = startAll();
    cameraManager::update(frame);
    cameraManager::update(frame);
    ASSERT_TRUE(manager.toggleCamera(false));
    fake.takeCalls();
    EXPECT_EQ(cameraManager::update(frame), 1);
    EXPECT_EQ(frame.color, nullptr);
    EXPECT_EQ(frame.depth, nullptr);
    EXPECT_EQ(frame.processed, manager.blobs->mask.data());
    EXPECT_EQ(frame.processed[24 * 64 + 31], 16);
    ASSERT_NE(frame.touches, nullptr);
    EXPECT_EQ(frame.touches[0].active, 1);
    // No wait: nothing would ever come.
    EXPECT_THAT(fake.takeCalls(), ElementsAre("rs_is_device_streaming(device)"));
}

TEST_F(CameraManagerFrame, WithoutAStreamingCameraIsMinusOne) {
    cameraManager& manager = startAll();
    manager.toggleCamera(false);
    EXPECT_EQ(manager.internalUpdate(color, depth), -1);
    manager.camera.reset();
    EXPECT_EQ(manager.internalUpdate(color, depth), -1);
    EXPECT_EQ(color, nullptr);
    EXPECT_EQ(depth, nullptr);
}

TEST_F(CameraManagerFrame, AGoodFrameIsZero) {
    cameraManager& manager = startAll();
    EXPECT_EQ(manager.internalUpdate(color, depth), 0);
    EXPECT_EQ(color, fake.colorImage.data());
    EXPECT_EQ(depth, fake.depthImage.data());
}

TEST_F(CameraManagerFrame, WithoutADepthFrameIsMinusTwo) {
    cameraManager& manager = startAll();
    fake.nullDepth = true;
    EXPECT_EQ(manager.internalUpdate(color, depth), -2);
    EXPECT_EQ(color, nullptr);
    EXPECT_EQ(depth, nullptr);
    EXPECT_EQ(cameraManager::update(frame), 1);
}

TEST_F(CameraManagerFrame, ADepthFrameOfAnotherSizeIsMinusTwo) {
    cameraManager& manager = startAll();
    misfit("\"depthResX\": 64", "\"depthResX\": 63");
    EXPECT_EQ(manager.internalUpdate(color, depth), -2);
    misfit("\"depthResX\": 64", "\"depthResX\": 65");
    EXPECT_EQ(manager.internalUpdate(color, depth), -2);
    misfit("\"depthResX\": 64", "\"depthResX\": 64");
    EXPECT_EQ(manager.internalUpdate(color, depth), 0);
}

TEST_F(CameraManagerFrame, WithoutAColourFrameIsMinusThree) {
    cameraManager& manager = startAll();
    fake.nullColor = true;
    EXPECT_EQ(manager.internalUpdate(color, depth), -3);
    EXPECT_EQ(color, nullptr);
    EXPECT_EQ(depth, nullptr);
}

TEST_F(CameraManagerFrame, AColourFrameOfAnotherSizeIsMinusThree) {
    cameraManager& manager = startAll();
    misfit("\"colorResX\": 32", "\"colorResX\": 33");
    EXPECT_EQ(manager.internalUpdate(color, depth), -3);
    EXPECT_EQ(color, fake.colorImage.data());
    EXPECT_EQ(depth, nullptr);
    misfit("\"colorResX\": 32", "\"colorResX\": 31");
    EXPECT_EQ(manager.internalUpdate(color, depth), -3);
    EXPECT_EQ(manager.touches->touchSlots[0].confidence, -1);
}

TEST_F(CameraManagerFrame, CameraErrorsAreLoggedAndMinusFour) {
    struct Case {
        const char* function;
        int occurrence;
    };
    cameraManager& manager = startAll();
    for (const Case& c : {Case{"rs_wait_for_frames", 1}, Case{"rs_get_frame_data", 1},
                          Case{"rs_get_frame_data", 2}}) {
        SCOPED_TRACE(std::string(c.function) + std::to_string(c.occurrence));
        log.messages().clear();
        fake.failAt(c.function, c.occurrence);
        depth = nullptr;
        EXPECT_EQ(manager.internalUpdate(color, depth), -4);
        EXPECT_EQ(depth, nullptr);
        EXPECT_THAT(log.messages(), ElementsAre("cameraManager::internalUpdate() e: ",
                                                std::string("message of ") + c.function));
    }
    fake.failAt("rs_wait_for_frames");
    EXPECT_EQ(cameraManager::update(frame), 1);
    EXPECT_EQ(frame.depth, nullptr);
    EXPECT_EQ(frame.color, nullptr);
    ASSERT_NE(frame.touches, nullptr);
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(CameraManagerFrame, AnyStandardExceptionIsLoggedAndMinusFour) {
    cameraManager& manager = startAll();
    fake.waitThrows = "out of luck";
    EXPECT_EQ(manager.internalUpdate(color, depth), -4);
    EXPECT_THAT(log.messages(), ElementsAre("cameraManager::internalUpdate() e: ", "out of luck"));
}

TEST_F(CameraManagerFrame, WithoutMarksThereIsNoProcessedImage) {
    cameraManager& manager = startAll();
    manager.blobs->mask.clear(); // keeps its memory, which holds no image
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.processed, nullptr);
}

TEST_F(CameraManagerFrame, AGoodFrameLogsNothing) {
    startAll();
    cameraManager::update(frame);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(CameraManagerFrame, SendsDepthThroughTheDownsampler) {
    cameraManager& manager = startAll();
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(64, 48, 32, 24);
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.depth, manager.downsampler->output.get());
    EXPECT_EQ(frame.depth[12 * 32 + 16], 500);
    EXPECT_EQ(frame.depth[0], 3000);
    // Detection works on the whole image all the same.
    cameraManager::update(frame);
    const double x = frame.touches[0].x;
    EXPECT_NEAR(x, 31.0, 1e-4);
}

TEST_F(CameraManagerFrame, ADownsamplerForALargerImageYieldsNoDepthImage) {
    cameraManager& manager = startAll();
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(640, 480, 32, 24);
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.depth, nullptr);
    EXPECT_NE(frame.color, nullptr);
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(64, 48, 0, 24);
    EXPECT_EQ(cameraManager::update(frame), 0);
    EXPECT_EQ(frame.depth, nullptr);
}

TEST_F(CameraManagerFrame, HeaderDescribesWhatIsSent) {
    cameraManager& manager = start(smallDocument());
    for (unsigned int bits = 0; bits < 16; ++bits) {
        SCOPED_TRACE(bits);
        const unsigned int c = bits & 1;
        const unsigned int d = (bits >> 1) & 1;
        const unsigned int p = (bits >> 2) & 1;
        const unsigned int t = (bits >> 3) & 1;
        cameraManager::serverSendColor = c != 0;
        cameraManager::serverSendDepth = d != 0;
        cameraManager::serverSendProcessed = p != 0;
        cameraManager::serverSendTouch = t != 0;
        QVR::ProtocolHeader header;
        header.protocolID = 77;
        header.endianTest = 88;
        const int size = manager.getNetworkFrameInfo(header);
        EXPECT_EQ(header.protocolID, 77U);
        EXPECT_EQ(header.endianTest, 88U);
        EXPECT_EQ(header.oneMeterValue, 1000U);
        EXPECT_EQ(header.depthX, 64U);
        EXPECT_EQ(header.depthY, 48U);
        EXPECT_EQ(header.processedX, 64U);
        EXPECT_EQ(header.processedY, 48U);
        EXPECT_EQ(header.colorX, 32U);
        EXPECT_EQ(header.colorY, 24U);
        EXPECT_EQ(header.colorChannels, 3 * c);
        EXPECT_EQ(header.colorDepth, c);
        EXPECT_EQ(header.depthChannels, d);
        EXPECT_EQ(header.depthDepth, 2 * d);
        EXPECT_EQ(header.processedChannels, p);
        EXPECT_EQ(header.processedDepth, p);
        EXPECT_EQ(header.touchCount, 10 * t);
        EXPECT_EQ(size,
                  static_cast<int>(c * 32 * 24 * 3 + d * 64 * 48 * 2 + p * 64 * 48 + t * 10 * 28));
    }
}

TEST_F(CameraManagerFrame, HeaderOfAFullHdCameraWithAllStreams) {
    fake.deliveredColor = {1920, 1080};
    fake.deliveredDepth = {640, 480};
    cameraManager& manager = start(smallDocument());
    cameraManager::serverSendColor = true;
    cameraManager::serverSendProcessed = true;
    QVR::ProtocolHeader header;
    EXPECT_EQ(manager.getNetworkFrameInfo(header), 7142680);
}

TEST_F(CameraManagerFrame, HeaderTakesTheDepthSizeFromTheDownsampler) {
    cameraManager& manager = start(smallDocument());
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(64, 48, 16, 8);
    QVR::ProtocolHeader header;
    EXPECT_EQ(manager.getNetworkFrameInfo(header), 16 * 8 * 2 + 280);
    EXPECT_EQ(header.depthX, 16U);
    EXPECT_EQ(header.depthY, 8U);
    EXPECT_EQ(header.processedX, 64U);
    EXPECT_EQ(header.processedY, 48U);
}

TEST_F(CameraManagerFrame, HeaderTruncatesTheOneMeterValue) {
    cameraManager& manager = start(smallDocument());
    QVR::ProtocolHeader header;
    const std::pair<float, unsigned int> scales[] = {
        {0.001f, 1000U}, {0.000125f, 8000U}, {0.000124986647f, 8000U}, {0.0003f, 3333U}};
    for (const auto& [scale, expected] : scales) {
        fake.depthScale = scale;
        manager.getNetworkFrameInfo(header);
        EXPECT_EQ(header.oneMeterValue, expected) << scale;
    }
}

TEST_F(CameraManagerFrame, HeaderWithoutADeviceHasNoOneMeterValue) {
    fake.deviceCount = 0;
    cameraManager& manager = start(smallDocument());
    QVR::ProtocolHeader header;
    header.oneMeterValue = 77;
    EXPECT_EQ(manager.getNetworkFrameInfo(header), 64 * 48 * 2 + 280);
    EXPECT_EQ(header.oneMeterValue, 0U);
    EXPECT_EQ(header.colorX, 32U);
    EXPECT_EQ(header.depthX, 64U);
}

TEST_F(CameraManagerFrame, TogglesTheCameraOnlyWhenItsStateDiffers) {
    cameraManager& manager = start(smallDocument());
    EXPECT_TRUE(manager.toggleCamera(true));
    EXPECT_THAT(fake.takeCalls(), ElementsAre("rs_is_device_streaming(device)"));
    EXPECT_TRUE(manager.toggleCamera(false));
    EXPECT_FALSE(manager.isCameraStreaming());
    EXPECT_TRUE(manager.toggleCamera(false));
    EXPECT_TRUE(manager.toggleCamera(true));
    EXPECT_TRUE(manager.isCameraStreaming());
    EXPECT_EQ(fake.countCalls("rs_start_source"), 1);
    EXPECT_EQ(fake.countCalls("rs_stop_source"), 1);
}

TEST_F(CameraManagerFrame, ToggleReportsWhatFailed) {
    cameraManager& manager = start(smallDocument());
    fake.failAt("rs_stop_source");
    EXPECT_FALSE(manager.toggleCamera(false));
    manager.toggleCamera(false);
    fake.failAt("rs_start_source");
    EXPECT_FALSE(manager.toggleCamera(true));
    EXPECT_EQ(log.messages().size(), 2U);
}

TEST_F(CameraManagerFrame, ToggleAndQueriesWithoutACamera) {
    cameraManager& manager = start(smallDocument());
    manager.camera.reset();
    EXPECT_FALSE(manager.toggleCamera(true));
    EXPECT_FALSE(manager.toggleCamera(false));
    EXPECT_FALSE(manager.isCameraStreaming());
    EXPECT_EQ(manager.getCameraInfoJson(), "");
    EXPECT_EQ(manager.getCameraOneMeterScale(), -1.0f);
}

TEST_F(CameraManagerFrame, SwitchingOnACameraThatNeverOpenedFails) {
    fake.deviceCount = 0;
    cameraManager& manager = start(smallDocument());
    EXPECT_FALSE(manager.toggleCamera(true));
    EXPECT_TRUE(manager.toggleCamera(false));
}

TEST_F(CameraManagerFrame, FarClipIsGivenInMetres) {
    cameraManager& manager = start(smallDocument());
    manager.setFarClip(0.5f);
    EXPECT_EQ(manager.blobs->farLimit, 500);
}

TEST_F(CameraManagerFrame, CalibratesAPointThroughBothMaps) {
    cameraManager& manager = start(smallDocument());
    QVR::Vector3 p{10.0, 20.0, 300.0};
    manager.applyCalibrationToCoord(p);
    EXPECT_NEAR(p.x, 10.0, 1e-9);
    EXPECT_NEAR(p.y, 20.0, 1e-9);
    EXPECT_NEAR(p.z, 300.0, 1e-9);
    manager.setProjectionMap(support::doublingMap(0), 0);
    manager.applyCalibrationToCoord(p);
    EXPECT_NEAR(p.x, 20.0, 1e-9);
    EXPECT_NEAR(p.y, 40.0, 1e-9);
    EXPECT_NEAR(p.z, 300.0, 1e-9);
    QVR::Vector3 outside{-5.0, 20.0, 300.0};
    manager.applyCalibrationToCoord(outside);
    EXPECT_NEAR(outside.x, -2.0, 1e-9); // the grid's (-1, -1, -1), projected like any point
    EXPECT_NEAR(outside.y, -2.0, 1e-9);
    EXPECT_NEAR(outside.z, -1.0, 1e-9);
}

TEST_F(CameraManagerFrame, CameraInfoIsTheCamerasText) {
    cameraManager& manager = start(smallDocument());
    EXPECT_EQ(manager.getCameraInfoJson(), manager.camera->getCameraInfo());
    EXPECT_NE(manager.getCameraInfoJson(), "");
}

} // namespace
