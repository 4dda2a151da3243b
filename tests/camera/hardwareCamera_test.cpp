#include "camera/FakeRealsense.h"
#include "camera/hardwareCamera.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>
#include <librealsense/rs.hpp>

using support::FakeRealsense;
using support::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Texts = std::vector<std::string>;

Texts plus(Texts texts, const Texts& more) {
    texts.insert(texts.end(), more.begin(), more.end());
    return texts;
}

std::string errorLine(const std::string& function) {
    return "RealSense error calling " + function + "(args of " + function + "):\n    message of " +
           function;
}

const std::string nullPointerLine =
    "RealSense error calling rs_get_device_count(null:0):\n    null pointer passed";
const std::string found = "Found 1 connected RealSense devices.";
const std::string described = "Using device 0, an Test Camera\nSerial number: 12345\n"
                              "Firmware version:  3.10.10.0";

class HardwareCamera : public testing::Test {
  protected:
    HardwareCamera() { fake.reset(); }

    int init(const char* settings = "{}") {
        std::string error;
        json11::Json document = json11::Json::parse(settings, error);
        return camera->init(colorWidth, colorHeight, depthWidth, depthHeight, 30, document);
    }

    void expectSizes(unsigned int cw, unsigned int ch, unsigned int dw, unsigned int dh) {
        EXPECT_EQ(colorWidth, cw);
        EXPECT_EQ(colorHeight, ch);
        EXPECT_EQ(depthWidth, dw);
        EXPECT_EQ(depthHeight, dh);
    }

    FakeRealsense& fake = FakeRealsense::get();
    LogCapture log;
    std::unique_ptr<QVR::hardwareCamera> camera = std::make_unique<QVR::hardwareCamera>();
    unsigned int colorWidth = 1920;
    unsigned int colorHeight = 1080;
    unsigned int depthWidth = 640;
    unsigned int depthHeight = 480;
};

const Texts callsUpToDevice = {"rs_create_context(11201)", "rs_get_device_count(context)",
                               "rs_get_device(context, 0)"};
const Texts callsUpToFirmware =
    plus(callsUpToDevice, {"rs_get_device_name(device)", "rs_get_device_serial(device)",
                           "rs_get_device_firmware_version(device)"});
const Texts callsUpToStart = plus(
    callsUpToFirmware,
    {"rs_set_device_option(device, 15, 3)", "rs_set_device_option(device, 14, 3)",
     "rs_set_device_option(device, 16, 5)", "rs_enable_stream_ex(device, 1, 1920, 1080, 5, 30, 0)",
     "rs_enable_stream_ex(device, 0, 640, 480, 1, 30, 0)", "rs_start_source(device, 0)"});

TEST_F(HardwareCamera, StartsOutClosedOnNativeStreams) {
    EXPECT_EQ(camera->device, nullptr);
    EXPECT_EQ(camera->context, nullptr);
    EXPECT_EQ(camera->colorFrameBytes, 0U);
    EXPECT_EQ(camera->depthFrameBytes, 0U);
    EXPECT_EQ(camera->depthStream, 0);
    EXPECT_EQ(camera->colorStream, 1);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(HardwareCamera, OpensTheFirstDeviceAndStartsColourBeforeDepth) {
    fake.deviceCount = 2;
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(fake.takeCalls(),
              plus(callsUpToStart,
                   {"rs_get_stream_width(device, 1)", "rs_get_stream_height(device, 1)",
                    "rs_get_stream_width(device, 0)", "rs_get_stream_height(device, 0)"}));
    EXPECT_THAT(log.messages(), ElementsAre("Found 2 connected RealSense devices.", described,
                                            "Camera streams initialized."));
    EXPECT_NE(camera->device, nullptr);
    EXPECT_EQ(camera->colorFrameBytes, 1920U * 1080U * 3U);
    EXPECT_EQ(camera->depthFrameBytes, 640U * 480U * 2U);
}

TEST_F(HardwareCamera, LogsWhatTheCameraCouldNotDoAsAskedAndGoesOn) {
    fake.notices = "Camera has no F200_FILTER_OPTION";
    EXPECT_EQ(init(), 0);
    EXPECT_THAT(log.messages(), ElementsAre(found, described, "Camera streams initialized.",
                                            "Camera has no F200_FILTER_OPTION"));
}

TEST_F(HardwareCamera, ReportsTheSizesThatTheStreamsDeliver) {
    fake.deliveredColor = {1280, 720};
    fake.deliveredDepth = {320, 240};
    EXPECT_EQ(init(), 0);
    expectSizes(1280, 720, 320, 240);
    EXPECT_EQ(camera->colorFrameBytes, 1280U * 720U * 3U);
    EXPECT_EQ(camera->depthFrameBytes, 320U * 240U * 2U);
}

TEST_F(HardwareCamera, FrameSizesAreComputedIn32Bits) {
    fake.deliveredColor = {65536, 65536};
    fake.deliveredDepth = {65536, 32769};
    fake.depthImage.assign(1, 0);
    fake.colorImage.assign(1, 0);
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(camera->colorFrameBytes, 0U);
    EXPECT_EQ(camera->depthFrameBytes, 131072U);
}

TEST_F(HardwareCamera, TakesMissingDeviceTextsAsEmpty) {
    fake.nullTexts = true;
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(log.messages()[1], "Using device 0, an \nSerial number: \nFirmware version:  ");
}

TEST_F(HardwareCamera, Alignment2ReadsDepthInColourGeometry) {
    EXPECT_EQ(init(R"({"streaming": {"streamAlignment": 2}})"), 0);
    EXPECT_EQ(camera->depthStream, 9);
    EXPECT_EQ(camera->colorStream, 1);
    expectSizes(1920, 1080, 1920, 1080);
    EXPECT_EQ(camera->depthFrameBytes, 1920U * 1080U * 2U);
    EXPECT_EQ(fake.takeCalls(),
              plus(callsUpToStart,
                   {"rs_get_stream_width(device, 1)", "rs_get_stream_height(device, 1)",
                    "rs_get_stream_width(device, 9)", "rs_get_stream_height(device, 9)"}));
}

TEST_F(HardwareCamera, Alignment1ReadsColourInDepthGeometry) {
    EXPECT_EQ(init(R"({"streaming": {"streamAlignment": 1.9}})"), 0);
    EXPECT_EQ(camera->depthStream, 0);
    EXPECT_EQ(camera->colorStream, 7);
    expectSizes(640, 480, 640, 480);
    EXPECT_EQ(camera->colorFrameBytes, 640U * 480U * 3U);
}

TEST_F(HardwareCamera, OtherAlignmentsStayNative) {
    for (const char* settings :
         {"{}", "null", R"({"streaming": {"streamAlignment": "2"}})",
          R"({"streaming": {"streamAlignment": 0}})", R"({"streaming": {"streamAlignment": 3}})",
          R"({"streaming": {"streamAlignment": -1}})", R"({"streaming": 2})"}) {
        SCOPED_TRACE(settings);
        EXPECT_EQ(init(settings), 0);
        EXPECT_EQ(camera->depthStream, 0);
        EXPECT_EQ(camera->colorStream, 1);
        expectSizes(1920, 1080, 640, 480);
    }
}

TEST_F(HardwareCamera, ASecondInitReusesTheContextAndReturnsToNativeStreams) {
    ASSERT_EQ(init(R"({"streaming": {"streamAlignment": 2}})"), 0);
    depthWidth = 640;
    depthHeight = 480;
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(camera->depthStream, 0);
    expectSizes(1920, 1080, 640, 480);
    EXPECT_EQ(fake.countCalls("rs_create_context"), 1);
    EXPECT_EQ(fake.contextsMade, 1);
}

TEST_F(HardwareCamera, FailsWhenTheContextCannotBeHad) {
    fake.failAt("rs_create_context");
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(), ElementsAre(errorLine("rs_create_context"),
                                            "Caught exception while obtaining RealSense context.\n"
                                            "Is the camera being used by another process?"));
    EXPECT_THAT(fake.takeCalls(), ElementsAre("rs_create_context(11201)"));
    expectSizes(1920, 1080, 640, 480);
}

TEST_F(HardwareCamera, TriesForAContextAgainAfterItCouldNotBeHad) {
    fake.failAt("rs_create_context");
    EXPECT_EQ(init(), -1);
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(fake.contextsMade, 1);
}

TEST_F(HardwareCamera, ANullContextWithoutErrorFailsAtTheDeviceCount) {
    fake.nullContext = true;
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(),
                ElementsAre(nullPointerLine, "LibRealSense returned an invalid context. "
                                             "Is the context being used by another application?"));
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_create_context(11201)", "rs_get_device_count(null)"));
}

TEST_F(HardwareCamera, FailsWhenDevicesCannotBeCounted) {
    fake.failAt("rs_get_device_count");
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(), ElementsAre(errorLine("rs_get_device_count"),
                                            "LibRealSense returned an invalid context. "
                                            "Is the context being used by another application?"));
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_create_context(11201)", "rs_get_device_count(context)"));
}

TEST_F(HardwareCamera, FailsWithoutACameraAndLeavesTheSizes) {
    fake.deviceCount = 0;
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(), ElementsAre("No depth cam found."));
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_create_context(11201)", "rs_get_device_count(context)"));
    expectSizes(1920, 1080, 640, 480);
}

TEST_F(HardwareCamera, FailsWhenTheDeviceIsNull) {
    fake.nullDevice = true;
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(),
                ElementsAre(found, "Hardware camera Init() failed: Could not get rs device!"));
    EXPECT_EQ(fake.takeCalls(), callsUpToDevice);
}

TEST_F(HardwareCamera, FailsWhenTheDeviceQueryFails) {
    fake.failAt("rs_get_device");
    EXPECT_EQ(init(), -1);
    EXPECT_THAT(log.messages(), ElementsAre(found, errorLine("rs_get_device")));
    EXPECT_EQ(fake.takeCalls(), plus(callsUpToDevice, {"rs_stop_source(null, 0, no slot)"}));
}

TEST_F(HardwareCamera, StopsTheSourceWhenTheDeviceCannotBeDescribed) {
    for (std::size_t at = 3; at < callsUpToFirmware.size(); ++at) {
        const std::string& call = callsUpToFirmware[at];
        const std::string function = call.substr(0, call.find('('));
        SCOPED_TRACE(function);
        fake.reset();
        log.messages().clear();
        camera = std::make_unique<QVR::hardwareCamera>();
        log.messages().clear();
        fake.takeCalls();
        fake.failAt(function);
        EXPECT_EQ(init(), -1);
        EXPECT_THAT(log.messages(), ElementsAre(found, errorLine(function)));
        Texts expected(callsUpToFirmware.begin(),
                       callsUpToFirmware.begin() + static_cast<std::ptrdiff_t>(at) + 1);
        EXPECT_EQ(fake.takeCalls(), plus(expected, {"rs_stop_source(device, 0, no slot)"}));
        EXPECT_EQ(camera->device, nullptr);
        expectSizes(1920, 1080, 640, 480);
    }
}

TEST_F(HardwareCamera, FailsWhenAnOptionOrStreamCannotBeSet) {
    struct Case {
        const char* function;
        int occurrence;
        std::size_t callsMade;
    };
    for (const Case& c : {Case{"rs_set_device_option", 1, 7}, Case{"rs_set_device_option", 2, 8},
                          Case{"rs_set_device_option", 3, 9}, Case{"rs_enable_stream_ex", 1, 10},
                          Case{"rs_enable_stream_ex", 2, 11}, Case{"rs_start_source", 1, 12}}) {
        SCOPED_TRACE(c.callsMade);
        fake.reset();
        camera = std::make_unique<QVR::hardwareCamera>();
        log.messages().clear();
        fake.takeCalls();
        fake.failAt(c.function, c.occurrence);
        EXPECT_EQ(init(), -2);
        EXPECT_THAT(log.messages(), ElementsAre(found, described, errorLine(c.function),
                                                "Failed to start camera streams."));
        Texts expected(callsUpToStart.begin(),
                       callsUpToStart.begin() + static_cast<std::ptrdiff_t>(c.callsMade));
        EXPECT_EQ(fake.takeCalls(), plus(expected, {"rs_is_device_streaming(device, no slot)"}));
        expectSizes(1920, 1080, 640, 480);
    }
}

TEST_F(HardwareCamera, StopsACameraThatStreamsWhenItCannotBeSetUp) {
    fake.failAt("rs_enable_stream_ex");
    fake.streaming = true;
    EXPECT_EQ(init(), -2);
    const Texts calls = fake.takeCalls();
    EXPECT_EQ(calls.back(), "rs_stop_source(device, 0, no slot)");
    EXPECT_FALSE(fake.streaming);
}

TEST_F(HardwareCamera, StopsTheSourceWhenSizesCannotBeReadBack) {
    struct Case {
        const char* function;
        int occurrence;
    };
    for (const Case& c : {Case{"rs_get_stream_width", 1}, Case{"rs_get_stream_height", 1},
                          Case{"rs_get_stream_width", 2}, Case{"rs_get_stream_height", 2}}) {
        SCOPED_TRACE(c.function);
        fake.reset();
        camera = std::make_unique<QVR::hardwareCamera>();
        log.messages().clear();
        fake.deliveredColor = {320, 240};
        fake.failAt(c.function, c.occurrence);
        EXPECT_EQ(init(), -1);
        EXPECT_THAT(log.messages(), ElementsAre(found, described, "Camera streams initialized.",
                                                errorLine(c.function)));
        EXPECT_EQ(fake.takeCalls().back(), "rs_stop_source(device, 0, no slot)");
        EXPECT_FALSE(fake.streaming);
        expectSizes(1920, 1080, 640, 480);
    }
}

TEST_F(HardwareCamera, CleanUpThatFailsItselfIsNotReported) {
    fake.failAt("rs_get_stream_width");
    fake.failAt("rs_stop_source");
    EXPECT_EQ(init(), -1);
    EXPECT_EQ(log.messages().back(), errorLine("rs_get_stream_width"));
}

TEST_F(HardwareCamera, AFailedInitLeavesNoDevice) {
    fake.failAt("rs_start_source");
    EXPECT_EQ(init(), -2);
    EXPECT_EQ(camera->device, nullptr);
    EXPECT_FALSE(camera->isStreaming());
    long long bytes = 7;
    EXPECT_EQ(camera->getColorFrame(bytes), nullptr);
    EXPECT_EQ(bytes, -1);
}

TEST_F(HardwareCamera, ColourGettersGiveNothingWithoutADevice) {
    long long bytes = 7;
    EXPECT_EQ(camera->getColorFrame(bytes), nullptr);
    EXPECT_EQ(bytes, -1);
    bytes = 7;
    EXPECT_EQ(camera->getColorFrameData(bytes), nullptr);
    EXPECT_EQ(bytes, -1);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(HardwareCamera, DepthGettersAskTheLibraryEvenWithoutADevice) {
    long long size = 7;
    EXPECT_THROW(camera->getDepthFrame(size), rs::error);
    EXPECT_EQ(size, -1);
    size = 7;
    EXPECT_THROW(camera->getDepthFrameData(size), rs::error);
    EXPECT_EQ(size, -1);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_get_frame_data(null, 0)", "rs_get_frame_data(null, 0)"));
}

TEST_F(HardwareCamera, HandsOutFramesWithTheirSizes) {
    ASSERT_EQ(init(), 0);
    fake.takeCalls();
    long long size = 0;
    EXPECT_EQ(camera->getDepthFrameData(size), fake.depthImage.data());
    EXPECT_EQ(size, 640 * 480 * 2);
    EXPECT_EQ(camera->getDepthFrame(size), fake.depthImage.data());
    EXPECT_EQ(size, 640 * 480);
    EXPECT_EQ(camera->getColorFrameData(size), fake.colorImage.data());
    EXPECT_EQ(size, 1920 * 1080 * 3);
    size = 0;
    EXPECT_EQ(camera->getColorFrame(size), fake.colorImage.data());
    EXPECT_EQ(size, 1920 * 1080 * 3);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_get_frame_data(device, 0)", "rs_get_frame_data(device, 0)",
                            "rs_get_frame_data(device, 1)", "rs_get_frame_data(device, 1)"));
}

TEST_F(HardwareCamera, ReadsFramesFromTheAlignedStreams) {
    long long size = 0;
    ASSERT_EQ(init(R"({"streaming": {"streamAlignment": 2}})"), 0);
    fake.takeCalls();
    camera->getDepthFrame(size);
    EXPECT_EQ(size, 1920 * 1080);
    ASSERT_EQ(init(R"({"streaming": {"streamAlignment": 1}})"), 0);
    camera->getColorFrame(size);
    EXPECT_EQ(fake.takeCalls().back(), "rs_get_frame_data(device, 7)");
}

TEST_F(HardwareCamera, FrameErrorsGoToTheCaller) {
    ASSERT_EQ(init(), 0);
    log.messages().clear();
    for (int getter = 0; getter < 4; ++getter) {
        SCOPED_TRACE(getter);
        fake.failAt("rs_get_frame_data");
        long long size = 7;
        const auto call = [&] {
            switch (getter) {
            case 0:
                camera->getDepthFrameData(size);
                break;
            case 1:
                camera->getDepthFrame(size);
                break;
            case 2:
                camera->getColorFrameData(size);
                break;
            default:
                camera->getColorFrame(size);
            }
        };
        EXPECT_THROW(call(), rs::error);
        EXPECT_EQ(size, -1);
    }
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(HardwareCamera, StartsAndStops) {
    ASSERT_EQ(init(), 0);
    fake.takeCalls();
    EXPECT_TRUE(camera->isStreaming());
    EXPECT_TRUE(camera->stop());
    EXPECT_FALSE(camera->isStreaming());
    EXPECT_TRUE(camera->start());
    EXPECT_TRUE(camera->isStreaming());
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_is_device_streaming(device)", "rs_stop_source(device, 0)",
                            "rs_is_device_streaming(device)", "rs_start_source(device, 0)",
                            "rs_is_device_streaming(device)"));
}

TEST_F(HardwareCamera, CannotStartOrStopWithoutADevice) {
    EXPECT_FALSE(camera->start());
    EXPECT_FALSE(camera->stop());
    EXPECT_FALSE(camera->isStreaming());
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(HardwareCamera, LogsAFailedStartAndStop) {
    ASSERT_EQ(init(), 0);
    log.messages().clear();
    fake.failAt("rs_start_source");
    EXPECT_FALSE(camera->start());
    fake.failAt("rs_stop_source");
    EXPECT_FALSE(camera->stop());
    EXPECT_THAT(log.messages(),
                ElementsAre(errorLine("rs_start_source"), errorLine("rs_stop_source")));
}

TEST_F(HardwareCamera, StreamingQueryErrorGoesToTheCaller) {
    ASSERT_EQ(init(), 0);
    fake.failAt("rs_is_device_streaming");
    EXPECT_THROW(camera->isStreaming(), rs::error);
}

TEST_F(HardwareCamera, EndStopsTheStreamsAndGivesTheContextBack) {
    ASSERT_EQ(init(), 0);
    fake.takeCalls();
    log.messages().clear();
    camera.reset();
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("rs_is_device_streaming(device)", "rs_stop_source(device, 0)",
                            "rs_delete_context(context, no slot)"));
    EXPECT_THAT(log.messages(), ElementsAre("Stopping realsense plugin."));
    EXPECT_EQ(fake.contextsDeleted, 1);
}

TEST_F(HardwareCamera, EndLeavesAStoppedCameraAlone) {
    ASSERT_EQ(init(), 0);
    camera->stop();
    fake.takeCalls();
    camera.reset();
    EXPECT_THAT(fake.takeCalls(), ElementsAre("rs_is_device_streaming(device)",
                                              "rs_delete_context(context, no slot)"));
}

TEST_F(HardwareCamera, EndWithoutADeviceOnlySaysSo) {
    camera.reset();
    EXPECT_THAT(log.messages(), ElementsAre("Stopping realsense plugin."));
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(HardwareCamera, EndLogsCameraErrors) {
    for (const char* function : {"rs_is_device_streaming", "rs_stop_source"}) {
        fake.reset();
        camera = std::make_unique<QVR::hardwareCamera>();
        ASSERT_EQ(init(), 0);
        log.messages().clear();
        fake.failAt(function);
        camera.reset();
        EXPECT_THAT(log.messages(), ElementsAre("Stopping realsense plugin.", errorLine(function)));
    }
}

} // namespace
