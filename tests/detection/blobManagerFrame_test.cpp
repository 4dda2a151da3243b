// Marking: the flatness test, the depth cut and its memory from frame to frame.
#include "detection/blobManager.h"
#include "literalDetection.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

namespace {

using literal::Image;
using QVR::blobManager;

class BlobManagerFrame : public ::testing::Test {
  protected:
    void size(unsigned int width, unsigned int height) {
        manager.setConfig(8000.0f, width, height);
    }

    void process(const Image& image) { manager.processFrame(image.data()); }

    std::uint8_t mark(std::uint32_t x, std::uint32_t y) const {
        return manager.mask[std::size_t{y} * manager.width + x];
    }

    std::size_t marked() const {
        return manager.mask.size() -
               static_cast<std::size_t>(std::count(manager.mask.begin(), manager.mask.end(), 0));
    }

    blobManager manager;
};

// One pixel in range at the centre of a 17 x 17 image. Its neighbours at distances 4 and 8 are
// within the flatness threshold of it but nearer than the near limit, so they have no mark.
class SinglePixel : public BlobManagerFrame {
  protected:
    static constexpr std::uint16_t centerDepth = 900;

    SinglePixel() {
        size(17, 17);
        manager.nearNoiseCutoff = 890;
    }

    static Image withNeighbours(int count) {
        Image image(17, 17);
        image.at(8, 8) = centerDepth;
        for (const int radius : {4, 8}) {
            for (int down = -1; down <= 1; ++down) {
                for (int right = -1; right <= 1; ++right) {
                    if ((down != 0 || right != 0) && count > 0) {
                        image.at(8 + right * radius, 8 + down * radius) = 880;
                        --count;
                    }
                }
            }
        }
        return image;
    }
};

TEST_F(BlobManagerFrame, EveryStepDoesNothingBeforeTheSizeIsKnown) {
    manager.cutoffDepth = 77;
    manager.processFrame(nullptr);
    manager.extractBlobs(nullptr);
    manager.updateTouches(nullptr);
    manager.processBlobLine(0, 20, 0);
    EXPECT_EQ(manager.check8PointSame(nullptr, 0, 0, 4, 27), 0U);
    EXPECT_EQ(manager.cutoffDepth, 77);
    EXPECT_TRUE(manager.mask.empty());
    for (const QVR::cImageBlob& blob : manager.blobs) {
        EXPECT_FALSE(blob.valid);
    }
}

TEST_F(BlobManagerFrame, OutOfRangeFrameClearsTheMaskAndKeepsTheCut) {
    size(20, 10);
    process(Image(20, 10, 1000));
    ASSERT_EQ(marked(), 200U);
    ASSERT_EQ(manager.cutoffDepth, 1162);
    for (const int depth : {0, 600, 2400, 65535}) {
        process(Image(20, 10, static_cast<std::uint16_t>(depth)));
        EXPECT_EQ(marked(), 0U) << depth;
        EXPECT_EQ(manager.cutoffDepth, 1162) << depth;
    }
}

TEST_F(BlobManagerFrame, LimitsThemselvesAreOutOfRange) {
    size(20, 10);
    process(Image(20, 10, 601));
    EXPECT_EQ(marked(), 200U);
    EXPECT_EQ(manager.cutoffDepth, 600 + 1 + 199); // band 200 - 170 / 1800
    process(Image(20, 10, 2399));
    EXPECT_EQ(marked(), 200U);
    EXPECT_EQ(manager.cutoffDepth, 2399 + 30);
}

TEST_F(BlobManagerFrame, FlatPlaneIsMarkedBySixteenNeighboursAndCutAboveItsBand) {
    size(64, 48);
    process(Image(64, 48, 1000));
    EXPECT_EQ(manager.cutoffDepth, 1162);
    EXPECT_EQ(std::count(manager.mask.begin(), manager.mask.end(), 16), 64 * 48);
}

TEST_F(BlobManagerFrame, BandNarrowsWithTheDistanceOfTheNearestFlatDepth) {
    size(30, 30);
    manager.maxDiffNear = 100;
    manager.maxDiffFar = 300; // may widen as well
    process(Image(30, 30, 1500));
    EXPECT_EQ(manager.cutoffDepth, 1500 + 200);
}

TEST_F(BlobManagerFrame, EqualBandsAreThatBandAtEveryDepth) {
    size(1, 1);
    manager.maxDiffNear = manager.maxDiffFar = 10;
    for (int depth = 601; depth < 2400; ++depth) {
        process(Image(1, 1, static_cast<std::uint16_t>(depth)));
        ASSERT_EQ(manager.cutoffDepth, depth + 10);
    }
}

TEST_F(BlobManagerFrame, NearestFlatSurfaceSetsTheCut) {
    size(60, 30);
    Image image(60, 30, 2000);
    for (std::uint32_t y = 0; y < 30; ++y) {
        for (std::uint32_t x = 0; x < 20; ++x) {
            image.at(x, y) = 1000;
        }
    }
    process(image);
    EXPECT_EQ(manager.cutoffDepth, 1162);
    EXPECT_EQ(marked(), 600U);
    EXPECT_EQ(mark(0, 0), 16);
    EXPECT_EQ(mark(40, 15), 0);
}

TEST_F(BlobManagerFrame, PixelsAtTheCutStay) {
    size(90, 30);
    Image image(90, 30, 1000);
    for (std::uint32_t y = 0; y < 30; ++y) {
        for (std::uint32_t x = 30; x < 90; ++x) {
            image.at(x, y) = x < 60 ? 1162 : 1163;
        }
    }
    process(image);
    ASSERT_EQ(manager.cutoffDepth, 1162);
    EXPECT_EQ(mark(10, 15), 16);
    EXPECT_GT(mark(45, 15), 0);
    EXPECT_EQ(mark(75, 15), 0);
}

TEST_F(BlobManagerFrame, IsolatedPixelHasNoMarkButIsInRange) {
    size(21, 21);
    Image image(21, 21);
    image.at(10, 10) = 1000;
    process(image);
    EXPECT_EQ(marked(), 0U);
    EXPECT_EQ(manager.cutoffDepth, 200); // the last cut of 0 and the near band
}

TEST_F(SinglePixel, MarkCountsNeighboursAtTheRadiusAndAtTwiceTheRadius) {
    manager.cutoffDepth = 1000;
    for (int count = 0; count <= 16; ++count) {
        process(withNeighbours(count));
        EXPECT_EQ(mark(8, 8), count);
        EXPECT_EQ(marked(), count == 0 ? 0U : 1U);
    }
}

TEST_F(SinglePixel, ElevenSameNeighboursMakeAPixelFlat) {
    manager.cutoffDepth = 2000;
    process(withNeighbours(10));
    // Nothing flat: the cut moves on from 2000; t = 1110 / 1510, band 200 - 124.97
    EXPECT_EQ(manager.cutoffDepth, 2075);
    process(withNeighbours(11));
    EXPECT_EQ(manager.cutoffDepth, 900 + 198); // t = 10 / 1510, band 200 - 1.13
}

TEST_F(SinglePixel, CutGrowsByABandForEveryFrameWithoutAFlatPixel) {
    const Image image = withNeighbours(10);
    std::vector<int> cuts;
    std::vector<int> marks;
    for (int frame = 0; frame < 6; ++frame) {
        process(image);
        cuts.push_back(manager.cutoffDepth);
        marks.push_back(mark(8, 8));
    }
    EXPECT_EQ(cuts, (std::vector<int>{200, 400, 600, 800, 1000, 1187}));
    EXPECT_EQ(marks, (std::vector<int>{0, 0, 0, 0, 10, 10}));
}

TEST_F(BlobManagerFrame, NearestFlatDepthIsHeldAt64000) {
    size(20, 20);
    manager.farLimit = 65535;
    manager.maxDiffNear = 100;
    manager.maxDiffFar = 100;
    process(Image(20, 20, 64050));
    EXPECT_EQ(manager.cutoffDepth, 64100);
    EXPECT_EQ(marked(), 400U);
}

TEST_F(BlobManagerFrame, WithAFarLimitBeyond64000AFrameWithoutFlatPixelsStartsThere) {
    size(21, 21);
    manager.farLimit = 65000;
    manager.maxDiffNear = manager.maxDiffFar = 10;
    manager.cutoffDepth = 5;
    Image image(21, 21);
    image.at(10, 10) = 1000;
    process(image);
    EXPECT_EQ(manager.cutoffDepth, 64010);
}

TEST_F(BlobManagerFrame, WithAFarLimitOf64000AFrameWithoutFlatPixelsStartsThereToo) {
    size(21, 21);
    manager.farLimit = 64000;
    manager.maxDiffNear = manager.maxDiffFar = 10;
    manager.cutoffDepth = 5;
    Image image(21, 21);
    image.at(10, 10) = 1000;
    process(image);
    EXPECT_EQ(manager.cutoffDepth, 64010);
    manager.farLimit = 63999;
    manager.cutoffDepth = 5;
    process(image);
    EXPECT_EQ(manager.cutoffDepth, 15);
}

TEST_F(BlobManagerFrame, CutWrapsAt16Bits) {
    size(20, 20);
    manager.farLimit = 65535;
    manager.maxDiffNear = 2000;
    manager.maxDiffFar = 2000;
    process(Image(20, 20, 64000));
    EXPECT_EQ(manager.cutoffDepth, 66000 - 65536);
    EXPECT_EQ(marked(), 0U);
}

TEST_F(BlobManagerFrame, CrossedOrEqualLimitsLeaveNothingInRange) {
    size(20, 20);
    manager.cutoffDepth = 9;
    manager.nearNoiseCutoff = 2400;
    manager.farLimit = 600;
    process(Image(20, 20, 1000));
    EXPECT_EQ(marked(), 0U);
    manager.nearNoiseCutoff = manager.farLimit = 1000;
    process(Image(20, 20, 1000));
    EXPECT_EQ(marked(), 0U);
    EXPECT_EQ(manager.cutoffDepth, 9);
}

TEST_F(BlobManagerFrame, DifferenceMustStayBelowTheThreshold) {
    size(9, 9);
    for (const int difference : {-27, -26, 26, 27}) {
        Image image(9, 9, static_cast<std::uint16_t>(1000 + difference));
        image.at(4, 4) = 1000;
        const unsigned int expected = std::abs(difference) < 27 ? 8 : 0;
        EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 4, 27), expected) << difference;
    }
}

TEST_F(BlobManagerFrame, ThresholdOfZeroFindsNothingSameAndTheLargestAlmostAll) {
    size(9, 9);
    Image image(9, 9, 0);
    EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 2, 0), 0U);
    image.at(4, 4) = 65534;
    EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 2, 65535), 8U);
    image.at(4, 4) = 65535;
    EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 2, 65535), 0U);
}

TEST_F(BlobManagerFrame, EachOfTheEightPointsCountsOnce) {
    size(9, 9);
    for (int down = -1; down <= 1; ++down) {
        for (int right = -1; right <= 1; ++right) {
            Image image(9, 9, 1000);
            image.at(4 + 3 * right, 4 + 3 * down) = 5000;
            const unsigned int expected = down == 0 && right == 0 ? 0 : 7;
            EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 3, 27), expected);
        }
    }
}

TEST_F(BlobManagerFrame, NeighboursAreHeldAtTheBorder) {
    size(9, 7);
    Image image(9, 7, 5000);
    image.at(0, 0) = 1000;
    image.at(3, 0) = 1000;
    // From the corner: left, above and above-left are the corner itself; right and above-right
    // are column 3.
    EXPECT_EQ(manager.check8PointSame(image.data(), 0, 0, 3, 27), 5U);
    // From column 7 the right neighbours are held at column 8.
    image.at(8, 0) = 1000;
    image.at(7, 0) = 1000;
    EXPECT_EQ(manager.check8PointSame(image.data(), 7, 0, 4, 27), 5U);
    // From row 4 the row below is held at row 6.
    image.at(4, 4) = 1000;
    image.at(4, 6) = 1000;
    EXPECT_EQ(manager.check8PointSame(image.data(), 4, 4, 3, 27), 1U);
}

TEST_F(BlobManagerFrame, RadiusOfZeroComparesThePixelWithItself) {
    size(5, 5);
    const Image image(5, 5, 1000);
    EXPECT_EQ(manager.check8PointSame(image.data(), 2, 2, 0, 1), 8U);
    EXPECT_EQ(manager.check8PointSame(image.data(), 2, 2, 0, 0), 0U);
}

TEST_F(BlobManagerFrame, RadiusBeyondTheImageIsHeldAtEverySide) {
    Image image(9, 7, 5000);
    for (const auto& [x, y] : {std::pair{0, 0}, {8, 0}, {0, 6}, {8, 6}}) {
        image.at(x, y) = 1000;
    }
    image.at(4, 3) = 1000;
    size(9, 7);
    for (const unsigned int radius : {9U, 1000U, 0x7fffffffU, 0x80000000U, 0x80000001U,
                                      std::numeric_limits<unsigned int>::max()}) {
        EXPECT_EQ(manager.check8PointSame(image.data(), 4, 3, radius, 27), 4U) << radius;
        manager.flatnessRadius = radius;
        process(image);
        manager.cutoffDepth = 2000;
        process(image);
        EXPECT_EQ(mark(4, 3), 8) << radius;
    }
}

TEST_F(BlobManagerFrame, PixelOutsideTheImageHasNoSameNeighbour) {
    size(9, 7);
    const Image image(9, 7, 1000);
    EXPECT_EQ(manager.check8PointSame(image.data(), 8, 6, 1, 27), 8U);
    EXPECT_EQ(manager.check8PointSame(image.data(), 9, 6, 1, 27), 0U);
    EXPECT_EQ(manager.check8PointSame(image.data(), 8, 7, 1, 27), 0U);
    EXPECT_EQ(manager.check8PointSame(image.data(), 0xffffffffU, 0, 1, 27), 0U);
}

TEST_F(BlobManagerFrame, ArrayPositionIsRowMajor) {
    size(640, 480);
    EXPECT_EQ(manager.arrPos(0, 0), 0U);
    EXPECT_EQ(manager.arrPos(3, 2), 1283U);
    EXPECT_EQ(manager.arrPos(639, 479), 307199U);
}

TEST_F(BlobManagerFrame, SizeThatNoLongerFitsTheMaskDoesNothing) {
    size(20, 10);
    manager.width = 40;
    const Image image(20, 10, 1000);
    process(image);
    manager.extractBlobs(image.data());
    EXPECT_EQ(marked(), 0U);
    EXPECT_EQ(manager.cutoffDepth, 0);
}

} // namespace
