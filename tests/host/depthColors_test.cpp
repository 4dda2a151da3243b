#include "host/depthColors.h"

#include <gtest/gtest.h>

namespace {

using host::DepthRange;
using programs::Color;
using programs::DepthImage;

TEST(DepthColors, LeaveBlackWhatWasNotMeasured) {
    EXPECT_EQ(host::depthColor(0, {100, 200}), Color());
    EXPECT_EQ(host::depthColor(0, {0, 0}), Color());
}

TEST(DepthColors, AreWarmNearAndColdFar) {
    const DepthRange range = {1000, 3000};
    const Color near = host::depthColor(1000, range);
    const Color far = host::depthColor(3000, range);
    EXPECT_GT(near.red, near.blue);
    EXPECT_GT(far.blue, far.red);
    EXPECT_GT(near.red + near.green + near.blue, far.red + far.green + far.blue);
}

TEST(DepthColors, EndWithTheRange) {
    const DepthRange range = {1000, 3000};
    EXPECT_EQ(host::depthColor(1, range), host::depthColor(1000, range));
    EXPECT_EQ(host::depthColor(65535, range), host::depthColor(3000, range));
    EXPECT_NE(host::depthColor(2000, range), host::depthColor(3000, range));
}

TEST(DepthColors, TellNeighbouringDepthsApart) {
    const DepthRange range = {1000, 3000};
    for (int depth = 1000; depth < 3000; depth += 50) {
        EXPECT_NE(host::depthColor(static_cast<std::uint16_t>(depth), range),
                  host::depthColor(static_cast<std::uint16_t>(depth + 50), range))
            << depth;
    }
}

TEST(DepthColors, TakeARangeOfOneDepth) {
    EXPECT_EQ(host::depthColor(500, {500, 500}), host::depthColor(1, {500, 500}));
}

TEST(DepthColors, RangeLeavesOutTheOutermostHundredth) {
    DepthImage image(100, 10);
    for (std::size_t i = 0; i < image.values.size(); ++i) {
        image.values[i] = static_cast<std::uint16_t>(5000 + i);
    }
    image.values[0] = 1;       // a stray near pixel
    image.values[999] = 65535; // and a far one
    const DepthRange range = host::usualRange(image);
    EXPECT_EQ(range, (DepthRange{5010, 5989}));
}

TEST(DepthColors, RangeCountsMeasurementsOnly) {
    DepthImage image(10, 10);
    EXPECT_EQ(host::usualRange(image), DepthRange());
    image.values[50] = 700;
    EXPECT_EQ(host::usualRange(image), (DepthRange{700, 700}));
}

} // namespace
