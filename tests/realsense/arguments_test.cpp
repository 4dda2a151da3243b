// The checks that every function makes, their order, and what an error says.
#include "support/ScriptedSource.h"
#include "support/calls.h"

#include <gtest/gtest.h>

using namespace camera_test;

namespace {

rs_device* const noDevice = nullptr;
rs_context* const noContext = nullptr;

class Arguments : public testing::Test {
  protected:
    void SetUp() override {
        selectSource([] { return std::make_unique<ScriptedSource>(std::make_shared<Script>()); });
        context = call(rs_create_context, RS_API_VERSION);
        device = call(rs_get_device, context, 0);
    }
    void TearDown() override {
        call(rs_delete_context, context);
        camera::setEnumeration(nullptr);
    }

    rs_context* context = nullptr;
    rs_device* device = nullptr;
    rs_intrinsics intrinsics{};
    rs_extrinsics extrinsics{};
};

void expectFailure(const Failure& found, const std::string& function, const std::string& arguments,
                   const std::string& message) {
    EXPECT_EQ(found.function, function);
    EXPECT_EQ(found.arguments, arguments);
    EXPECT_EQ(found.message, message);
}

TEST_F(Arguments, NameTheNullContext) {
    expectFailure(failure(rs_delete_context, noContext), "rs_delete_context", "context:0",
                  "argument context is null");
    expectFailure(failure(rs_get_device_count, noContext), "rs_get_device_count", "context:0",
                  "argument context is null");
    expectFailure(failure(rs_get_device, noContext, -1), "rs_get_device", "context:0, index:-1",
                  "argument context is null");
}

TEST_F(Arguments, NameTheNullDeviceBeforeAnythingElse) {
    const std::string message = "argument device is null";
    const auto badStream = static_cast<rs_stream>(99);
    const auto badOption = static_cast<rs_option>(99);
    const auto badSource = static_cast<rs_source>(99);
    expectFailure(failure(rs_get_device_name, noDevice), "rs_get_device_name", "device:0", message);
    expectFailure(failure(rs_get_device_serial, noDevice), "rs_get_device_serial", "device:0",
                  message);
    expectFailure(failure(rs_get_device_firmware_version, noDevice),
                  "rs_get_device_firmware_version", "device:0", message);
    expectFailure(failure(rs_device_supports_option, noDevice, badOption),
                  "rs_device_supports_option", "device:0, option:99", message);
    expectFailure(failure(rs_set_device_option, noDevice, RS_OPTION_F200_FILTER_OPTION, 3.0),
                  "rs_set_device_option", "device:0, option:F200_FILTER_OPTION, value:3", message);
    expectFailure(failure(rs_enable_stream_ex, noDevice, badStream, -1, -1,
                          static_cast<rs_format>(99), -1, static_cast<rs_output_buffer_format>(99)),
                  "rs_enable_stream_ex",
                  "device:0, stream:99, width:-1, height:-1, format:99, framerate:-1", message);
    expectFailure(failure(rs_start_source, noDevice, badSource), "rs_start_source",
                  "device:0, source:99", message);
    expectFailure(failure(rs_stop_source, noDevice, badSource), "rs_stop_source",
                  "device:0, source:99", message);
    expectFailure(failure(rs_is_device_streaming, noDevice), "rs_is_device_streaming", "device:0",
                  message);
    expectFailure(failure(rs_get_stream_width, noDevice, badStream), "rs_get_stream_width",
                  "device:0, stream:99", message);
    expectFailure(failure(rs_get_stream_height, noDevice, badStream), "rs_get_stream_height",
                  "device:0, stream:99", message);
    expectFailure(failure(rs_get_frame_data, noDevice, badStream), "rs_get_frame_data",
                  "device:0, stream:99", message);
    expectFailure(failure(rs_wait_for_frames, noDevice), "rs_wait_for_frames", "device:0", message);
    expectFailure(failure(rs_get_device_depth_scale, noDevice), "rs_get_device_depth_scale",
                  "device:0", message);
    expectFailure(failure(rs_get_device_extrinsics, noDevice, badStream, badStream,
                          static_cast<rs_extrinsics*>(nullptr)),
                  "rs_get_device_extrinsics", "device:0, from:99, to:99, extrin:0", message);
    expectFailure(failure(rs_get_stream_intrinsics, noDevice, badStream,
                          static_cast<rs_intrinsics*>(nullptr)),
                  "rs_get_stream_intrinsics", "device:0, stream:99, intrin:0", message);
    expectFailure(failure(rs_get_scene_truth, noDevice, static_cast<rs_scene_truth*>(nullptr)),
                  "rs_get_scene_truth", "device:0, truth:0", message);
    expectFailure(failure(rs_take_device_notices, noDevice), "rs_take_device_notices", "device:0",
                  message);
    expectFailure(
        failure(rs_get_stream_modes, noDevice, badStream, static_cast<rs_mode_range*>(nullptr), -1),
        "rs_get_stream_modes", "device:0, stream:99, ranges:0, capacity:-1", message);
    expectFailure(
        failure(rs_get_current_mode, noDevice, badStream, static_cast<rs_stream_mode*>(nullptr)),
        "rs_get_current_mode", "device:0, stream:99, mode:0", message);
    expectFailure(failure(rs_has_ended, noDevice), "rs_has_ended", "device:0", message);
}

TEST_F(Arguments, AreCheckedWhenAskingForModes) {
    rs_mode_range* const nowhere = nullptr;
    rs_mode_range untouched{{-7, -7, -7}, {-7, -7, -7}};
    EXPECT_EQ(messageOf(rs_get_stream_modes, device, static_cast<rs_stream>(12), nowhere, 1),
              "argument stream is not a known code: 12");
    EXPECT_EQ(messageOf(rs_get_stream_modes, device, RS_STREAM_DEPTH, nowhere, -1),
              "argument capacity is negative");
    EXPECT_EQ(messageOf(rs_get_stream_modes, device, RS_STREAM_DEPTH, nowhere, 1),
              "argument ranges is null");
    EXPECT_EQ(call(rs_get_stream_modes, device, RS_STREAM_DEPTH, &untouched, 0), 1);
    EXPECT_EQ(untouched.least.width, -7) << "no more than the capacity is filled in";
    EXPECT_EQ(messageOf(rs_get_current_mode, device, RS_STREAM_DEPTH,
                        static_cast<rs_stream_mode*>(nullptr)),
              "argument mode is null");
}

TEST_F(Arguments, AreCheckedInOrderWhenEnablingAStream) {
    struct {
        int stream, width, height, format, framerate, output;
        const char* message;
    } const rows[] = {
        {12, -1, -1, 14, -1, 2, "argument stream is not a known code: 12"},
        {-1, -1, -1, 14, -1, 2, "argument stream is not a known code: -1"},
        {5, -1, -1, 14, -1, 2, "argument stream is not a native stream: POINTS"},
        {11, -1, -1, 14, -1, 2,
         "argument stream is not a native stream: DEPTH_ALIGNED_TO_INFRARED2"},
        {1, -1, -1, 14, -1, 2, "argument width is negative"},
        {1, 0, -1, 14, -1, 2, "argument height is negative"},
        {1, 0, 0, 14, -1, 2, "argument format is not a known code: 14"},
        {1, 0, 0, -1, -1, 2, "argument format is not a known code: -1"},
        {1, 0, 0, 0, -1, 2, "argument output is not a known code: 2"},
        {1, 0, 0, 0, -1, -1, "argument output is not a known code: -1"},
        {1, 0, 0, 0, -1, 0, "argument framerate is negative"},
        {1, 0, 0, 0, 0, 0, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(messageOf(rs_enable_stream_ex, device, static_cast<rs_stream>(row.stream),
                            row.width, row.height, static_cast<rs_format>(row.format),
                            row.framerate, static_cast<rs_output_buffer_format>(row.output)),
                  row.message);
    }
}

TEST_F(Arguments, AreListedWithoutTheOutputBufferFormat) {
    const Failure found = failure(rs_enable_stream_ex, device, RS_STREAM_COLOR, 640, 480,
                                  RS_FORMAT_RGB8, -5, RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS);
    EXPECT_EQ(found.arguments,
              "device:" + pointerText(device) +
                  ", stream:COLOR, width:640, height:480, format:RGB8, framerate:-5");
}

TEST_F(Arguments, MustBeKnownCodes) {
    for (const int code : {-1, 12, 1000000}) {
        const auto stream = static_cast<rs_stream>(code);
        const std::string rest = " is not a known code: " + std::to_string(code);
        EXPECT_EQ(messageOf(rs_get_stream_width, device, stream), "argument stream" + rest);
        EXPECT_EQ(messageOf(rs_get_stream_height, device, stream), "argument stream" + rest);
        EXPECT_EQ(messageOf(rs_get_frame_data, device, stream), "argument stream" + rest);
        EXPECT_EQ(messageOf(rs_get_stream_intrinsics, device, stream,
                            static_cast<rs_intrinsics*>(nullptr)),
                  "argument stream" + rest);
        EXPECT_EQ(messageOf(rs_get_device_extrinsics, device, stream, stream,
                            static_cast<rs_extrinsics*>(nullptr)),
                  "argument from" + rest);
        EXPECT_EQ(messageOf(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, stream,
                            static_cast<rs_extrinsics*>(nullptr)),
                  "argument to" + rest);
    }
    for (const int code : {-1, 3}) {
        const auto source = static_cast<rs_source>(code);
        const std::string message = "argument source is not a known code: " + std::to_string(code);
        EXPECT_EQ(messageOf(rs_start_source, device, source), message);
        EXPECT_EQ(messageOf(rs_stop_source, device, source), message);
    }
    for (const int code : {-1, 68}) {
        const auto option = static_cast<rs_option>(code);
        const std::string message = "argument option is not a known code: " + std::to_string(code);
        EXPECT_EQ(messageOf(rs_device_supports_option, device, option), message);
        EXPECT_EQ(messageOf(rs_set_device_option, device, option, 1.0), message);
    }
}

TEST_F(Arguments, MustNotBeNullOutParameters) {
    EXPECT_EQ(messageOf(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH,
                        static_cast<rs_intrinsics*>(nullptr)),
              "argument intrin is null");
    EXPECT_EQ(messageOf(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR,
                        static_cast<rs_extrinsics*>(nullptr)),
              "argument extrin is null");
}

TEST_F(Arguments, MustBeAnIndexBelowTheDeviceCount) {
    for (const int index : {-1, 1, 2147483647}) {
        const Failure found = failure(rs_get_device, context, index);
        EXPECT_EQ(found.message, "argument index is not below the number of devices, 1");
        EXPECT_EQ(found.arguments,
                  "context:" + pointerText(context) + ", index:" + std::to_string(index));
    }
}

TEST_F(Arguments, ShowPointersNamesAndNumbers) {
    EXPECT_EQ(failure(rs_set_device_option, device, static_cast<rs_option>(67), 0.5).arguments,
              "device:" + pointerText(device) + ", option:67, value:0.5");
    EXPECT_EQ(failure(rs_set_device_option, noDevice, RS_OPTION_F200_CONFIDENCE_THRESHOLD, 1e20)
                  .arguments,
              "device:0, option:F200_CONFIDENCE_THRESHOLD, value:1e+20");
    EXPECT_EQ(failure(rs_start_source, noDevice, RS_SOURCE_VIDEO).arguments,
              "device:0, source:VIDEO");
    EXPECT_EQ(failure(rs_stop_source, noDevice, RS_SOURCE_ALL).arguments, "device:0, source:ALL");
    EXPECT_EQ(failure(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH, &intrinsics).arguments,
              "device:" + pointerText(device) +
                  ", stream:DEPTH, intrin:" + pointerText(&intrinsics));
    EXPECT_EQ(failure(rs_select_camera_source, "no such source").arguments, "uri:no such source");
}

TEST_F(Arguments, GiveTheResultOnErrorWithANullSlot) {
    EXPECT_EQ(rs_create_context(1, nullptr), nullptr);
    rs_delete_context(nullptr, nullptr);
    EXPECT_EQ(rs_get_device_count(nullptr, nullptr), 0);
    EXPECT_EQ(rs_get_device(nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(rs_get_device_name(nullptr, nullptr), nullptr);
    EXPECT_EQ(rs_get_device_serial(nullptr, nullptr), nullptr);
    EXPECT_EQ(rs_get_device_firmware_version(nullptr, nullptr), nullptr);
    EXPECT_EQ(rs_device_supports_option(nullptr, RS_OPTION_F200_ACCURACY, nullptr), 0);
    rs_set_device_option(nullptr, RS_OPTION_F200_ACCURACY, 0.0, nullptr);
    rs_enable_stream_ex(nullptr, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0,
                        RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS, nullptr);
    rs_start_source(nullptr, RS_SOURCE_VIDEO, nullptr);
    rs_stop_source(nullptr, RS_SOURCE_VIDEO, nullptr);
    EXPECT_EQ(rs_is_device_streaming(nullptr, nullptr), 0);
    EXPECT_EQ(rs_get_stream_width(nullptr, RS_STREAM_DEPTH, nullptr), 0);
    EXPECT_EQ(rs_get_stream_height(nullptr, RS_STREAM_DEPTH, nullptr), 0);
    EXPECT_EQ(rs_get_frame_data(nullptr, RS_STREAM_DEPTH, nullptr), nullptr);
    rs_wait_for_frames(nullptr, nullptr);
    EXPECT_EQ(rs_get_device_depth_scale(nullptr, nullptr), 0.0f);
    extrinsics.translation[0] = 5.0f;
    rs_get_device_extrinsics(nullptr, RS_STREAM_DEPTH, RS_STREAM_COLOR, &extrinsics, nullptr);
    EXPECT_EQ(extrinsics.translation[0], 5.0f);
    intrinsics.width = 5;
    rs_get_stream_intrinsics(nullptr, RS_STREAM_DEPTH, &intrinsics, nullptr);
    EXPECT_EQ(intrinsics.width, 5);
}

TEST(EnumNames, AreUpperCaseWithoutPrefix) {
    const char* const streams[] = {"DEPTH",
                                   "COLOR",
                                   "INFRARED",
                                   "INFRARED2",
                                   "FISHEYE",
                                   "POINTS",
                                   "RECTIFIED_COLOR",
                                   "COLOR_ALIGNED_TO_DEPTH",
                                   "INFRARED2_ALIGNED_TO_DEPTH",
                                   "DEPTH_ALIGNED_TO_COLOR",
                                   "DEPTH_ALIGNED_TO_RECTIFIED_COLOR",
                                   "DEPTH_ALIGNED_TO_INFRARED2",
                                   "12"};
    for (int code = 0; code <= RS_STREAM_COUNT; ++code) {
        EXPECT_EQ(camera::nameOf(static_cast<rs_stream>(code)), streams[code]);
    }
    const char* const formats[] = {"ANY",  "Z16",   "DISPARITY16", "XYZ32F", "YUYV",
                                   "RGB8", "BGR8",  "RGBA8",       "BGRA8",  "Y8",
                                   "Y16",  "RAW10", "RAW16",       "RAW8",   "14"};
    for (int code = 0; code <= RS_FORMAT_COUNT; ++code) {
        EXPECT_EQ(camera::nameOf(static_cast<rs_format>(code)), formats[code]);
    }
    const char* const sources[] = {"VIDEO", "MOTION_TRACKING", "ALL", "3"};
    for (int code = 0; code <= RS_SOURCE_COUNT; ++code) {
        EXPECT_EQ(camera::nameOf(static_cast<rs_source>(code)), sources[code]);
    }
    const char* const options[] = {"11",
                                   "F200_LASER_POWER",
                                   "F200_ACCURACY",
                                   "F200_MOTION_RANGE",
                                   "F200_FILTER_OPTION",
                                   "F200_CONFIDENCE_THRESHOLD",
                                   "F200_DYNAMIC_FPS",
                                   "18"};
    for (int code = 11; code <= 18; ++code) {
        EXPECT_EQ(camera::nameOf(static_cast<rs_option>(code)), options[code - 11]);
    }
    EXPECT_EQ(camera::nameOf(static_cast<rs_stream>(-1)), "-1");
}

} // namespace
