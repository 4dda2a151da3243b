// A simulated camera that breaks as ordered, on a clock that the test moves.
#include "realsense/simulated_scene.h"
#include "simulated/faults.h"
#include "stream_device.h"
#include "support/ManualClock.h"
#include "support/calls.h"

#include <chrono>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using camera::simulated::FaultCourse;
using camera::simulated::FaultKind;
using camera_test::ManualClock;
using simulated_tests::options;
using testing::HasSubstr;

namespace {

class SimulatedFaults : public testing::Test {
  protected:
    void order(const std::string& keys) {
        course = std::make_shared<FaultCourse>(options(keys), clock);
    }

    // A camera that is opened and started now; null when there is none.
    std::unique_ptr<camera::StreamDevice> open(const std::string& keys = "pace=off") {
        auto source =
            camera::simulated::underFaults(camera::makeSimulatedSource(options(keys)), course);
        if (!source)
            return nullptr;
        auto device = std::make_unique<camera::StreamDevice>(std::move(source), clock);
        device->enable(RS_STREAM_DEPTH, 64, 48, RS_FORMAT_ANY, 0);
        device->enable(RS_STREAM_COLOR, 80, 60, RS_FORMAT_ANY, 0);
        device->start(RS_SOURCE_VIDEO);
        return device;
    }

    static void expectFrames(camera::StreamDevice& device, int count) {
        for (int i = 0; i < count; ++i)
            EXPECT_NO_THROW(device.waitForFrames()) << i;
    }

    static std::string problem(camera::StreamDevice& device) {
        try {
            device.waitForFrames();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    ManualClock clock;
    std::shared_ptr<FaultCourse> course;
};

constexpr const char* disconnected = "the camera has been disconnected";

} // namespace

TEST_F(SimulatedFaults, VanishingTakesTheDeviceForGoodAndTheCameraForAWhile) {
    order("fault=vanish@3,lasting=2");
    const auto device = open();
    expectFrames(*device, 3);
    EXPECT_EQ(problem(*device), disconnected);
    EXPECT_EQ(open(), nullptr);
    clock.advance(1999ms);
    EXPECT_EQ(open(), nullptr);
    clock.advance(1ms);
    const auto next = open();
    ASSERT_NE(next, nullptr);
    expectFrames(*next, 100);
    EXPECT_EQ(problem(*device), disconnected);
}

TEST_F(SimulatedFaults, AStalledCameraKeepsAWaitToTheLibrarysLimit) {
    for (const std::string pace : {"pace=off", "fps=30"}) {
        order("fault=stall@2,lasting=7");
        const auto device = open(pace);
        expectFrames(*device, 2);
        const auto start = clock.time;
        EXPECT_EQ(problem(*device), "no frame came within 5 seconds");
        EXPECT_NEAR(std::chrono::duration<double>(clock.time - start).count(), 5.0, 0.05);
        expectFrames(*device, 1);
        EXPECT_NEAR(std::chrono::duration<double>(clock.time - start).count(), 7.0, 0.05);
        expectFrames(*device, 20);
    }
}

TEST_F(SimulatedFaults, ACameraThatShrinksIsFoundAtHalfItsSizeForAWhile) {
    order("fault=shrink@1,lasting=3");
    const auto whole = open();
    EXPECT_EQ(whole->intrinsics(RS_STREAM_DEPTH).width, 64);
    expectFrames(*whole, 1);
    EXPECT_EQ(problem(*whole), disconnected);
    const auto small = open();
    EXPECT_EQ(small->intrinsics(RS_STREAM_DEPTH).width, 32);
    EXPECT_EQ(small->intrinsics(RS_STREAM_DEPTH).height, 24);
    EXPECT_EQ(small->intrinsics(RS_STREAM_COLOR).width, 40);
    EXPECT_EQ(small->intrinsics(RS_STREAM_COLOR).height, 30);
    expectFrames(*small, 50);
    clock.advance(3s);
    EXPECT_EQ(problem(*small), disconnected);
    const auto again = open();
    EXPECT_EQ(again->intrinsics(RS_STREAM_DEPTH).width, 64);
    EXPECT_EQ(again->intrinsics(RS_STREAM_COLOR).height, 60);
    expectFrames(*again, 50);
}

TEST_F(SimulatedFaults, AFailingCameraWorksAgainByItself) {
    order("fault=fail@1,lasting=2");
    const auto device = open();
    expectFrames(*device, 1);
    EXPECT_EQ(problem(*device), "the frame could not be read");
    clock.advance(1999ms);
    EXPECT_EQ(problem(*device), "the frame could not be read");
    EXPECT_NE(open(), nullptr);
    clock.advance(1ms);
    expectFrames(*device, 50);
}

TEST_F(SimulatedFaults, WithoutALengthMeetOneFrame) {
    order("fault=fail@4,lasting=0");
    const auto device = open();
    expectFrames(*device, 4);
    EXPECT_NE(problem(*device), "");
    expectFrames(*device, 50);
}

TEST_F(SimulatedFaults, FollowEachOtherByTheFramesOfAllDevices) {
    order("fault=fail@2+vanish@4+stall@7,lasting=1");
    const auto first = open();
    expectFrames(*first, 2);
    EXPECT_EQ(problem(*first), "the frame could not be read");
    clock.advance(1s);
    expectFrames(*first, 2);
    EXPECT_EQ(problem(*first), disconnected);
    clock.advance(1s);
    const auto second = open();
    expectFrames(*second, 3);
    const auto start = clock.time;
    expectFrames(*second, 1);
    EXPECT_GE(clock.time - start, 1s);
    expectFrames(*second, 50);
}

TEST_F(SimulatedFaults, LeaveTheOtherPicturesAsTheyAre) {
    order("fault=fail@1000");
    const auto faulty = open();
    order("");
    EXPECT_TRUE(course->isFree());
    const auto plain = open();
    for (int i = 0; i < 5; ++i) {
        faulty->waitForFrames();
        plain->waitForFrames();
        EXPECT_EQ(std::memcmp(faulty->frameData(RS_STREAM_DEPTH), plain->frameData(RS_STREAM_DEPTH),
                              64 * 48 * 2),
                  0);
    }
}

TEST_F(SimulatedFaults, AreRefusedWhenTheyAreNone) {
    const auto refused = [](const std::string& keys) {
        try {
            camera::makeSimulatedSource(options(keys));
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    for (const char* fault :
         {"", "vanish", "vanish@", "vanish@-1", "vanish@1x", "explode@3", "@3", "vanish@3+",
          "+vanish@3", "vanish@3+fail@3", "vanish@4+fail@3", "vanish@99999999999999999999"})
        EXPECT_EQ(refused("fault=" + std::string(fault)),
                  "simulated: fault=" + std::string(fault) +
                      " is none; accepted: vanish@FRAME, stall@FRAME, shrink@FRAME, fail@FRAME, "
                      "several joined by + with growing frames");
    EXPECT_EQ(refused("lasting=2"), "simulated: lasting belongs to fault");
    EXPECT_THAT(refused("fault=fail@1,lasting=-1"), HasSubstr("lasting"));
    EXPECT_EQ(refused("fault=fail@1+stall@2,lasting=0.5"), "");
}

// Through the interface that programs use, in real time.
TEST(SimulatedFaultsOfTheLibrary, HideTheDeviceFromNewContextsForAWhile) {
    using camera_test::call;
    call(rs_select_camera_source,
         "simulated:pace=off,depth=32x32,color=32x32,fault=vanish@1,lasting=0.3");
    rs_context* context = call(rs_create_context, RS_API_VERSION);
    rs_device* const device = call(rs_get_device, context, 0);
    camera_test::enable(device, RS_STREAM_DEPTH);
    call(rs_start_source, device, RS_SOURCE_VIDEO);
    call(rs_wait_for_frames, device);
    EXPECT_EQ(camera_test::messageOf(rs_wait_for_frames, device), disconnected);
    call(rs_delete_context, context);

    bool wasAway = false;
    int count = 0;
    for (const auto end = std::chrono::steady_clock::now() + 60s;
         count == 0 && std::chrono::steady_clock::now() < end;) {
        context = call(rs_create_context, RS_API_VERSION);
        count = call(rs_get_device_count, context);
        call(rs_delete_context, context);
        wasAway = wasAway || count == 0;
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_TRUE(wasAway);
    EXPECT_EQ(count, 1);
    call(rs_select_camera_source, nullptr);
}
