// Devices of RealSense SDK 2 behind the C interface: what goes beyond the contract of every camera.
#include "realsense/sdk/SoftwareCamera.h"
#include "realsense/support/calls.h"
#include "sdk/sdk_source.h"
#include "stream_device.h"
#include "support/ScopedEnvironment.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace camera_test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::ThrowsMessage;

namespace {

std::unique_ptr<camera::sdk::SdkSource> sourceOf(std::shared_ptr<SoftwareScript> script) {
    const camera::sdk::DeviceOpener open = [script] {
        return std::make_unique<SoftwareCamera>(script);
    };
    return std::make_unique<camera::sdk::SdkSource>(open(), open);
}

class SdkSourceTest : public testing::Test {
  protected:
    void open(std::chrono::milliseconds longestWait = 60s) {
        device = std::make_unique<camera::StreamDevice>(sourceOf(script), camera::steadyClock(),
                                                        longestWait);
    }
    void start(bool color = true) {
        device->enable(RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0);
        if (color) {
            device->enable(RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 0);
        }
        device->start(RS_SOURCE_VIDEO);
    }
    int depthSample() {
        return *static_cast<const std::uint16_t*>(device->frameData(RS_STREAM_DEPTH));
    }

    std::shared_ptr<SoftwareScript> script = std::make_shared<SoftwareScript>();
    std::unique_ptr<camera::StreamDevice> device;
};

TEST_F(SdkSourceTest, SetsTheOptionsThatTheCameraHas) {
    script->options = {RS2_OPTION_MOTION_RANGE, RS2_OPTION_FILTER_OPTION,
                       RS2_OPTION_CONFIDENCE_THRESHOLD};
    open();
    device->setOption(RS_OPTION_F200_FILTER_OPTION, 3.0);
    device->setOption(RS_OPTION_F200_MOTION_RANGE, 4.0);
    device->setOption(RS_OPTION_F200_CONFIDENCE_THRESHOLD, 5.0);
    EXPECT_THAT(script->values, ElementsAre(Pair(RS2_OPTION_MOTION_RANGE, 4.0f),
                                            Pair(RS2_OPTION_FILTER_OPTION, 3.0f),
                                            Pair(RS2_OPTION_CONFIDENCE_THRESHOLD, 5.0f)));
    EXPECT_STREQ(device->takeNotices(), "");
    EXPECT_TRUE(device->supportsOption(RS_OPTION_F200_FILTER_OPTION));
    EXPECT_FALSE(device->supportsOption(RS_OPTION_F200_LASER_POWER));
}

TEST_F(SdkSourceTest, SetsOptionsAsBytes) {
    script->options = {RS2_OPTION_MOTION_RANGE};
    open();
    for (const auto& [value, byte] : {std::pair(3.9, 3.0f), std::pair(-7.0, 0.0f),
                                      std::pair(1e300, 255.0f), std::pair(std::nan(""), 0.0f)}) {
        device->setOption(RS_OPTION_F200_MOTION_RANGE, value);
        EXPECT_EQ(script->values[RS2_OPTION_MOTION_RANGE], byte) << value;
    }
}

TEST_F(SdkSourceTest, TellsOnceWhichOptionsTheCameraLacks) {
    script->options = {RS2_OPTION_MOTION_RANGE};
    open();
    for (int round = 0; round < 2; ++round) {
        device->setOption(RS_OPTION_F200_FILTER_OPTION, 3.0);
        device->setOption(RS_OPTION_F200_MOTION_RANGE, 3.0);
        device->setOption(RS_OPTION_F200_CONFIDENCE_THRESHOLD, 5.0);
    }
    EXPECT_STREQ(device->takeNotices(),
                 "Camera has no F200_FILTER_OPTION, F200_CONFIDENCE_THRESHOLD");
    device->setOption(RS_OPTION_F200_FILTER_OPTION, 4.0);
    EXPECT_STREQ(device->takeNotices(), "");
    start();
    device->waitForFrames();
}

TEST_F(SdkSourceTest, FailsAfterTheTimeOutWhenTheCameraIsUnpluggedDuringAWait) {
    script->frames = 2;
    open(300ms);
    start();
    device->waitForFrames();
    device->waitForFrames();
    const int last = depthSample();
    EXPECT_THAT([&] { device->waitForFrames(); },
                ThrowsMessage<std::runtime_error>("no frame came within 0.3 seconds"));
    EXPECT_EQ(depthSample(), last) << "a time-out leaves the frame";
    EXPECT_TRUE(device->streaming());
    device->stop(RS_SOURCE_VIDEO);
}

TEST_F(SdkSourceTest, FindsACameraAgainThatIsPluggedInAnew) {
    std::vector<std::shared_ptr<SoftwareScript>> plugged = {script};
    camera::setEnumeration([&] {
        std::vector<std::unique_ptr<camera::Device>> devices;
        for (const auto& each : plugged) {
            devices.push_back(std::make_unique<camera::StreamDevice>(sourceOf(each),
                                                                     camera::steadyClock(), 300ms));
        }
        return devices;
    });
    const auto openContext = [] { return call(rs_create_context, RS_API_VERSION); };
    script->frames = 1;
    rs_context* context = openContext();
    rs_device* camera = call(rs_get_device, context, 0);
    enable(camera, RS_STREAM_DEPTH);
    call(rs_start_source, camera, RS_SOURCE_VIDEO);
    call(rs_wait_for_frames, camera);
    plugged.clear();
    EXPECT_NE(messageOf(rs_wait_for_frames, camera), "");
    call(rs_delete_context, context);

    context = openContext();
    EXPECT_EQ(call(rs_get_device_count, context), 0);
    call(rs_delete_context, context);

    plugged = {std::make_shared<SoftwareScript>()};
    context = openContext();
    ASSERT_EQ(call(rs_get_device_count, context), 1);
    camera = call(rs_get_device, context, 0);
    enable(camera, RS_STREAM_DEPTH);
    call(rs_start_source, camera, RS_SOURCE_VIDEO);
    call(rs_wait_for_frames, camera);
    EXPECT_NE(call(rs_get_frame_data, camera, RS_STREAM_DEPTH), nullptr);
    call(rs_delete_context, context);
    camera::setEnumeration(nullptr);
}

TEST_F(SdkSourceTest, StreamsAFasterCameraThanIsWaitedFor) {
    script->lossless = false;
    script->frames = 1000;
    open();
    start();
    device->waitForFrames();
    device->stop(RS_SOURCE_VIDEO);
    device->start(RS_SOURCE_VIDEO);
    device->waitForFrames();
    EXPECT_NE(depthSample(), 0);
}

TEST_F(SdkSourceTest, StreamsDepthOfACameraWithoutColor) {
    script->hasColor = false;
    open();
    start(false);
    device->waitForFrames();
    EXPECT_EQ(depthSample(), 400);
    device->stop(RS_SOURCE_VIDEO);
    device->enable(RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 0);
    EXPECT_THAT([&] { device->start(RS_SOURCE_VIDEO); },
                ThrowsMessage<std::runtime_error>("this camera has no colour sensor"));
    EXPECT_FALSE(device->streaming());
}

TEST_F(SdkSourceTest, TakesSensorsWithoutAPoseAsOnePlace) {
    script->hasPose = false;
    open();
    const rs_extrinsics pose = device->extrinsics(RS_STREAM_DEPTH, RS_STREAM_COLOR);
    const rs_extrinsics identity{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    EXPECT_EQ(std::memcmp(&pose, &identity, sizeof pose), 0);
    start();
    device->waitForFrames();
    EXPECT_NO_THROW(device->frameData(RS_STREAM_DEPTH_ALIGNED_TO_COLOR));
}

TEST_F(SdkSourceTest, RefusesACameraThatDoesNotTellItsDepthUnits) {
    script->hasDepthUnits = false;
    EXPECT_THAT([&] { open(); },
                ThrowsMessage<std::runtime_error>("Software-Device does not tell its depth units"));
}

TEST_F(SdkSourceTest, RefusesADeviceWithoutDepth) {
    rs2::software_device webcam;
    auto sensor = webcam.add_sensor("Colour");
    rs2_video_stream stream{};
    stream.type = RS2_STREAM_COLOR;
    stream.uid = 1000;
    stream.width = 16;
    stream.height = 10;
    stream.fps = 30;
    stream.bpp = 3;
    stream.fmt = RS2_FORMAT_RGB8;
    sensor.add_video_stream(stream);
    EXPECT_THAT([&] { camera::sdk::SdkDevice{webcam}; },
                ThrowsMessage<std::runtime_error>("Software-Device has no sensor for depth"));
}

TEST_F(SdkSourceTest, ListsItsModesWhenNoneFits) {
    open();
    device->enable(RS_STREAM_DEPTH, 640, 480, RS_FORMAT_Z16, 60);
    EXPECT_THAT([&] { device->start(RS_SOURCE_VIDEO); },
                ThrowsMessage<std::runtime_error>(
                    "the camera has no such mode; it has depth 8x6 at 30, colour 16x10 at 30 "
                    "frames a second, both at one rate"));
}

TEST_F(SdkSourceTest, ReportsTheDepthLensAsItIs) {
    open();
    device->enable(RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0);
    const rs_intrinsics lens = device->intrinsics(RS_STREAM_DEPTH);
    EXPECT_EQ(std::memcmp(&lens, &script->geometry.depth, sizeof lens), 0);
}

TEST(SdkCameras, AreNoneWithoutAny) {
    const support::ScopedEnvironment noCamera("QVR_CAMERA", nullptr);
    rs_context* context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, context), 0);
    call(rs_delete_context, context);
    for (const char* const uri : {"realsense", "realsense:012345"}) {
        call(rs_select_camera_source, uri);
        context = call(rs_create_context, RS_API_VERSION);
        EXPECT_EQ(call(rs_get_device_count, context), 0);
        call(rs_delete_context, context);
    }
    const support::ScopedEnvironment named("QVR_CAMERA", "realsense");
    call(rs_select_camera_source, static_cast<const char*>(nullptr));
    context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, context), 0);
    call(rs_delete_context, context);
}

} // namespace
