// The soak's judge must be one who can find guilt.
#include "system/soak/Verdict.h"

#include <stdexcept>

#include <gtest/gtest.h>

using soak::FrameMark;
using soak::Judge;
using soak::Verdict;

namespace {

const std::vector<FrameMark> camera = {{10, 1}, {11, 2}, {12, 3}, {12, 4}, {13, 5}};
constexpr FrameMark blank{7, 0};

Verdict verdictOn(const soak::Visit& visit) {
    Judge judge(camera, blank);
    judge.judge(visit);
    return judge.verdict();
}

} // namespace

TEST(SoakVerdict, LetsAClientMissFrames) {
    const Verdict verdict = verdictOn({{11, 2}, {12, 4}, {13, 5}});
    EXPECT_TRUE(verdict.isFine());
    EXPECT_EQ(verdict.good, 3U);
}

TEST(SoakVerdict, StartsAnewWithEachVisit) {
    Judge judge(camera, blank);
    judge.judge({{13, 5}});
    judge.judge({{10, 1}, {11, 2}});
    EXPECT_TRUE(judge.verdict().isFine());
    EXPECT_EQ(judge.verdict().good, 3U);
}

TEST(SoakVerdict, FindsImagesThatTheCameraNeverSaw) {
    const Verdict verdict = verdictOn({{10, 1}, {11, 99}, {12, 3}});
    EXPECT_EQ(verdict.torn, 1U);
    EXPECT_EQ(verdict.good, 2U);
    EXPECT_FALSE(verdict.isFine());
}

TEST(SoakVerdict, FindsFramesOutOfOrder) {
    EXPECT_EQ(verdictOn({{11, 2}, {10, 1}}).outOfOrder, 1U);
    EXPECT_EQ(verdictOn({{11, 2}, {11, 2}}).outOfOrder, 1U);
    EXPECT_FALSE(verdictOn({{11, 2}, {11, 2}}).isFine());
}

TEST(SoakVerdict, FindsTouchesOfAnotherFrame) {
    EXPECT_EQ(verdictOn({{10, 1}, {10, 2}}).wrongTouches, 1U);
    EXPECT_FALSE(verdictOn({{10, 2}}).isFine());
}

TEST(SoakVerdict, TellsACamerasSilenceFromAFault) {
    const Verdict verdict = verdictOn({{11, 2}, {blank.touches, 2}, {blank.touches, 2}, {12, 3}});
    EXPECT_TRUE(verdict.isFine());
    EXPECT_EQ(verdict.withoutCamera, 2U);
    EXPECT_FALSE(verdictOn({{12, 3}, {blank.touches, 1}}).isFine());
}

TEST(SoakVerdict, TakesBlankFramesBeforeTheFirstOnly) {
    const Verdict verdict = verdictOn({blank, blank, {11, 2}});
    EXPECT_TRUE(verdict.isFine());
    EXPECT_EQ(verdict.withoutCamera, 2U);
    EXPECT_EQ(verdictOn({{11, 2}, blank}).torn, 1U);
    EXPECT_EQ(verdictOn({{13, blank.images}}).torn, 1U);
}

TEST(SoakVerdict, NeedsFramesThatDiffer) {
    EXPECT_THROW(Judge({{1, 5}, {2, 5}}, blank), std::runtime_error);
}

TEST(SoakVerdict, SeesASingleBitOfAFrame) {
    std::vector<std::byte> frame(5000);
    const FrameMark whole = soak::markOf(frame);
    for (const std::size_t place : {0U, 279U, 280U, 2500U, 4999U}) {
        frame[place] = std::byte{1};
        EXPECT_NE(soak::markOf(frame), whole) << place;
        EXPECT_EQ(soak::markOf(frame).touches == whole.touches, place >= 280) << place;
        frame[place] = std::byte{0};
    }
}
