#include "evaluate/Jitter.h"
#include "evaluate/frames.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using namespace evaluate_tests;
using evaluate::Jitter;
using evaluate::Tally;

class JitterOfAFinger : public testing::Test {
  protected:
    void show(const TrueFinger& where, const SeenTouch& seen) {
        jitter.frame(matcher.judge(frame({where}, {seen})));
    }

    Tally tally;
    evaluate::Matcher matcher;
    Jitter jitter{tally, 60};
};

TEST_F(JitterOfAFinger, IsTheSpreadOfTheTouchAroundItsMean) {
    for (int i = 0; i < 50; ++i) {
        show(finger(0, 10, 10), touch(0, 13, 10 + (i % 2 == 0 ? 0.5 : -0.5)));
    }
    jitter.finish();
    EXPECT_EQ(tally.jitterCount, 40u);
    EXPECT_NEAR(tally.jitter(), 0.5, 1e-12); // that it is 3 mm off is no jitter
}

TEST_F(JitterOfAFinger, LeavesOutHowTheTouchComesToRest) {
    for (int i = 0; i < 50; ++i) {
        show(finger(0, 10, 10), touch(0, i < 10 ? 20 - i : 10, 10));
    }
    jitter.finish();
    EXPECT_NEAR(tally.jitter(), 0, 1e-12);
}

TEST_F(JitterOfAFinger, DoesNotCountTheFingersOwnTremor) {
    for (int i = 0; i < 50; ++i) {
        const double x = 10 + 0.1 * std::sin(0.3 * i);
        show(finger(0, x, 10), touch(0, x + 1, 10));
    }
    jitter.finish();
    EXPECT_NEAR(tally.jitter(), 0, 1e-12);
}

TEST_F(JitterOfAFinger, IsNotMeasuredWhileItMoves) {
    for (int i = 0; i < 50; ++i) {
        show(finger(0, i, 10), touch(0, i + i % 2, 10)); // 60 mm a second
    }
    jitter.finish();
    EXPECT_EQ(tally.jitterCount, 0u);
}

TEST_F(JitterOfAFinger, StartsOverUnderAnotherNumber) {
    for (int i = 0; i < 40; ++i) {
        show(finger(0, 10, 10), touch(i < 20 ? 0 : 1, i < 20 ? 10 : 15, 10));
    }
    jitter.finish();
    EXPECT_EQ(tally.jitterCount, 20u); // ten of each
    EXPECT_NEAR(tally.jitter(), 0, 1e-12);
}

TEST_F(JitterOfAFinger, TakesMoreThanAMoment) {
    for (int i = 0; i < 14; ++i) {
        show(finger(0, 10, 10), touch(0, 10, 10));
    }
    jitter.finish();
    EXPECT_EQ(tally.jitterCount, 0u);
}

} // namespace
