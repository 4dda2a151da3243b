// Waiting, pacing and frame lifetime, on a clock that the test moves.
#include "stale_memory.h"
#include "support/ManualClock.h"
#include "support/ScriptedSource.h"
#include "support/alignmentOracle.h"
#include "support/calls.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace camera_test;
using namespace std::chrono_literals;

namespace {

using Depth = std::span<std::uint16_t>;
using Color = std::span<std::uint8_t>;

void fill(Depth depth, Color color, int depthSample, int colorSample) {
    std::fill(depth.begin(), depth.end(), static_cast<std::uint16_t>(depthSample));
    std::fill(color.begin(), color.end(), static_cast<std::uint8_t>(colorSample));
}

class StreamDeviceTest : public testing::Test {
  protected:
    void start(bool depth = true, bool color = true) {
        if (depth) {
            device.enable(RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0);
        }
        if (color) {
            device.enable(RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 0);
        }
        device.start(RS_SOURCE_VIDEO);
    }
    int depthSample(rs_stream stream = RS_STREAM_DEPTH) {
        return *static_cast<const std::uint16_t*>(device.frameData(stream));
    }
    int colorSample() {
        return *static_cast<const std::uint8_t*>(device.frameData(RS_STREAM_COLOR));
    }
    std::string waitMessage() {
        try {
            device.waitForFrames();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    ManualClock clock;
    std::shared_ptr<Script> script = std::make_shared<Script>();
    camera::StreamDevice device{std::make_unique<ScriptedSource>(script), clock};
};

TEST_F(StreamDeviceTest, WaitsForEachFrameAtTheRate) {
    start();
    for (int frame = 1; frame <= 3; ++frame) {
        device.waitForFrames();
        EXPECT_NEAR(clock.seconds(), frame / 30.0, 1e-8);
    }
    EXPECT_EQ(script->rendered, (std::vector<std::uint64_t>{0, 1, 2}));
}

TEST_F(StreamDeviceTest, RendersOnlyFramesThatItHandsOut) {
    start();
    clock.advance(1s);
    device.waitForFrames();
    device.waitForFrames();
    clock.advance(1s);
    device.waitForFrames();
    EXPECT_EQ(script->rendered, (std::vector<std::uint64_t>{26, 27, 56}));
    EXPECT_EQ(device.sceneTruth().frame, 56u);
    EXPECT_EQ(device.sceneTruth().fingers[0].pixel[0], 56.0f);
}

TEST_F(StreamDeviceTest, RendersOnDemandWithoutSkippingWhenUnpaced) {
    script->paced = false;
    start();
    clock.advance(100s);
    device.waitForFrames();
    clock.advance(100s);
    device.waitForFrames();
    EXPECT_EQ(script->rendered, (std::vector<std::uint64_t>{0, 1}));
    EXPECT_EQ(clock.sleeps, 0);
}

TEST_F(StreamDeviceTest, FailsWhenNoFrameComesWithinFiveSeconds) {
    script->paint = [](std::uint64_t number, Depth depth, Color color) {
        fill(depth, color, number < 2 ? 900 : 0, 50);
    };
    start();
    device.waitForFrames();
    device.waitForFrames();
    const auto before = clock.time;
    const void* const current = device.frameData(RS_STREAM_DEPTH);
    EXPECT_EQ(waitMessage(), "no frame came within 5 seconds");
    EXPECT_EQ(clock.time - before, 5s);
    EXPECT_EQ(device.frameData(RS_STREAM_DEPTH), current) << "a time-out leaves the frame";
    EXPECT_EQ(depthSample(), 900);
    EXPECT_EQ(device.sceneTruth().frame, 1u);
    EXPECT_TRUE(device.streaming());
}

TEST_F(StreamDeviceTest, FailsAfterTheLimitThatItIsGiven) {
    script->paint = [](std::uint64_t, Depth depth, Color color) { fill(depth, color, 0, 50); };
    camera::StreamDevice impatient(std::make_unique<ScriptedSource>(script), clock, 200ms);
    impatient.enable(RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0);
    impatient.start(RS_SOURCE_VIDEO);
    const auto before = clock.time;
    try {
        impatient.waitForFrames();
        FAIL() << "no frame can come";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no frame came within 0.2 seconds");
    }
    EXPECT_EQ(clock.time - before, 200ms);
}

TEST_F(StreamDeviceTest, FailsAfterFiveSecondsOfUnpacedEmptyFrames) {
    script->paced = false;
    script->paint = [this](std::uint64_t, Depth depth, Color color) {
        fill(depth, color, 0, 0);
        clock.advance(100ms);
    };
    start();
    EXPECT_EQ(waitMessage(), "no frame came within 5 seconds");
    EXPECT_EQ(script->rendered.size(), 51u);
}

TEST_F(StreamDeviceTest, SkipsEmptyDepthPictures) {
    script->paint = [](std::uint64_t number, Depth depth, Color color) {
        fill(depth, color, number < 3 ? 0 : 700, 50);
    };
    start();
    device.waitForFrames();
    EXPECT_EQ(depthSample(), 700);
    EXPECT_EQ(device.sceneTruth().frame, 3u);
}

TEST_F(StreamDeviceTest, SkipsEmptyColorPicturesWhenColorIsAlone) {
    script->paint = [](std::uint64_t number, Depth depth, Color color) {
        EXPECT_TRUE(depth.empty()) << "nobody wants the depth";
        fill(depth, color, 0, number < 2 ? 0 : 50);
    };
    start(false, true);
    device.waitForFrames();
    EXPECT_EQ(colorSample(), 50);
    EXPECT_EQ(script->rendered.back(), 2u);
}

TEST_F(StreamDeviceTest, KeepsTheColorPictureWhenDepthAloneMoves) {
    script->paint = [](std::uint64_t number, Depth depth, Color color) {
        fill(depth, color, 500 + static_cast<int>(number), number == 1 ? 0 : 60);
    };
    start();
    device.waitForFrames();
    const void* const color = device.frameData(RS_STREAM_COLOR);
    const void* const depth = device.frameData(RS_STREAM_DEPTH);
    device.waitForFrames();
    EXPECT_EQ(device.frameData(RS_STREAM_COLOR), color);
    EXPECT_NE(device.frameData(RS_STREAM_DEPTH), depth);
    EXPECT_EQ(colorSample(), 60);
    EXPECT_EQ(depthSample(), 501);
}

TEST_F(StreamDeviceTest, KeepsTheFrameWhenASourceFails) {
    script->paint = [](std::uint64_t number, Depth depth, Color color) {
        if (number == 1) {
            throw std::runtime_error("the disk is gone");
        }
        fill(depth, color, 500 + static_cast<int>(number), 60);
    };
    start();
    device.waitForFrames();
    EXPECT_EQ(waitMessage(), "the disk is gone");
    EXPECT_EQ(depthSample(), 500);
    device.waitForFrames();
    EXPECT_EQ(depthSample(), 502);
}

TEST_F(StreamDeviceTest, AsksForAnyModeOfAStreamThatIsNotEnabled) {
    device.enable(RS_STREAM_DEPTH, 8, 6, RS_FORMAT_Z16, 30);
    device.start(RS_SOURCE_VIDEO);
    EXPECT_EQ(script->askedDepth.width, 8);
    EXPECT_EQ(script->askedDepth.height, 6);
    EXPECT_EQ(script->askedDepth.framerate, 30);
    EXPECT_EQ(script->askedColor.width, 0);
    EXPECT_EQ(script->askedColor.height, 0);
    EXPECT_EQ(script->askedColor.framerate, 30) << "both streams run at one rate";
}

TEST_F(StreamDeviceTest, SettlesAModeOnceUntilAStreamIsEnabledAnew) {
    device.enable(RS_STREAM_DEPTH, 0, 0, RS_FORMAT_ANY, 0);
    EXPECT_EQ(script->configured, 0) << "enabling only records";
    device.intrinsics(RS_STREAM_DEPTH);
    device.start(RS_SOURCE_VIDEO);
    device.stop(RS_SOURCE_VIDEO);
    device.start(RS_SOURCE_VIDEO);
    EXPECT_EQ(script->configured, 1);
    device.stop(RS_SOURCE_VIDEO);
    device.enable(RS_STREAM_COLOR, 0, 0, RS_FORMAT_ANY, 0);
    device.intrinsics(RS_STREAM_COLOR);
    EXPECT_EQ(script->configured, 2);
}

TEST_F(StreamDeviceTest, AlignsInTheModeThatIsSettledNow) {
    start();
    device.waitForFrames();
    device.frameData(RS_STREAM_DEPTH_ALIGNED_TO_COLOR);
    device.stop(RS_SOURCE_VIDEO);
    script->geometry.color.ppx += 3.0f;
    start();
    device.waitForFrames();
    const auto expected =
        AlignmentOracle(script->geometry)
            .depthToColor(static_cast<const std::uint16_t*>(device.frameData(RS_STREAM_DEPTH)));
    EXPECT_TRUE(std::equal(
        expected.begin(), expected.end(),
        static_cast<const std::uint16_t*>(device.frameData(RS_STREAM_DEPTH_ALIGNED_TO_COLOR))));
}

TEST_F(StreamDeviceTest, RefusesToAlignADistortedColorCamera) {
    script->geometry.color.model = RS_DISTORTION_FTHETA;
    script->geometry.color.coeffs[1] = 0.1f;
    start();
    device.waitForFrames();
    EXPECT_THROW(device.frameData(RS_STREAM_DEPTH_ALIGNED_TO_COLOR), std::runtime_error);
    EXPECT_NO_THROW(device.frameData(RS_STREAM_COLOR));
}

TEST_F(StreamDeviceTest, ReportsReadsOfOldFramesUnderAddressSanitizer) {
#ifdef QVR_CAMERA_ADDRESS_SANITIZER
    start();
    device.waitForFrames();
    const auto* const old = static_cast<const std::uint16_t*>(device.frameData(RS_STREAM_DEPTH));
    EXPECT_FALSE(__asan_address_is_poisoned(old));
    device.waitForFrames();
    EXPECT_TRUE(__asan_address_is_poisoned(old));
    const void* const current = device.frameData(RS_STREAM_DEPTH);
    device.stop(RS_SOURCE_VIDEO);
    EXPECT_TRUE(__asan_address_is_poisoned(current));
#else
    GTEST_SKIP() << "built without AddressSanitizer";
#endif
}

} // namespace
