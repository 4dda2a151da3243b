// What every camera does, whichever source its pictures come from.
#include "support/PictureFolder.h"
#include "support/ScriptedSource.h"
#include "support/SourceCase.h"
#include "support/alignmentOracle.h"
#include "support/calls.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

using namespace camera_test;

namespace {

static_assert(sizeof(rs_intrinsics) == 48 && offsetof(rs_intrinsics, coeffs) == 28);
static_assert(sizeof(rs_extrinsics) == 48 && offsetof(rs_extrinsics, translation) == 36);
static_assert(sizeof(rs_stream) == 4 && sizeof(rs_distortion) == 4);

void selectScripted(const PictureFolder&) {
    selectSource([] {
        auto script = std::make_shared<Script>();
        script->paced = false;
        return std::make_unique<ScriptedSource>(script);
    });
}

void selectImages(const PictureFolder& folder) {
    for (int number = 0; number < 3; ++number) {
        std::vector<std::uint16_t> samples(12 * 10);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<std::uint16_t>(3000 + 500 * number + static_cast<int>(i) * 3);
        }
        samples[5] = 0;
        folder.writeDepth("depth_" + std::to_string(number) + ".png", 12, 10, samples);
    }
    const std::string uri = "images:" + folder.path() + ",pace=off";
    call(rs_select_camera_source, uri.c_str());
}

void selectSimulated(const PictureFolder&) {
    call(rs_select_camera_source, "simulated:pace=off,depth=160x120,color=200x150");
}

class CameraContract : public testing::TestWithParam<SourceCase> {
  protected:
    void SetUp() override {
        GetParam().select(folder);
        context = call(rs_create_context, RS_API_VERSION);
        ASSERT_NE(context, nullptr);
        ASSERT_EQ(call(rs_get_device_count, context), 1);
        device = call(rs_get_device, context, 0);
    }
    void TearDown() override {
        if (context) {
            call(rs_delete_context, context);
        }
        camera::setEnumeration(nullptr);
    }

    void enableBoth() {
        const SourceCase& source = GetParam();
        enable(device, RS_STREAM_COLOR, source.colorWidth, source.colorHeight, RS_FORMAT_RGB8, 30);
        enable(device, RS_STREAM_DEPTH, source.depthWidth, source.depthHeight, RS_FORMAT_Z16, 30);
    }
    void startBoth() {
        enableBoth();
        call(rs_start_source, device, RS_SOURCE_VIDEO);
    }
    void wait() { call(rs_wait_for_frames, device); }

    const std::uint16_t* depth(rs_stream stream = RS_STREAM_DEPTH) {
        return static_cast<const std::uint16_t*>(call(rs_get_frame_data, device, stream));
    }
    const std::uint8_t* color(rs_stream stream = RS_STREAM_COLOR) {
        return static_cast<const std::uint8_t*>(call(rs_get_frame_data, device, stream));
    }
    std::size_t depthPixels() const {
        return static_cast<std::size_t>(GetParam().depthWidth * GetParam().depthHeight);
    }
    std::size_t colorPixels() const {
        return static_cast<std::size_t>(GetParam().colorWidth * GetParam().colorHeight);
    }
    std::vector<std::uint16_t> copyDepth() { return {depth(), depth() + depthPixels()}; }

    camera::CameraGeometry geometry() {
        camera::CameraGeometry cameras;
        call(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH, &cameras.depth);
        call(rs_get_stream_intrinsics, device, RS_STREAM_COLOR, &cameras.color);
        call(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR,
             &cameras.depthToColor);
        cameras.depthScale = call(rs_get_device_depth_scale, device);
        return cameras;
    }

    PictureFolder folder;
    rs_context* context = nullptr;
    rs_device* device = nullptr;
};

TEST_P(CameraContract, GivesTheSameContextAndDeviceOnEveryCall) {
    EXPECT_EQ(call(rs_create_context, RS_API_VERSION), context);
    EXPECT_EQ(call(rs_get_device, context, 0), device);
    call(rs_delete_context, context);
    EXPECT_EQ(call(rs_get_device, context, 0), device);
    EXPECT_NE(call(rs_get_device_name, device), nullptr);
}

TEST_P(CameraContract, NamesItselfWithTextsThatStay) {
    const char* const name = call(rs_get_device_name, device);
    const char* const serial = call(rs_get_device_serial, device);
    const char* const firmware = call(rs_get_device_firmware_version, device);
    EXPECT_STRNE(name, "");
    EXPECT_STRNE(serial, "");
    EXPECT_EQ(std::count(firmware, firmware + std::strlen(firmware), '.'), 3);
    startBoth();
    wait();
    EXPECT_EQ(call(rs_get_device_name, device), name);
    EXPECT_EQ(call(rs_get_device_serial, device), serial);
    EXPECT_EQ(call(rs_get_device_firmware_version, device), firmware);
}

TEST_P(CameraContract, LeavesTheSlotUntouchedOnSuccess) {
    rs_error* const before = reinterpret_cast<rs_error*>(8);
    rs_error* slot = before;
    rs_intrinsics intrinsics;
    rs_extrinsics extrinsics;
    rs_scene_truth truth;
    rs_create_context(RS_API_VERSION, &slot);
    rs_delete_context(context, &slot);
    rs_get_device_count(context, &slot);
    rs_get_device(context, 0, &slot);
    rs_get_device_name(device, &slot);
    rs_get_device_serial(device, &slot);
    rs_get_device_firmware_version(device, &slot);
    rs_device_supports_option(device, RS_OPTION_F200_FILTER_OPTION, &slot);
    rs_set_device_option(device, RS_OPTION_F200_FILTER_OPTION, 3.0, &slot);
    rs_enable_stream_ex(device, RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 0,
                        RS_OUTPUT_BUFFER_FORMAT_NATIVE, &slot);
    rs_enable_stream_ex(device, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0,
                        RS_OUTPUT_BUFFER_FORMAT_NATIVE, &slot);
    rs_start_source(device, RS_SOURCE_VIDEO, &slot);
    rs_is_device_streaming(device, &slot);
    rs_get_stream_width(device, RS_STREAM_DEPTH, &slot);
    rs_get_stream_height(device, RS_STREAM_DEPTH, &slot);
    rs_get_stream_intrinsics(device, RS_STREAM_DEPTH, &intrinsics, &slot);
    rs_get_device_depth_scale(device, &slot);
    rs_get_device_extrinsics(device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &extrinsics, &slot);
    rs_take_device_notices(device, &slot);
    rs_wait_for_frames(device, &slot);
    rs_get_frame_data(device, RS_STREAM_DEPTH_ALIGNED_TO_COLOR, &slot);
    rs_get_scene_truth(device, &truth, &slot);
    rs_stop_source(device, RS_SOURCE_VIDEO, &slot);
    rs_select_camera_source(nullptr, &slot);
    EXPECT_EQ(slot, before);
}

TEST_P(CameraContract, ReturnsSilentlyFromAWaitWithoutStreaming) {
    wait();
    startBoth();
    wait();
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    wait();
    EXPECT_EQ(depth(), nullptr);
}

TEST_P(CameraContract, ReportsStreamingBetweenStartAndStopOnly) {
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
    startBoth();
    EXPECT_EQ(call(rs_is_device_streaming, device), 1);
    wait();
    EXPECT_EQ(call(rs_is_device_streaming, device), 1);
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
}

TEST_P(CameraContract, RefusesFramesOfStreamsThatAreNotEnabled) {
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_DEPTH), "stream DEPTH is not enabled");
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_COLOR), "stream COLOR is not enabled");
    enable(device, RS_STREAM_DEPTH);
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_DEPTH_ALIGNED_TO_COLOR),
              "stream COLOR is not enabled");
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_COLOR_ALIGNED_TO_DEPTH),
              "stream COLOR is not enabled");
}

TEST_P(CameraContract, RefusesFramesBeforeTheFirstStart) {
    enableBoth();
    for (const rs_stream stream :
         {RS_STREAM_DEPTH, RS_STREAM_COLOR, RS_STREAM_COLOR_ALIGNED_TO_DEPTH,
          RS_STREAM_DEPTH_ALIGNED_TO_COLOR}) {
        EXPECT_EQ(messageOf(rs_get_frame_data, device, stream),
                  "the camera has not been started since stream " + camera::nameOf(stream) +
                      " was enabled");
    }
}

TEST_P(CameraContract, ShowsZerosBetweenStartAndFirstWait) {
    startBoth();
    const auto isZero = [](auto sample) { return sample == 0; };
    const std::uint16_t* depths = depth();
    EXPECT_TRUE(std::all_of(depths, depths + depthPixels(), isZero));
    const std::uint8_t* colors = color();
    EXPECT_TRUE(std::all_of(colors, colors + colorPixels() * 3, isZero));
    const std::uint16_t* aligned = depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR);
    EXPECT_TRUE(std::all_of(aligned, aligned + colorPixels(), isZero));
    const std::uint8_t* alignedColor = color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH);
    EXPECT_TRUE(std::all_of(alignedColor, alignedColor + depthPixels() * 3, isZero));
}

TEST_P(CameraContract, ShowsPicturesAfterAWait) {
    startBoth();
    wait();
    const std::uint16_t* depths = depth();
    EXPECT_TRUE(std::any_of(depths, depths + depthPixels(), [](auto s) { return s != 0; }));
    const std::uint8_t* colors = color();
    EXPECT_TRUE(std::any_of(colors, colors + colorPixels() * 3, [](auto s) { return s != 0; }));
    EXPECT_EQ(depth(), depths);
    EXPECT_EQ(color(), colors);
    const auto before = copyDepth();
    wait();
    EXPECT_NE(copyDepth(), before);
}

TEST_P(CameraContract, GivesNullWithoutAnErrorAfterStop) {
    startBoth();
    wait();
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    EXPECT_EQ(depth(), nullptr);
    EXPECT_EQ(color(), nullptr);
    EXPECT_EQ(depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR), nullptr);
    EXPECT_EQ(color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH), nullptr);
}

TEST_P(CameraContract, StartsAgainWithoutEnablingAnew) {
    startBoth();
    wait();
    const auto first = copyDepth();
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    call(rs_start_source, device, RS_SOURCE_VIDEO);
    const std::uint16_t* fresh = depth();
    EXPECT_TRUE(std::all_of(fresh, fresh + depthPixels(), [](auto s) { return s == 0; }));
    wait();
    EXPECT_EQ(copyDepth(), first);
}

TEST_P(CameraContract, DiscardsFramesWhenAStreamIsEnabledAnew) {
    startBoth();
    wait();
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    enable(device, RS_STREAM_COLOR);
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_DEPTH),
              "the camera has not been started since stream DEPTH was enabled");
}

TEST_P(CameraContract, RefusesSecondStartSecondStopAndEnableWhileStreaming) {
    EXPECT_EQ(messageOf(rs_stop_source, device, RS_SOURCE_VIDEO), "the camera is not streaming");
    EXPECT_EQ(messageOf(rs_start_source, device, RS_SOURCE_VIDEO), "no stream is enabled");
    startBoth();
    EXPECT_EQ(messageOf(rs_start_source, device, RS_SOURCE_VIDEO),
              "the camera is streaming already");
    EXPECT_EQ(messageOf(rs_enable_stream_ex, device, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0,
                        RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS),
              "streams cannot be enabled while the camera is streaming");
    call(rs_stop_source, device, RS_SOURCE_VIDEO);
    EXPECT_EQ(messageOf(rs_stop_source, device, RS_SOURCE_VIDEO), "the camera is not streaming");
}

TEST_P(CameraContract, HasNoMotionTracking) {
    enableBoth();
    for (const rs_source source : {RS_SOURCE_MOTION_TRACKING, RS_SOURCE_ALL}) {
        EXPECT_EQ(messageOf(rs_start_source, device, source), "this camera has no motion tracking");
        EXPECT_EQ(messageOf(rs_stop_source, device, source), "this camera has no motion tracking");
    }
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
}

TEST_P(CameraContract, HasNeitherInfraredNorFisheyeStreams) {
    for (const rs_stream stream : {RS_STREAM_INFRARED, RS_STREAM_INFRARED2, RS_STREAM_FISHEYE}) {
        const std::string expected = "this camera has no stream " + camera::nameOf(stream);
        EXPECT_EQ(messageOf(rs_enable_stream_ex, device, stream, 0, 0, RS_FORMAT_ANY, 0,
                            RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS),
                  expected);
        EXPECT_EQ(messageOf(rs_get_stream_width, device, stream), expected);
        EXPECT_EQ(messageOf(rs_get_frame_data, device, stream), expected);
    }
}

TEST_P(CameraContract, ReportsAWrongModeAtStartNotAtEnable) {
    enable(device, RS_STREAM_DEPTH, 123, 45, RS_FORMAT_Z16, 30);
    const Failure problem = failure(rs_start_source, device, RS_SOURCE_VIDEO);
    EXPECT_EQ(problem.function, "rs_start_source");
    EXPECT_NE(problem.message, "");
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
    enableBoth();
    call(rs_start_source, device, RS_SOURCE_VIDEO);
}

TEST_P(CameraContract, ReportsAWrongModeAtTheSizeQueries) {
    enable(device, RS_STREAM_DEPTH, 123, 45, RS_FORMAT_Z16, 30);
    rs_intrinsics intrinsics;
    EXPECT_NE(messageOf(rs_get_stream_width, device, RS_STREAM_DEPTH), "");
    EXPECT_NE(messageOf(rs_get_stream_height, device, RS_STREAM_DEPTH), "");
    EXPECT_NE(messageOf(rs_get_stream_intrinsics, device, RS_STREAM_DEPTH, &intrinsics), "");
}

TEST_P(CameraContract, ReportsAWrongFormatAtStartNotAtEnable) {
    enable(device, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_DISPARITY16);
    EXPECT_EQ(messageOf(rs_start_source, device, RS_SOURCE_VIDEO),
              "stream DEPTH comes in format Z16 only, not in DISPARITY16");
    enable(device, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_Z16);
    enable(device, RS_STREAM_COLOR, 0, 0, RS_FORMAT_BGR8);
    EXPECT_EQ(messageOf(rs_get_stream_width, device, RS_STREAM_COLOR),
              "stream COLOR comes in format RGB8 only, not in BGR8");
}

TEST_P(CameraContract, ListsTheModesThatItDelivers) {
    const SourceCase& source = GetParam();
    const auto modes = [&](rs_stream stream) {
        rs_mode_range* const none = nullptr;
        std::vector<rs_mode_range> ranges(
            static_cast<std::size_t>(call(rs_get_stream_modes, device, stream, none, 0)));
        call(rs_get_stream_modes, device, stream, ranges.data(), static_cast<int>(ranges.size()));
        return ranges;
    };
    const auto listed = [&](rs_stream stream, int width, int height, int framerate) {
        const auto ranges = modes(stream);
        const auto within = [](int least, int value, int most) {
            return least <= value && value <= most;
        };
        return std::any_of(ranges.begin(), ranges.end(), [&](const rs_mode_range& range) {
            return within(range.least.width, width, range.most.width) &&
                   within(range.least.height, height, range.most.height) &&
                   within(range.least.framerate, framerate, range.most.framerate);
        });
    };
    EXPECT_TRUE(listed(RS_STREAM_DEPTH, source.depthWidth, source.depthHeight, 30));
    EXPECT_TRUE(listed(RS_STREAM_COLOR, source.colorWidth, source.colorHeight, 30));
    EXPECT_FALSE(listed(RS_STREAM_DEPTH, 123, 45, 30));
    EXPECT_FALSE(listed(RS_STREAM_DEPTH, source.depthWidth, source.depthHeight, 0));
    for (const rs_stream stream : {RS_STREAM_INFRARED, RS_STREAM_COLOR_ALIGNED_TO_DEPTH}) {
        EXPECT_EQ(modes(stream).size(), 0U);
    }
    const rs_stream_mode least = modes(RS_STREAM_DEPTH).front().least;
    enable(device, RS_STREAM_DEPTH, least.width, least.height, RS_FORMAT_Z16, least.framerate);
    rs_stream_mode settled{};
    call(rs_get_current_mode, device, RS_STREAM_DEPTH, &settled);
    EXPECT_EQ(std::memcmp(&settled, &least, sizeof settled), 0);
    call(rs_start_source, device, RS_SOURCE_VIDEO);
}

TEST_P(CameraContract, TellsTheModeThatIsSettled) {
    const SourceCase& source = GetParam();
    rs_stream_mode mode{};
    EXPECT_EQ(messageOf(rs_get_current_mode, device, RS_STREAM_DEPTH, &mode),
              "stream DEPTH is not enabled");
    enableBoth();
    call(rs_get_current_mode, device, RS_STREAM_DEPTH, &mode);
    EXPECT_EQ(mode.width, source.depthWidth);
    EXPECT_EQ(mode.height, source.depthHeight);
    EXPECT_EQ(mode.framerate, 30);
    call(rs_get_current_mode, device, RS_STREAM_COLOR, &mode);
    EXPECT_EQ(mode.width, source.colorWidth);
    EXPECT_EQ(mode.height, source.colorHeight);
    EXPECT_EQ(mode.framerate, 30);
}

TEST_P(CameraContract, HasNotEndedWhileFramesCome) {
    startBoth();
    wait();
    EXPECT_EQ(call(rs_has_ended, device), 0);
}

TEST_P(CameraContract, ReportsTwoDifferentRates) {
    enable(device, RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 30);
    enable(device, RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 60);
    EXPECT_EQ(messageOf(rs_start_source, device, RS_SOURCE_VIDEO),
              "depth and colour come at one rate, not at 30 and 60 frames a second");
}

TEST_P(CameraContract, GivesAlignedStreamsTheirTargetsGeometry) {
    const SourceCase& source = GetParam();
    enableBoth();
    const auto expectSize = [&](rs_stream stream, int width, int height) {
        rs_intrinsics lens;
        call(rs_get_stream_intrinsics, device, stream, &lens);
        EXPECT_EQ(call(rs_get_stream_width, device, stream), width);
        EXPECT_EQ(call(rs_get_stream_height, device, stream), height);
        EXPECT_EQ(lens.width, width);
        EXPECT_EQ(lens.height, height);
        EXPECT_GT(lens.fx, 0.0f);
        return lens;
    };
    const auto depthLens = expectSize(RS_STREAM_DEPTH, source.depthWidth, source.depthHeight);
    const auto colorLens = expectSize(RS_STREAM_COLOR, source.colorWidth, source.colorHeight);
    const auto seven =
        expectSize(RS_STREAM_COLOR_ALIGNED_TO_DEPTH, source.depthWidth, source.depthHeight);
    const auto nine =
        expectSize(RS_STREAM_DEPTH_ALIGNED_TO_COLOR, source.colorWidth, source.colorHeight);
    EXPECT_EQ(std::memcmp(&seven, &depthLens, sizeof(rs_intrinsics)), 0);
    EXPECT_EQ(std::memcmp(&nine, &colorLens, sizeof(rs_intrinsics)), 0);
}

TEST_P(CameraContract, NeedsTheTargetEnabledForSizesAndIntrinsics) {
    rs_intrinsics lens{};
    lens.width = -7;
    for (const rs_stream stream : {RS_STREAM_DEPTH, RS_STREAM_COLOR_ALIGNED_TO_DEPTH}) {
        EXPECT_EQ(messageOf(rs_get_stream_width, device, stream), "stream DEPTH is not enabled");
        EXPECT_EQ(messageOf(rs_get_stream_height, device, stream), "stream DEPTH is not enabled");
        EXPECT_EQ(messageOf(rs_get_stream_intrinsics, device, stream, &lens),
                  "stream DEPTH is not enabled");
    }
    enable(device, RS_STREAM_DEPTH);
    for (const rs_stream stream : {RS_STREAM_COLOR, RS_STREAM_DEPTH_ALIGNED_TO_COLOR}) {
        EXPECT_EQ(messageOf(rs_get_stream_width, device, stream), "stream COLOR is not enabled");
        EXPECT_EQ(messageOf(rs_get_stream_intrinsics, device, stream, &lens),
                  "stream COLOR is not enabled");
    }
    EXPECT_EQ(lens.width, -7) << "an error leaves the out parameter untouched";
}

TEST_P(CameraContract, KnowsDepthScaleAndPosesWithoutAnyStream) {
    const float scale = call(rs_get_device_depth_scale, device);
    EXPECT_GT(scale, 0.0f);
    EXPECT_LT(scale, 0.01f);
    rs_extrinsics pose;
    call(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &pose);
    const float* r = pose.rotation;
    for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < 3; ++b) {
            const float dot =
                r[a * 3] * r[b * 3] + r[a * 3 + 1] * r[b * 3 + 1] + r[a * 3 + 2] * r[b * 3 + 2];
            EXPECT_NEAR(dot, a == b ? 1.0f : 0.0f, 1e-5f) << "columns " << a << " and " << b;
        }
    }
}

TEST_P(CameraContract, InvertsThePoseFromColorToDepth) {
    rs_extrinsics there;
    rs_extrinsics back;
    call(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &there);
    call(rs_get_device_extrinsics, device, RS_STREAM_COLOR, RS_STREAM_DEPTH, &back);
    const auto apply = [](const rs_extrinsics& pose, const float* from, float* to) {
        for (int row = 0; row < 3; ++row) {
            const float* r = pose.rotation;
            to[row] = r[row] * from[0] + r[3 + row] * from[1] + r[6 + row] * from[2] +
                      pose.translation[row];
        }
    };
    const float point[3] = {0.1f, -0.2f, 0.7f};
    float moved[3];
    float returned[3];
    apply(there, point, moved);
    apply(back, moved, returned);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(returned[i], point[i], 1e-5f);
    }
}

TEST_P(CameraContract, GivesTheIdentityBetweenStreamsOfOnePose) {
    const rs_extrinsics identity{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    rs_extrinsics depthToColor;
    call(rs_get_device_extrinsics, device, RS_STREAM_DEPTH, RS_STREAM_COLOR, &depthToColor);
    const auto expectPose = [&](rs_stream from, rs_stream to, const rs_extrinsics& expected) {
        rs_extrinsics pose;
        call(rs_get_device_extrinsics, device, from, to, &pose);
        EXPECT_EQ(std::memcmp(&pose, &expected, sizeof pose), 0) << from << " to " << to;
    };
    for (int stream = 0; stream < RS_STREAM_COUNT; ++stream) {
        const auto code = static_cast<rs_stream>(stream);
        expectPose(code, code, identity);
    }
    expectPose(RS_STREAM_DEPTH, RS_STREAM_COLOR_ALIGNED_TO_DEPTH, identity);
    expectPose(RS_STREAM_DEPTH, RS_STREAM_INFRARED2_ALIGNED_TO_DEPTH, identity);
    expectPose(RS_STREAM_INFRARED, RS_STREAM_DEPTH, identity);
    expectPose(RS_STREAM_POINTS, RS_STREAM_DEPTH, identity);
    expectPose(RS_STREAM_COLOR, RS_STREAM_DEPTH_ALIGNED_TO_COLOR, identity);
    expectPose(RS_STREAM_COLOR, RS_STREAM_RECTIFIED_COLOR, identity);
    expectPose(RS_STREAM_COLOR_ALIGNED_TO_DEPTH, RS_STREAM_DEPTH_ALIGNED_TO_COLOR, depthToColor);
}

TEST_P(CameraContract, AlignsDepthToColorAsDefined) {
    startBoth();
    AlignmentOracle oracle(geometry());
    for (int frame = 0; frame < 3; ++frame) {
        wait();
        const auto expected = oracle.depthToColor(depth());
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(), [](auto s) { return s != 0; }));
        const std::uint16_t* aligned = depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), aligned)) << "frame " << frame;
    }
}

TEST_P(CameraContract, AlignsColorToDepthAsDefined) {
    startBoth();
    AlignmentOracle oracle(geometry());
    for (int frame = 0; frame < 3; ++frame) {
        wait();
        const auto expected = oracle.colorToDepth(depth(), color());
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(), [](auto s) { return s != 0; }));
        const std::uint8_t* aligned = color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), aligned)) << "frame " << frame;
    }
}

TEST_P(CameraContract, KeepsOneBufferForEachAlignedStream) {
    startBoth();
    wait();
    const std::uint16_t* aligned = depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR);
    const std::uint8_t* alignedColor = color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH);
    const std::vector<std::uint16_t> before(aligned, aligned + colorPixels());
    wait();
    EXPECT_TRUE(std::equal(before.begin(), before.end(), aligned))
        << "nothing changes before the first read after a wait";
    EXPECT_EQ(depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR), aligned);
    EXPECT_EQ(color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH), alignedColor);
    EXPECT_FALSE(std::equal(before.begin(), before.end(), aligned));
}

TEST_P(CameraContract, StreamsDepthAlone) {
    enable(device, RS_STREAM_DEPTH);
    call(rs_start_source, device, RS_SOURCE_VIDEO);
    wait();
    const auto samples = copyDepth();
    EXPECT_TRUE(std::any_of(samples.begin(), samples.end(), [](auto s) { return s != 0; }));
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_COLOR), "stream COLOR is not enabled");
}

TEST_P(CameraContract, StreamsColorAlone) {
    enable(device, RS_STREAM_COLOR, GetParam().colorWidth, GetParam().colorHeight);
    call(rs_start_source, device, RS_SOURCE_VIDEO);
    wait();
    const std::uint8_t* colors = color();
    EXPECT_TRUE(std::any_of(colors, colors + colorPixels() * 3, [](auto s) { return s != 0; }));
    EXPECT_EQ(messageOf(rs_get_frame_data, device, RS_STREAM_DEPTH), "stream DEPTH is not enabled");
}

TEST_P(CameraContract, TakesAnyValueForItsOptionsAndRefusesOthers) {
    const bool hasOptions = GetParam().hasOptions;
    for (int code = 0; code < RS_OPTION_COUNT; ++code) {
        const auto option = static_cast<rs_option>(code);
        const bool known = code <= RS_OPTION_F200_DYNAMIC_FPS;
        EXPECT_EQ(call(rs_device_supports_option, device, option), known && hasOptions ? 1 : 0);
        // A camera without the options that fingers come out better with works all the same.
        const bool accepted = known && (hasOptions || code >= RS_OPTION_F200_LASER_POWER);
        for (const double value :
             {0.0, -1.0, 1e300, std::nan(""), -std::numeric_limits<double>::infinity()}) {
            EXPECT_EQ(messageOf(rs_set_device_option, device, option, value),
                      accepted ? "" : "this camera has no option " + std::to_string(code));
        }
    }
    EXPECT_EQ(std::string(call(rs_take_device_notices, device)).empty(), hasOptions);
    EXPECT_STREQ(call(rs_take_device_notices, device), "") << "each is told once";
    startBoth();
    call(rs_set_device_option, device, RS_OPTION_F200_MOTION_RANGE, 3.0);
}

TEST_P(CameraContract, TellsTheSceneOfTheCurrentFrame) {
    rs_scene_truth truth{};
    EXPECT_EQ(messageOf(rs_get_scene_truth, device, &truth), "no frame has come yet");
    startBoth();
    EXPECT_EQ(messageOf(rs_get_scene_truth, device, &truth), "no frame has come yet");
    for (unsigned long long number = 0; number < 3; ++number) {
        wait();
        call(rs_get_scene_truth, device, &truth);
        EXPECT_EQ(truth.frame, number);
    }
    EXPECT_EQ(messageOf(rs_get_scene_truth, device, static_cast<rs_scene_truth*>(nullptr)),
              "argument truth is null");
}

TEST_P(CameraContract, TakesStreamingDevicesAlongWithTheLastContext) {
    startBoth();
    wait();
    call(rs_delete_context, context);
    EXPECT_EQ(messageOf(rs_delete_context, context), "the context has been deleted already");
    GetParam().select(folder);
    context = call(rs_create_context, RS_API_VERSION);
    device = call(rs_get_device, context, 0);
    EXPECT_EQ(call(rs_is_device_streaming, device), 0);
    startBoth();
    wait();
}

std::vector<SourceCase> everySource() {
    std::vector<SourceCase> sources = {{"Scripted", selectScripted, 8, 6, 16, 10},
                                       {"Images", selectImages, 12, 10, 20, 15},
                                       {"Simulated", selectSimulated, 160, 120, 200, 150}};
#if QVR_WITH_REALSENSE2
    for (const SourceCase& source : sdkSources()) {
        sources.push_back(source);
    }
#endif
    return sources;
}

INSTANTIATE_TEST_SUITE_P(Sources, CameraContract, testing::ValuesIn(everySource()),
                         [](const auto& instance) { return std::string(instance.param.name); });

} // namespace
