// Recordings of the SDK's recorder, made by the tests themselves.
#include "realsense/sdk/SoftwareCamera.h"
#include "realsense/support/PictureFolder.h"
#include "realsense/support/calls.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace camera_test;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class RecordingTest : public testing::Test {
  protected:
    static constexpr std::uint64_t frames = 12;

    void TearDown() override {
        close();
        camera::setEnumeration(nullptr);
    }

    void record() { recordBag(folder.file("film.bag"), script, frames); }

    void open(const std::string& keys) {
        close();
        const std::string uri = "bag:" + folder.file("film.bag") + keys;
        call(rs_select_camera_source, uri.c_str());
        context = call(rs_create_context, RS_API_VERSION);
        device = call(rs_get_device, context, 0);
        enable(device, RS_STREAM_DEPTH);
        enable(device, RS_STREAM_COLOR);
    }
    void start() { call(rs_start_source, device, RS_SOURCE_VIDEO); }
    void stop() { call(rs_stop_source, device, RS_SOURCE_VIDEO); }
    void close() {
        if (context) {
            call(rs_delete_context, context);
            context = nullptr;
        }
    }

    // Waits, and gives the number of the recorded frame that has these very pictures; -1 for none.
    int next() {
        call(rs_wait_for_frames, device);
        const auto* depth =
            static_cast<const std::uint16_t*>(call(rs_get_frame_data, device, RS_STREAM_DEPTH));
        const auto* color =
            static_cast<const std::uint8_t*>(call(rs_get_frame_data, device, RS_STREAM_COLOR));
        std::vector<std::uint16_t> depths(8 * 6);
        std::vector<std::uint8_t> colors(16 * 10 * 3);
        for (std::uint64_t number = 0; number < frames; ++number) {
            script.paint(number, depths, colors);
            if (std::equal(depths.begin(), depths.end(), depth)) {
                return std::equal(colors.begin(), colors.end(), color) ? static_cast<int>(number)
                                                                       : -1;
            }
        }
        return -1;
    }
    std::vector<int> next(std::uint64_t count) {
        std::vector<int> numbers;
        for (std::uint64_t i = 0; i < count; ++i) {
            numbers.push_back(next());
        }
        return numbers;
    }

    PictureFolder folder;
    SoftwareScript script;
    rs_context* context = nullptr;
    rs_device* device = nullptr;
};

const std::vector<int> everyFrame = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

TEST_F(RecordingTest, DeliversEveryFrameAsRecordedWithoutPace) {
    record();
    open(",pace=off,loop=off");
    start();
    EXPECT_EQ(next(frames), everyFrame);
}

TEST_F(RecordingTest, EndsWhenItIsNotLooped) {
    record();
    open(",pace=off,loop=off");
    start();
    next(frames);
    EXPECT_EQ(messageOf(rs_wait_for_frames, device), "the recording has ended");
    EXPECT_EQ(messageOf(rs_wait_for_frames, device), "the recording has ended");
    EXPECT_EQ(call(rs_is_device_streaming, device), 1);
    EXPECT_EQ(call(rs_has_ended, device), 1);
    stop();
    start();
    EXPECT_EQ(next(frames), everyFrame);
}

TEST_F(RecordingTest, BeginsAnewAtItsEndAgainAndAgain) {
    record();
    open(",pace=off");
    start();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(next(frames), everyFrame) << round;
    }
}

TEST_F(RecordingTest, BeginsAnewAfterAStopAnywhere) {
    record();
    open(",pace=off");
    for (const std::uint64_t taken : {1, 0, 5, 11, 12, 13, 3}) {
        start();
        next(taken);
        stop();
    }
    start();
    EXPECT_EQ(next(frames), everyFrame);
}

TEST_F(RecordingTest, PlaysAtItsPaceAndMissesNoFrameOfAProgramThatWaits) {
    record();
    open(",loop=off");
    start();
    // As it was recorded within a few milliseconds, frames come faster than anybody can wait.
    int last = -1;
    std::string end;
    while (end.empty()) {
        try {
            const int number = next();
            EXPECT_GT(number, last);
            last = number;
        } catch (const rs::error& error) {
            end = error.what();
        }
    }
    EXPECT_EQ(last, 11);
    EXPECT_EQ(end, "the recording has ended");
}

TEST_F(RecordingTest, KnowsItsLensesButNoDistortionAndPosesOfNoCamera) {
    record();
    open(",pace=off");
    rs_intrinsics lens;
    call(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH, &lens);
    rs_intrinsics expected = script.geometry.depth;
    expected.model = RS_DISTORTION_NONE;
    std::fill(std::begin(expected.coeffs), std::end(expected.coeffs), 0.0f);
    EXPECT_EQ(std::memcmp(&lens, &expected, sizeof lens), 0);
    rs_extrinsics pose;
    call(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &pose);
    const rs_extrinsics identity{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    EXPECT_EQ(std::memcmp(&pose, &identity, sizeof pose), 0);
    EXPECT_EQ(call(rs_get_device_depth_scale, device), script.geometry.depthScale);
    EXPECT_EQ(call(rs_get_device_serial, device), folder.file("film.bag"));
    EXPECT_STREQ(call(rs_get_device_name, device), "Software-Device");
}

TEST_F(RecordingTest, TellsTheNumbersAndTimesOfItsFrames) {
    record();
    open(",pace=off");
    start();
    for (int round = 0; round < 2; ++round) {
        for (std::uint64_t number = 0; number < frames; ++number) {
            next();
            rs_scene_truth truth{};
            call(rs_get_scene_truth, device, &truth);
            EXPECT_EQ(truth.frame, number);
            EXPECT_EQ(truth.timed, 1);
            EXPECT_NEAR(truth.seconds, static_cast<double>(number) / 30.0, 1e-6);
            EXPECT_EQ(truth.known, 0);
        }
    }
}

TEST_F(RecordingTest, IsRefusedWhenTheFileIsNone) {
    const std::string missing = "bag:" + folder.file("missing.bag");
    EXPECT_THAT(messageOf(rs_select_camera_source, missing.c_str()), HasSubstr("missing.bag"));
    folder.write("text.bag", "This is no recording, and it is longer than any header would be.");
    const std::string text = "bag:" + folder.file("text.bag");
    EXPECT_THAT(messageOf(rs_select_camera_source, text.c_str()), HasSubstr("text.bag"));
    EXPECT_EQ(messageOf(rs_select_camera_source, "bag"),
              "camera source \"bag\" needs a file: bag:FILE");
    EXPECT_EQ(messageOf(rs_select_camera_source, "bag:film.bag,speed=2"),
              "camera source \"bag\" has no key \"speed\"; accepted: loop, pace");
}

TEST_F(RecordingTest, CannotStartAgainWhenTheFileHasGone) {
    record();
    open(",pace=off");
    start();
    next(3);
    stop();
    std::filesystem::remove(folder.file("film.bag"));
    EXPECT_THAT(messageOf(rs_start_source, device, RS_SOURCE_VIDEO), HasSubstr("film.bag"));
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
}

} // namespace
