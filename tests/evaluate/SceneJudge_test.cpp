#include "evaluate/SceneJudge.h"
#include "evaluate/frames.h"

#include <gtest/gtest.h>

namespace {

using namespace evaluate_tests;
using evaluate::Pinhole;
using evaluate::SceneJudge;
using evaluate::Tally;

constexpr Pinhole pinhole{400, 200, 300, 200, 0.125};

TEST(Pinhole, CarriesPixelsIntoSpace) {
    const evaluate::Point3 point = pinhole.toSpace({340, 220, 1600});
    EXPECT_DOUBLE_EQ(point[0], 20);
    EXPECT_DOUBLE_EQ(point[1], 20);
    EXPECT_DOUBLE_EQ(point[2], 200);
}

TEST(SceneJudge, MeasuresErrorsBeforeAndAfterCalibration) {
    SceneJudge judge(pinhole, 60);
    FrameRecord record = frame({finger(0, 100, 100)}, {touch(0, 103, 104)});
    record.fingers[0].measured = {300, 200, 1600};
    record.touches[0].measured = {340, 200, 1600};
    EXPECT_EQ(judge.frame(record), 0u);
    const Tally& tally = judge.finish();
    EXPECT_EQ(tally.errorBefore, std::vector<double>{20});
    EXPECT_EQ(tally.errorAfter, std::vector<double>{5});
    EXPECT_EQ(tally.errorOffPath, std::vector<double>{5});
    EXPECT_EQ(tally.frames, 1u);
    EXPECT_DOUBLE_EQ(tally.seconds, 1.0 / 60);
}

TEST(SceneJudge, ATouchBehindItsFingerIsOffByTheWayBetween) {
    SceneJudge judge(pinhole, 60);
    judge.frame(frame({finger(0, 100, 100)}, {}));
    judge.frame(frame({finger(0, 130, 100)}, {touch(0, 110, 102)}));
    const Tally& tally = judge.finish();
    ASSERT_EQ(tally.errorAfter.size(), 1u);
    EXPECT_NEAR(tally.errorAfter[0], 20.1, 0.01);
    EXPECT_DOUBLE_EQ(tally.errorOffPath[0], 2);
}

TEST(SceneJudge, ATouchOfAFingerThatHasLeftHasNoError) {
    SceneJudge judge(pinhole, 60);
    judge.frame(frame({finger(0, 100, 100)}, {}));
    EXPECT_EQ(judge.frame(frame({finger(0, 100, 100, false)}, {touch(0, 100, 100)})), 0u);
    EXPECT_TRUE(judge.finish().errorAfter.empty());
}

TEST(SceneJudge, TellsHowMuchIsWrong) {
    SceneJudge judge(pinhole, 60);
    EXPECT_EQ(judge.frame(frame({finger(0, 10, 10), finger(1, 100, 10), finger(2, 100, 200, false)},
                                {touch(0, 10, 10), touch(1, 10, 20), touch(2, 300, 300)})),
              3u);
}

} // namespace
