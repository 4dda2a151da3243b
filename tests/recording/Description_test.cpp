#include "recording/Description.h"
#include "recording/RecordingError.h"

#include <string>

#include <gtest/gtest.h>
#include <librealsense/camera_source.h>
#include <nlohmann/json.hpp>

using nlohmann::ordered_json;
using recording::Description;

namespace {

std::string problemOf(const char* text) {
    try {
        recording::describedTouches(ordered_json::parse(text, nullptr, false));
        return "";
    } catch (const recording::RecordingError& error) {
        return error.what();
    }
}

} // namespace

TEST(RecordingDescription, ComesFromTheCamera) {
    rs_select_camera_source("simulated:depth=160x120,color=200x150", nullptr);
    rs_context* const context = rs_create_context(RS_API_VERSION, nullptr);
    rs_device* const device = rs_get_device(context, 0, nullptr);
    for (const rs_stream stream : {RS_STREAM_DEPTH, RS_STREAM_COLOR})
        rs_enable_stream_ex(device, stream, 0, 0, RS_FORMAT_ANY, 0,
                            RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS, nullptr);
    const Description description = recording::describe(device);
    rs_extrinsics pose{};
    rs_get_device_extrinsics(device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &pose, nullptr);
    rs_delete_context(context, nullptr);
    rs_select_camera_source(nullptr, nullptr);

    EXPECT_EQ(description.name, "Simulated SR300");
    EXPECT_EQ(description.serial, "SIM1");
    EXPECT_EQ(description.firmware, "1.0.0.0");
    EXPECT_EQ(description.depthScale, 0.000125F);
    EXPECT_EQ(description.depth.width, 160);
    EXPECT_EQ(description.color.height, 150);
    EXPECT_EQ(description.depthToColor.translation[0], pose.translation[0]);
}

TEST(RecordingDescription, SaysWhatItsTouchesAre) {
    Description description;
    description.calibrated = false;
    description.detectionForm = "sse";
    const Description read = recording::describedTouches(jsonOf(description));
    EXPECT_FALSE(read.calibrated);
    EXPECT_EQ(read.detectionForm, "sse");
    description.calibrated = true;
    EXPECT_TRUE(recording::describedTouches(jsonOf(description)).calibrated);
}

TEST(RecordingDescription, IsRefusedWhenItIsNone) {
    EXPECT_EQ(problemOf("{"), "recording.json does not describe a recording");
    EXPECT_EQ(problemOf("[]"), "recording.json does not describe a recording");
    EXPECT_EQ(problemOf(R"({"format": "other"})"), "recording.json does not describe a recording");
    EXPECT_EQ(problemOf(R"({"format": "qvr-recording", "version": 2})"),
              "the recording is of another version than 1, the one known here");
    EXPECT_EQ(problemOf(R"({"format": "qvr-recording", "version": 1, "touches": "some"})"),
              "recording.json does not say whether its touches are calibrated");
}
