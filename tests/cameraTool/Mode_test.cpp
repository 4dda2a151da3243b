// Modes in words.
#include "cameraTool/Mode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cameraTool::textsOf;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Mode, ListsTheRatesOfASizeTogether) {
    const auto only = [](int width, int height, int fps) {
        return rs_mode_range{{width, height, fps}, {width, height, fps}};
    };
    EXPECT_THAT(textsOf({only(640, 240, 110), only(640, 480, 30), only(640, 480, 60)}),
                ElementsAre("640x240 at 110", "640x480 at 30, 60"));
}

TEST(Mode, TellsFromWhereToWhere) {
    EXPECT_THAT(textsOf({{{16, 12, 1}, {1920, 1080, 240}}, {{16, 12, 5}, {16, 12, 9}}}),
                ElementsAre("16x12 to 1920x1080 at 1 to 240", "16x12 at 5 to 9"));
    EXPECT_THAT(textsOf({}), IsEmpty());
}

} // namespace
