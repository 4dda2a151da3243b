#include "host/SurfaceExtents.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using host::Extents;
using host::SurfaceExtents;

TEST(SurfaceExtents, ReadsFourNumbers) {
    EXPECT_EQ(SurfaceExtents::parse("-10,0,340.5,212"), (Extents{-10, 0, 340.5, 212}));
}

TEST(SurfaceExtents, RefusesOtherTexts) {
    for (const char* text : {"", "1,2,3", "1,2,3,4,", "1;2;3;4", "a,b,c,d", "5,0,5,10", "0,9,5,8",
                             "0,0,nan,5", "1,2,3,4 x"}) {
        EXPECT_FALSE(SurfaceExtents::parse(text)) << text;
    }
}

TEST(SurfaceExtents, StartsFromTheDepthPicture) {
    SurfaceExtents surface;
    surface.startFrom(320, 240);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 320, 240}));
    surface.startFrom(0, 0);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 320, 240}));
}

TEST(SurfaceExtents, LearnsInRoundSteps) {
    SurfaceExtents surface;
    surface.see(100, 40);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 150, 50}));
    surface.see(149, 49);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 150, 50}));
    surface.see(300, -0.4);
    EXPECT_EQ(surface.extents(), (Extents{0, -0.5, 400, 50}));
}

TEST(SurfaceExtents, KeepsWhatItLearnedWhenTheDepthPictureIsTold) {
    SurfaceExtents surface;
    surface.see(100, 40);
    surface.startFrom(640, 480);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 150, 50}));
}

TEST(SurfaceExtents, HasRoomForASingleTouchAtTheOrigin) {
    SurfaceExtents surface;
    surface.see(0, 0);
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 1, 1}));
}

TEST(SurfaceExtents, IgnoresWhatIsNoNumber) {
    SurfaceExtents surface;
    surface.see(std::numeric_limits<double>::quiet_NaN(), 5);
    surface.see(5, std::numeric_limits<double>::infinity());
    EXPECT_EQ(surface.extents(), (Extents{0, 0, 640, 480}));
}

TEST(SurfaceExtents, StaysWhereTheUserPutIt) {
    SurfaceExtents surface;
    surface.fix({1, 2, 3, 4});
    surface.startFrom(320, 240);
    surface.see(1000, 1000);
    EXPECT_EQ(surface.extents(), (Extents{1, 2, 3, 4}));
}

} // namespace
