#include "recording/touchDifference.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

using recording::firstDifference;
using recording::FrameInfo;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

FrameInfo frame() {
    FrameInfo frame;
    frame.touches[4] = {1, 1.5, 2.5, 3.5};
    frame.tracked[4] = {10.0F, 20.0F, 30.0F};
    frame.tracked[5] = {7.0F, 7.0F, 7.0F};
    return frame;
}

// "slot field recorded got", or "".
std::string differenceTo(const FrameInfo& got) {
    const auto found = firstDifference(frame(), got);
    return found ? std::to_string(found->slot) + " " + found->field + " " + found->recorded + " " +
                       found->got
                 : "";
}

} // namespace

TEST(TouchDifference, IsNoneBetweenTheSame) {
    EXPECT_EQ(differenceTo(frame()), "");
    FrameInfo odd = frame();
    odd.touches[4].x = notANumber;
    FrameInfo otherNan = odd;
    otherNan.touches[4].x = -notANumber;
    EXPECT_FALSE(firstDifference(odd, otherNan));
}

TEST(TouchDifference, NamesEveryField) {
    FrameInfo got = frame();
    got.touches[4].active = 0;
    EXPECT_EQ(differenceTo(got), "4 active 1 0");
    got = frame();
    got.touches[4].x = std::nextafter(1.5, 2.0);
    EXPECT_EQ(differenceTo(got), "4 x 1.5 1.5000000000000002");
    got = frame();
    got.touches[4].y = notANumber;
    EXPECT_EQ(differenceTo(got), "4 y 2.5 nan");
    got = frame();
    got.touches[4].z = 4.0;
    EXPECT_EQ(differenceTo(got), "4 z 3.5 4");
    got = frame();
    got.tracked[4].x = 11.0F;
    EXPECT_EQ(differenceTo(got), "4 column 10 11");
    got = frame();
    got.tracked[4].y = 21.0F;
    EXPECT_EQ(differenceTo(got), "4 row 20 21");
    got = frame();
    got.tracked[4].z = 31.0F;
    EXPECT_EQ(differenceTo(got), "4 depth 30 31");
}

TEST(TouchDifference, TellsMinusZeroFromZero) {
    FrameInfo zero = frame();
    zero.touches[4].x = 0.0;
    FrameInfo minus = zero;
    minus.touches[4].x = -0.0;
    EXPECT_TRUE(firstDifference(zero, minus));
}

TEST(TouchDifference, NamesTheFirstSlot) {
    FrameInfo got = frame();
    got.touches[9].active = 1;
    got.touches[2].z = 5.0;
    EXPECT_EQ(differenceTo(got), "2 z -1 5");
}

// A recording has no position of it.
TEST(TouchDifference, IgnoresWhereASlotIsTrackedThatIsNotReported) {
    FrameInfo got = frame();
    got.tracked[5] = {8.0F, 8.0F, 8.0F};
    EXPECT_EQ(differenceTo(got), "");
}
