#include "evaluate/ContactCount.h"
#include "evaluate/StrayCount.h"
#include "evaluate/frames.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using namespace evaluate_tests;
using evaluate::Tally;

// Frames are judged as they come; the tally is read at the end.
class Contacts : public testing::Test {
  protected:
    void show(const FrameRecord& record, int times = 1) {
        for (int i = 0; i < times; ++i) {
            const evaluate::JudgedFrame judged = matcher.judge(record);
            contacts.frame(judged);
            strays.frame(judged);
        }
    }

    Tally tally;
    evaluate::Matcher matcher;
    evaluate::ContactCount contacts{tally};
    evaluate::StrayCount strays{tally};
};

TEST_F(Contacts, AreDetectedOnTheFrameOfTheFirstReport) {
    show(frame({finger(0, 10, 10, false)}, {}), 3);
    show(frame({finger(0, 10, 10)}, {}), 2);
    FrameRecord seen = frame({finger(0, 10, 10)}, {});
    seen.blobs.push_back({{20, 20, 2000}, 0, 0});
    show(seen);
    show(frame({finger(0, 10, 10)}, {touch(0, 10, 10)}), 2);
    show(frame({finger(0, 10, 10, false)}, {}));
    contacts.finish();
    EXPECT_EQ(tally.touchDowns, 1u);
    EXPECT_EQ(tally.detected, 1u);
    EXPECT_EQ(tally.reportedOn, std::vector<double>{4});
    EXPECT_EQ(tally.reportedOnSinceSeen, std::vector<double>{2});
}

TEST_F(Contacts, CountFromTheFifthFrameOn) {
    show(frame({finger(0, 10, 10)}, {}), 4);
    show(frame({finger(0, 10, 10, false)}, {}));
    EXPECT_EQ(tally.touchDowns, 0u);
    show(frame({finger(0, 10, 10)}, {}), 5);
    EXPECT_EQ(tally.touchDowns, 0u); // still going
    contacts.finish();
    EXPECT_EQ(tally.touchDowns, 1u);
    EXPECT_EQ(tally.detected, 0u);
    EXPECT_EQ(tally.detectionRate(), 0);
    EXPECT_TRUE(tally.reportedOn.empty());
}

TEST_F(Contacts, EveryTouchDownIsOne) {
    for (int i = 0; i < 3; ++i) {
        show(frame({finger(0, 10, 10), finger(1, 100, 10)}, {touch(i, 10, 10)}), 6);
        show(frame({finger(0, 10, 10, false), finger(1, 100, 10, false)}, {}), 2);
    }
    contacts.finish();
    EXPECT_EQ(tally.touchDowns, 6u);
    EXPECT_EQ(tally.detected, 3u);
    EXPECT_EQ(tally.switches, 0u); // another number for another touch is no switch
}

TEST_F(Contacts, ABreakIsCountedWhenTheTouchComesBack) {
    show(frame({finger(0, 10, 10)}, {touch(0, 10, 10)}), 5);
    show(frame({finger(0, 10, 10)}, {}), 3);
    show(frame({finger(0, 10, 10)}, {touch(0, 10, 10)}), 5);
    show(frame({finger(0, 10, 10)}, {}), 3); // lifting: it does not come back
    show(frame({finger(0, 10, 10, false)}, {}));
    EXPECT_EQ(tally.broken, 1u);
    EXPECT_EQ(tally.switches, 0u);
}

TEST_F(Contacts, FingersThatSwapTheirNumbersSwitchTwice) {
    for (int i = 0; i < 20; ++i) {
        const double x = 10.0 * i;
        const int first = i < 10 ? 0 : 1;
        show(frame({finger(0, x, 0), finger(1, 190 - x, 60)},
                   {touch(first, x, 0), touch(1 - first, 190 - x, 60)}));
    }
    contacts.finish();
    EXPECT_EQ(tally.switches, 2u);
    EXPECT_EQ(tally.broken, 0u);
}

TEST_F(Contacts, ANewNumberAfterABreakIsASwitchToo) {
    show(frame({finger(0, 10, 10)}, {touch(0, 10, 10)}), 5);
    show(frame({finger(0, 10, 10)}, {}));
    show(frame({finger(0, 10, 10)}, {touch(3, 10, 10)}), 5);
    contacts.finish();
    EXPECT_EQ(tally.switches, 1u);
    EXPECT_EQ(tally.broken, 1u);
}

TEST_F(Contacts, SplitAndFalseTouchesCountOnceForAsLongAsTheyStay) {
    const auto fingers = {finger(0, 10, 10)};
    show(frame(fingers, {touch(0, 10, 10), touch(1, 10, 40), touch(2, 200, 10)}), 10);
    show(frame(fingers, {touch(0, 10, 10)}));
    show(frame(fingers, {touch(0, 10, 10), touch(2, 200, 10)}), 3);
    EXPECT_EQ(tally.splits, 1u);
    EXPECT_EQ(tally.falseTouches, 2u);
    tally.seconds = 30;
    EXPECT_DOUBLE_EQ(tally.falsePerMinute(), 4);
}

TEST(Tally, AddsUp) {
    Tally one;
    one.frames = 1;
    one.seconds = 30;
    one.touchDowns = 2;
    one.detected = 1;
    one.broken = 3;
    one.splits = 4;
    one.switches = 5;
    one.falseTouches = 6;
    one.reportedOn = {2};
    one.reportedOnSinceSeen = {3};
    one.errorBefore = {1};
    one.errorAfter = {2};
    one.errorOffPath = {3};
    one.jitterSquares = 8;
    one.jitterCount = 1;
    Tally sum;
    EXPECT_EQ(sum.detectionRate(), 1);
    EXPECT_TRUE(std::isnan(sum.jitter()));
    sum.add(one);
    sum.add(one);
    EXPECT_EQ(sum.frames, 2u);
    EXPECT_EQ(sum.seconds, 60);
    EXPECT_EQ(sum.touchDowns, 4u);
    EXPECT_DOUBLE_EQ(sum.detectionRate(), 0.5);
    EXPECT_EQ(sum.broken, 6u);
    EXPECT_EQ(sum.splits, 8u);
    EXPECT_EQ(sum.switches, 10u);
    EXPECT_DOUBLE_EQ(sum.falsePerMinute(), 12);
    EXPECT_EQ(sum.reportedOn.size(), 2u);
    EXPECT_EQ(sum.reportedOnSinceSeen.size(), 2u);
    EXPECT_EQ(sum.errorBefore, (std::vector<double>{1, 1}));
    EXPECT_EQ(sum.errorAfter, (std::vector<double>{2, 2}));
    EXPECT_EQ(sum.errorOffPath, (std::vector<double>{3, 3}));
    EXPECT_DOUBLE_EQ(sum.jitter(), std::sqrt(8.0));
}

} // namespace
