// When frames arrive at a camera's rate.
#include "frame_pacer.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

using camera::FramePacer;
using camera_test::ManualClock;
using namespace std::chrono_literals;

namespace {

constexpr auto never = camera::Clock::Time::max();

TEST(FramePacer, DeliversAtItsRate) {
    ManualClock clock;
    FramePacer pacer(clock, 30, true);
    for (std::uint64_t number = 0; number < 90; ++number) {
        EXPECT_EQ(pacer.next(never), number);
        EXPECT_NEAR(clock.seconds(), static_cast<double>(number + 1) / 30, 1e-8);
    }
    EXPECT_EQ(clock.sleeps, 90);
}

TEST(FramePacer, LosesNoTimeToTheWorkBetweenWaits) {
    ManualClock clock;
    FramePacer pacer(clock, 60, true);
    for (std::uint64_t number = 0; number < 600; ++number) {
        EXPECT_EQ(pacer.next(never), number);
        clock.advance(16ms);
    }
    EXPECT_NEAR(clock.seconds(), 10.016, 1e-6);
}

TEST(FramePacer, GivesQueuedFramesAtOnceInOrder) {
    ManualClock clock;
    FramePacer pacer(clock, 10, true);
    clock.advance(400ms);
    for (std::uint64_t number = 0; number < 4; ++number) {
        EXPECT_EQ(pacer.next(never), number);
    }
    EXPECT_EQ(clock.sleeps, 0);
    EXPECT_EQ(pacer.next(never), 4u);
    EXPECT_EQ(clock.sleeps, 1);
    EXPECT_NEAR(clock.seconds(), 0.5, 1e-9);
}

TEST(FramePacer, QueuesFourFramesAndDropsOlderOnes) {
    ManualClock clock;
    FramePacer pacer(clock, 10, true);
    EXPECT_EQ(pacer.next(never), 0u);
    clock.advance(2s);
    for (std::uint64_t number = 17; number <= 20; ++number) {
        EXPECT_EQ(pacer.next(never), number);
    }
    EXPECT_EQ(clock.sleeps, 1);
    EXPECT_EQ(pacer.next(never), 21u);
    EXPECT_EQ(clock.sleeps, 2);
}

TEST(FramePacer, KeepsItsRateForYears) {
    ManualClock clock;
    FramePacer pacer(clock, 1000, true);
    clock.advance(24h * 365 * 20);
    const std::uint64_t frames = 20ull * 365 * 24 * 3600 * 1000;
    for (std::uint64_t number = frames - 4; number <= frames; ++number) {
        EXPECT_EQ(pacer.next(never), number);
    }
    EXPECT_EQ(clock.sleeps, 1);
    EXPECT_EQ(clock.time - camera::Clock::Time{}, 24h * 365 * 20 + 1ms);
}

TEST(FramePacer, WaitsNoLongerThanTheDeadline) {
    ManualClock clock;
    FramePacer pacer(clock, 1, true);
    EXPECT_EQ(pacer.next(clock.time + 999ms), std::nullopt);
    EXPECT_NEAR(clock.seconds(), 0.999, 1e-9);
    EXPECT_EQ(pacer.next(clock.time + 1ms), 0u);
}

TEST(FramePacer, DeliversUnpacedFramesWithoutWaitingOrSkipping) {
    ManualClock clock;
    FramePacer pacer(clock, 30, false);
    EXPECT_EQ(pacer.next(clock.time), 0u);
    clock.advance(10s);
    EXPECT_EQ(pacer.next(clock.time), 1u);
    EXPECT_EQ(pacer.next(clock.time - 1ns), std::nullopt);
    EXPECT_EQ(pacer.next(clock.time), 2u);
    EXPECT_EQ(clock.sleeps, 0);
}

TEST(SteadyClock, SleepsUntilTheTimeGiven) {
    camera::Clock& clock = camera::steadyClock();
    const auto until = clock.now() + 3ms;
    clock.sleepUntil(until);
    EXPECT_GE(clock.now(), until);
}

} // namespace
