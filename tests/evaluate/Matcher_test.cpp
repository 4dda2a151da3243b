#include "evaluate/Matcher.h"
#include "evaluate/frames.h"

#include <gtest/gtest.h>

namespace {

using namespace evaluate_tests;
using evaluate::JudgedFrame;
using evaluate::Matcher;

TEST(Matcher, JoinsTouchesWithTheirFingers) {
    Matcher matcher;
    const JudgedFrame judged = matcher.judge(
        frame({finger(0, 10, 10), finger(1, 100, 10)}, {touch(4, 98, 10), touch(7, 10, 13)}));
    ASSERT_EQ(judged.matches.size(), 2u);
    EXPECT_EQ(judged.matches[0].touch.slot, 4);
    EXPECT_EQ(judged.matches[0].finger.id, 1);
    EXPECT_DOUBLE_EQ(judged.matches[0].offPath, 2);
    EXPECT_EQ(judged.matches[1].touch.slot, 7);
    EXPECT_EQ(judged.matches[1].finger.id, 0);
    EXPECT_TRUE(judged.splits.empty());
    EXPECT_TRUE(judged.strays.empty());
}

TEST(Matcher, TellsASecondTouchOfAFingerFromATouchOfNone) {
    Matcher matcher;
    const JudgedFrame judged = matcher.judge(
        frame({finger(0, 10, 10)}, {touch(0, 10, 12), touch(1, 10, 50), touch(2, 10, 50.1)}));
    ASSERT_EQ(judged.matches.size(), 1u);
    ASSERT_EQ(judged.splits.size(), 1u);
    EXPECT_EQ(judged.splits[0].slot, 1); // 40 mm away
    ASSERT_EQ(judged.strays.size(), 1u);
    EXPECT_EQ(judged.strays[0].slot, 2);
}

TEST(Matcher, AFingerThatNeverTouchedHasNoTouch) {
    Matcher matcher;
    const JudgedFrame judged = matcher.judge(frame({finger(0, 10, 10, false)}, {touch(0, 10, 10)}));
    EXPECT_TRUE(judged.matches.empty());
    EXPECT_EQ(judged.strays.size(), 1u);
    EXPECT_TRUE(judged.withBlob.empty());
}

TEST(Matcher, ATouchMayTrailAsFarAsItsFingerWentInTheLastFrames) {
    Matcher matcher;
    matcher.judge(frame({finger(0, 0, 0)}, {}));
    const JudgedFrame judged = matcher.judge(frame({finger(0, 200, 0)}, {touch(0, 100, 3)}));
    ASSERT_EQ(judged.matches.size(), 1u);
    EXPECT_DOUBLE_EQ(judged.matches[0].offPath, 3); // from the line between the two places
    EXPECT_DOUBLE_EQ(judged.matches[0].finger.display[0], 200);
}

TEST(Matcher, ATouchOutlivesItsFingerForSixFrames) {
    Matcher matcher;
    matcher.judge(frame({finger(0, 10, 10)}, {}));
    for (std::size_t i = 1; i <= Matcher::memory; ++i) {
        const JudgedFrame judged =
            matcher.judge(frame({finger(0, 300, 10, false)}, {touch(0, 10, 10)}));
        ASSERT_EQ(judged.matches.size(), 1u) << i;
        EXPECT_FALSE(judged.matches[0].finger.touching);
    }
    EXPECT_EQ(matcher.judge(frame({finger(0, 300, 10, false)}, {touch(0, 10, 10)})).strays.size(),
              1u);
}

TEST(Matcher, TheWayAcrossALiftIsNoPath) {
    Matcher matcher;
    matcher.judge(frame({finger(0, 0, 0)}, {}));
    matcher.judge(frame({finger(0, 100, 0, false)}, {}));
    const JudgedFrame judged = matcher.judge(frame({finger(0, 200, 0)}, {touch(0, 100, 0)}));
    EXPECT_EQ(judged.strays.size(), 1u);
}

TEST(Matcher, NamesTheFingersThatHaveABlob) {
    Matcher matcher;
    FrameRecord record = frame({finger(0, 10, 10), finger(1, 100, 10)}, {});
    record.blobs.push_back({{200, 60, 2000}, 0, 0}); // 40 pixels below the second finger
    EXPECT_EQ(matcher.judge(record).withBlob, std::vector<int>{1});
    record.blobs[0].measured[1] = 61;
    EXPECT_TRUE(matcher.judge(record).withBlob.empty());
}

} // namespace
