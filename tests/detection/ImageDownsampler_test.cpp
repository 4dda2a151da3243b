#include "detection/ImageDownsampler.h"

#include <cfenv>
#include <limits>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace {

using QVR::ImageDownsampler;

std::vector<int> convert(ImageDownsampler& downsampler, int x, int y) {
    downsampler.convertTargetPixelToSourcePixel(x, y);
    return {x, y};
}

std::vector<unsigned short> ramp(std::size_t pixels) {
    std::vector<unsigned short> image(pixels);
    std::iota(image.begin(), image.end(), static_cast<unsigned short>(0));
    return image;
}

using Pixel = std::vector<int>;

TEST(ImageDownsampler, EqualSizesGiveTheIdentityMap) {
    ImageDownsampler downsampler(7, 5, 7, 5);
    ASSERT_EQ(downsampler.targetPixelCount, 35U);
    for (int i = 0; i < 35; ++i) {
        EXPECT_EQ(downsampler.sourceIndexMap[static_cast<std::size_t>(i)], i);
    }
}

TEST(ImageDownsampler, KeepsItsSizes) {
    ImageDownsampler downsampler(640, 480, 320, 120);
    EXPECT_EQ(downsampler.sourceWidth, 640U);
    EXPECT_EQ(downsampler.sourceHeight, 480U);
    EXPECT_EQ(downsampler.targetWidth, 320U);
    EXPECT_EQ(downsampler.targetHeight, 120U);
    EXPECT_EQ(downsampler.targetPixelCount, 38400U);
}

TEST(ImageDownsampler, HalvesAVgaImage) {
    ImageDownsampler downsampler(640, 480, 320, 240);
    EXPECT_EQ(convert(downsampler, 0, 0), (Pixel{0, 0}));
    EXPECT_EQ(convert(downsampler, 1, 0), (Pixel{2, 0}));
    EXPECT_EQ(convert(downsampler, 319, 239), (Pixel{638, 478}));
    EXPECT_EQ(downsampler.sourceIndexMap[1], 2);
    EXPECT_EQ(downsampler.sourceIndexMap[320], 1280);
    EXPECT_EQ(downsampler.sourceIndexMap[76799], 478 * 640 + 638);
}

TEST(ImageDownsampler, RoundsHalvesToEven) {
    ImageDownsampler downsampler(5, 5, 2, 2);
    EXPECT_EQ(convert(downsampler, 1, 1), (Pixel{2, 2})); // 2.5
    ImageDownsampler larger(7, 7, 2, 2);
    EXPECT_EQ(convert(larger, 1, 1), (Pixel{4, 4})); // 3.5
}

TEST(ImageDownsampler, FollowsTheRoundingMode) {
    ImageDownsampler downsampler(5, 9, 2, 4);
    const int before = std::fegetround();
    std::fesetround(FE_UPWARD);
    const Pixel up = convert(downsampler, 1, 1); // 2.5 and 2.25
    std::fesetround(FE_DOWNWARD);
    const Pixel down = convert(downsampler, 1, 3); // 2.5 and 6.75
    std::fesetround(before);
    EXPECT_EQ(up, (Pixel{3, 3}));
    EXPECT_EQ(down, (Pixel{2, 6}));
}

TEST(ImageDownsampler, ComputesInSinglePrecision) {
    // 16777217 is no single-precision number: it counts as 16777216.
    ImageDownsampler downsampler(30000000, 1, 30000000, 1);
    EXPECT_EQ(convert(downsampler, 16777217, 0), (Pixel{16777216, 0}));
}

TEST(ImageDownsampler, DividesBeforeItMultiplies) {
    // 49 / 192 in single precision is a little more than it ought to be, which takes 122.5 up;
    // multiplied first, or in double precision, it would go to the even 122.
    ImageDownsampler downsampler(480, 480, 192, 192);
    EXPECT_EQ(convert(downsampler, 49, 49), (Pixel{123, 123}));
}

TEST(ImageDownsampler, RepeatsPixelsAndHoldsTheLastColumnWhenEnlarging) {
    ImageDownsampler downsampler(3, 2, 8, 2);
    const std::vector<unsigned short> source = ramp(6);
    const unsigned short* image = downsampler.downSample16bitImage(source.data());
    // 3/8 of the column, rounded: 0 .375 .75 1.125 1.5 1.875 2.25 2.625
    EXPECT_EQ(std::vector<unsigned short>(image, image + 16),
              (std::vector<unsigned short>{0, 0, 1, 1, 2, 2, 2, 2, 3, 3, 4, 4, 5, 5, 5, 5}));
    EXPECT_EQ(convert(downsampler, 7, 1), (Pixel{2, 1}));
}

TEST(ImageDownsampler, HoldsWhatLiesBeyondTheImageAtItsLastPixel) {
    ImageDownsampler downsampler(640, 480, 320, 240);
    EXPECT_EQ(convert(downsampler, 320, 240), (Pixel{639, 479}));
    EXPECT_EQ(convert(downsampler, 5000, 5000), (Pixel{639, 479}));
    EXPECT_EQ(convert(downsampler, 1 << 30, 0), (Pixel{639, 0}));
}

TEST(ImageDownsampler, ComparesTheLow32BitsOnly) {
    ImageDownsampler doubling(640, 480, 320, 240); // 2^31 - 1 doubled rounds to 2^32
    EXPECT_EQ(convert(doubling, std::numeric_limits<int>::max(), 0), (Pixel{0, 0}));
    ImageDownsampler wrapping(65536, 65536, 1, 1);
    EXPECT_EQ(convert(wrapping, 65536, 65537), (Pixel{0, 65535}));
    ImageDownsampler widest(4294967295U, 4294967295U, 1, 1);
    const int most = std::numeric_limits<int>::max(); // 2^63 in all: no 64-bit integer
    EXPECT_EQ(convert(widest, most, 0), (Pixel{0, 0}));
}

TEST(ImageDownsampler, TakesNegativeCoordinatesAsZero) {
    ImageDownsampler downsampler(640, 480, 320, 240);
    EXPECT_EQ(convert(downsampler, -1, 10), (Pixel{0, 20}));
    EXPECT_EQ(convert(downsampler, 10, std::numeric_limits<int>::min()), (Pixel{20, 0}));
}

TEST(ImageDownsampler, CopiesOnePixelPerTargetPixel) {
    ImageDownsampler downsampler(4, 4, 2, 2);
    const std::vector<unsigned short> source = ramp(16);
    const unsigned short* image = downsampler.downSample16bitImage(source.data());
    EXPECT_EQ(std::vector<unsigned short>(image, image + 4),
              (std::vector<unsigned short>{0, 2, 8, 10}));
}

TEST(ImageDownsampler, ReusesItsOutput) {
    ImageDownsampler downsampler(2, 2, 1, 1);
    const std::vector<unsigned short> first{1, 2, 3, 4};
    const std::vector<unsigned short> second{9, 8, 7, 6};
    const unsigned short* image = downsampler.downSample16bitImage(first.data());
    EXPECT_EQ(image, downsampler.output.get());
    EXPECT_EQ(image[0], 1);
    EXPECT_EQ(downsampler.downSample16bitImage(second.data()), image);
    EXPECT_EQ(image[0], 9);
}

TEST(ImageDownsampler, AnyZeroSizeLeavesNoMap) {
    for (unsigned int zero = 0; zero < 4; ++zero) {
        const auto size = [zero](unsigned int which) { return which == zero ? 0U : 8U; };
        ImageDownsampler downsampler(size(0), size(1), size(2), size(3));
        const std::vector<unsigned short> source(64);
        EXPECT_EQ(downsampler.downSample16bitImage(source.data()), nullptr) << zero;
        EXPECT_EQ(downsampler.sourceIndexMap, nullptr) << zero;
        EXPECT_EQ(downsampler.output, nullptr) << zero;
        EXPECT_EQ(downsampler.targetPixelCount, 0U) << zero;
    }
}

TEST(ImageDownsampler, AxisWithoutTargetPixelsConvertsToZero) {
    ImageDownsampler downsampler(640, 480, 320, 0);
    EXPECT_EQ(convert(downsampler, 5, 7), (Pixel{10, 0}));
    ImageDownsampler other(640, 480, 0, 240);
    EXPECT_EQ(convert(other, 5, 7), (Pixel{0, 14}));
}

TEST(ImageDownsampler, AxisWithoutSourcePixelsHasNoLastPixel) {
    ImageDownsampler downsampler(0, 480, 320, 240);
    EXPECT_EQ(convert(downsampler, 5, 7), (Pixel{-1, 14}));
}

TEST(ImageDownsampler, ImagesBeyondSigned32BitIndicesLeaveNoMap) {
    const std::vector<unsigned short> source(1);
    ImageDownsampler wrappingTarget(8, 8, 65536, 65536);
    EXPECT_EQ(wrappingTarget.downSample16bitImage(source.data()), nullptr);
    ImageDownsampler largeSource(65536, 32768, 4, 4);
    EXPECT_EQ(largeSource.downSample16bitImage(source.data()), nullptr);
    EXPECT_EQ(convert(largeSource, 2, 2), (Pixel{32768, 16384}));
}

} // namespace
