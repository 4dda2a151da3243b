#include "evaluate/Lag.h"
#include "evaluate/frames.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using namespace evaluate_tests;
using evaluate::Lag;

// To and fro over 200 mm.
double place(double frame, double step) {
    const double way = std::fmod(frame * step + 4000.0, 400.0);
    return way < 200.0 ? way : 400.0 - way;
}

std::optional<evaluate::LagFigures> lagOf(double step, double delay, double bias) {
    evaluate::Matcher matcher;
    Lag lag;
    for (int i = 0; i < 300; ++i) {
        lag.frame(matcher.judge(frame({finger(0, place(i, step), 50)},
                                      {touch(0, place(i - delay, step) + bias, 50 + bias)})));
    }
    return lag.figures();
}

TEST(Lag, IsTheDelayOfTheTouches) {
    for (const double step : {1.5, 8.0, 30.0}) {
        const auto figures = lagOf(step, 2.0, 0.0);
        ASSERT_TRUE(figures) << step;
        EXPECT_NEAR(figures->frames, 2.0, 0.011) << step;
        EXPECT_NEAR(figures->millimeters, 2.0 * step, 0.2 * step) << step; // turns shorten steps
    }
}

TEST(Lag, TellsPartsOfAFrame) {
    EXPECT_NEAR(lagOf(5.0, 1.26, 0.0)->frames, 1.26, 0.03);
    EXPECT_NEAR(lagOf(5.0, 0.0, 0.0)->frames, 0.0, 0.011);
}

TEST(Lag, IsNotMistakenForATouchThatIsOffByTheSameEverywhere) {
    EXPECT_NEAR(lagOf(5.0, 1.5, 3.0)->frames, 1.5, 0.1);
}

TEST(Lag, NeedsAMovingFinger) {
    EXPECT_FALSE(lagOf(0.0, 0.0, 0.0));
    EXPECT_FALSE(Lag().figures());
}

} // namespace
