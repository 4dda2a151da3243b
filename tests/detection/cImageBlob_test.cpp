#include "detection/cImageBlob.h"
#include "support/LogCapture.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using QVR::cImageBlob;
using Messages = std::vector<std::string>;

cImageBlob sizedBlob(unsigned int width, unsigned int height) {
    cImageBlob blob;
    blob.setSize(width, height);
    blob.reset();
    return blob;
}

void expectEmpty(const cImageBlob& blob) {
    EXPECT_EQ(blob.minX, 65535U);
    EXPECT_EQ(blob.maxX, 0U);
    EXPECT_EQ(blob.minY, 65535U);
    EXPECT_EQ(blob.maxY, 0U);
    EXPECT_EQ(blob.sumStart, 0U);
    EXPECT_EQ(blob.sumEnd, 0U);
    EXPECT_EQ(blob.lineCount, 0U);
    EXPECT_EQ(blob.lineCenterX, 0.0f);
    EXPECT_EQ(blob.centerX, -1.0f);
    EXPECT_EQ(blob.centerY, -1.0f);
    EXPECT_EQ(blob.centerDepth, -1.0f);
    EXPECT_FALSE(blob.valid);
    EXPECT_TRUE(blob.dirty);
}

TEST(ImageBlob, StartsEmpty) {
    const cImageBlob blob;
    expectEmpty(blob);
    EXPECT_EQ(blob.width, 0U);
    EXPECT_EQ(blob.height, 0U);
    EXPECT_TRUE(blob.lineStart.empty());
    EXPECT_TRUE(blob.lineEnd.empty());
}

TEST(ImageBlob, SetSizeMakesRoomForARunInEachRow) {
    cImageBlob blob;
    blob.setSize(8, 3);
    EXPECT_EQ(blob.width, 8U);
    EXPECT_EQ(blob.height, 3U);
    EXPECT_EQ(blob.lineStart, (std::vector<std::int32_t>{-1, -1, -1}));
    EXPECT_EQ(blob.lineEnd, (std::vector<std::int32_t>{-1, -1, -1}));
}

TEST(ImageBlob, ResetEmptiesAndKeepsTheSize) {
    cImageBlob blob = sizedBlob(64, 4);
    const std::vector<unsigned short> depth(256, 500);
    blob.addLine(10, 20, 1);
    blob.addLine(10, 20, 2);
    blob.calculateCenter(depth.data(), 0, 1000, 45);
    ASSERT_FALSE(blob.dirty);
    blob.reset();
    expectEmpty(blob);
    EXPECT_EQ(blob.width, 64U);
    EXPECT_EQ(blob.height, 4U);
    EXPECT_EQ(blob.lineStart, std::vector<std::int32_t>(4, -1));
    EXPECT_EQ(blob.lineEnd, std::vector<std::int32_t>(4, -1));
}

TEST(ImageBlob, FirstRunDoesNotCountInTheXLimits) {
    cImageBlob blob = sizedBlob(64, 8);
    blob.addLine(5, 60, 3);
    EXPECT_TRUE(blob.valid);
    EXPECT_EQ(blob.minX, 65535U);
    EXPECT_EQ(blob.maxX, 0U);
    EXPECT_EQ(blob.minY, 3U);
    EXPECT_EQ(blob.maxY, 3U);
    blob.addLine(10, 20, 4);
    EXPECT_EQ(blob.minX, 10U);
    EXPECT_EQ(blob.maxX, 20U);
    blob.addLine(8, 15, 2);
    EXPECT_EQ(blob.minX, 8U);
    EXPECT_EQ(blob.maxX, 20U);
    EXPECT_EQ(blob.minY, 2U);
    EXPECT_EQ(blob.maxY, 4U);
}

TEST(ImageBlob, SecondRunInARowReplacesTheFirstButBothCount) {
    cImageBlob blob = sizedBlob(64, 8);
    blob.addLine(10, 20, 3);
    blob.addLine(30, 45, 3);
    EXPECT_EQ(blob.lineStart[3], 30);
    EXPECT_EQ(blob.lineEnd[3], 45);
    EXPECT_EQ(blob.lineCount, 2U);
    EXPECT_EQ(blob.sumStart, 40U);
    EXPECT_EQ(blob.sumEnd, 65U);
    EXPECT_EQ(blob.lineCenterX, 26.25f);
}

TEST(ImageBlob, RunCenterIsDividedInSinglePrecision) {
    cImageBlob blob = sizedBlob(8, 3);
    blob.addLine(302577037, 302577037, 0);
    blob.addLine(302577037, 302577037, 1);
    blob.addLine(302577037, 302577038, 2);
    EXPECT_EQ(blob.lineCenterX, 302577056.0f); // 302577024 when divided exactly
}

TEST(ImageBlob, AddLineMakesTheCenterDirty) {
    cImageBlob blob = sizedBlob(16, 2);
    const std::vector<unsigned short> depth(32, 500);
    blob.addLine(2, 5, 0);
    blob.calculateCenter(depth.data(), 0, 1000, 1);
    EXPECT_FALSE(blob.dirty);
    blob.addLine(2, 5, 1);
    EXPECT_TRUE(blob.dirty);
}

TEST(ImageBlob, BackwardRunIsLoggedAndStillAdded) {
    const support::LogCapture log;
    cImageBlob blob = sizedBlob(64, 8);
    blob.addLine(21, 20, 3);
    EXPECT_EQ(log.messages(), Messages{"BAD INPUT!"});
    EXPECT_TRUE(blob.valid);
    EXPECT_EQ(blob.lineStart[3], 21);
    EXPECT_EQ(blob.lineEnd[3], 20);
    EXPECT_EQ(blob.lineCount, 1U);
    blob.addLine(20, 20, 4);
    EXPECT_EQ(log.messages().size(), 1U);
}

TEST(ImageBlob, RowOutsideTheImageDoesNothing) {
    const support::LogCapture log;
    cImageBlob blob = sizedBlob(64, 8);
    blob.addLine(30, 20, 8);
    blob.addLine(10, 20, std::numeric_limits<unsigned int>::max());
    expectEmpty(blob);
    EXPECT_EQ(log.messages(), Messages{});
}

TEST(ImageBlob, LimitsAreTheLow32Bits) {
    cImageBlob blob = sizedBlob(8, 8);
    blob.minX = (std::uint64_t{1} << 32) + 7;
    blob.maxX = 0xffffffffULL;
    blob.minY = 3;
    blob.maxY = 5;
    int minX = 0;
    int maxX = 0;
    int minY = 0;
    int maxY = 0;
    blob.getLimits(minX, maxX, minY, maxY);
    EXPECT_EQ(minX, 7);
    EXPECT_EQ(maxX, -1);
    EXPECT_EQ(minY, 3);
    EXPECT_EQ(maxY, 5);
}

TEST(ImageBlob, NearerPixelsWeighMore) {
    cImageBlob blob = sizedBlob(8, 2);
    // Weights below the cutoff of 100: 1 at column 1, 3 at column 5, both in row 1.
    std::vector<unsigned short> depth(16, 100);
    depth[8 + 1] = 99;
    depth[8 + 5] = 97;
    blob.addLine(0, 7, 1);
    blob.calculateCenter(depth.data(), 0, 100, 45);
    EXPECT_TRUE(blob.valid);
    EXPECT_FALSE(blob.dirty);
    EXPECT_EQ(blob.centerX, 4.0f); // (1 + 3 * 5) / 4
    EXPECT_EQ(blob.centerY, 1.0f);
    EXPECT_EQ(blob.centerDepth, 98.0f); // (99 + 97) / 2
}

TEST(ImageBlob, CenterIsWholePixelsAndWholeDepthUnits) {
    cImageBlob blob = sizedBlob(8, 2);
    std::vector<unsigned short> depth(16, 10);
    depth[1] = 11;
    blob.addLine(0, 1, 0);
    blob.addLine(0, 1, 1);
    blob.calculateCenter(depth.data(), 0, 12, 3);
    EXPECT_EQ(blob.centerX, 0.0f);      // 3 / 7
    EXPECT_EQ(blob.centerY, 0.0f);      // 4 / 7
    EXPECT_EQ(blob.centerDepth, 10.0f); // 41 / 4
}

TEST(ImageBlob, BothEndsOfTheRunCount) {
    cImageBlob blob = sizedBlob(8, 1);
    std::vector<unsigned short> depth(8, 200);
    depth[2] = 50;
    depth[6] = 50;
    blob.addLine(2, 6, 0);
    blob.calculateCenter(depth.data(), 0, 100, 1);
    EXPECT_EQ(blob.centerX, 4.0f);
    depth[2] = 200;
    blob.calculateCenter(depth.data(), 0, 100, 1);
    EXPECT_EQ(blob.centerX, 6.0f);
}

TEST(ImageBlob, BiasScalesAllWeightsAlikeAndTheIgnoredDepthHasNoEffect) {
    std::vector<unsigned short> depth{10, 20, 30, 40, 50, 60, 70, 80};
    for (const unsigned int bias : {1U, 45U, 65537U, 4294967295U}) {
        for (const std::uint16_t ignored : std::vector<std::uint16_t>{0, 10, 65535}) {
            cImageBlob blob = sizedBlob(8, 1);
            blob.addLine(0, 7, 0);
            blob.calculateCenter(depth.data(), ignored, 90, bias);
            EXPECT_EQ(blob.centerX, 2.0f) << bias; // 840 / 360
            EXPECT_EQ(blob.centerDepth, 45.0f) << bias;
        }
    }
}

TEST(ImageBlob, BiasOfZeroMakesTheBlobInvalid) {
    cImageBlob blob = sizedBlob(8, 1);
    const std::vector<unsigned short> depth(8, 10);
    blob.addLine(0, 7, 0);
    blob.calculateCenter(depth.data(), 0, 90, 0);
    EXPECT_FALSE(blob.valid);
    EXPECT_TRUE(blob.dirty);
    EXPECT_EQ(blob.centerX, -1.0f);
}

TEST(ImageBlob, NoPixelNearerThanTheCutoffMakesTheBlobInvalid) {
    cImageBlob blob = sizedBlob(8, 1);
    const std::vector<unsigned short> depth(8, 90);
    blob.addLine(0, 7, 0);
    blob.calculateCenter(depth.data(), 0, 90, 45);
    EXPECT_FALSE(blob.valid);
    EXPECT_TRUE(blob.dirty);
}

TEST(ImageBlob, InvalidBlobHasNoCenterComputed) {
    cImageBlob blob = sizedBlob(8, 1);
    blob.calculateCenter(nullptr, 0, 90, 45);
    expectEmpty(blob);
}

TEST(ImageBlob, CrossedRowLimitsMakeTheBlobInvalid) {
    cImageBlob blob = sizedBlob(8, 4);
    const std::vector<unsigned short> depth(32, 10);
    blob.addLine(0, 7, 1);
    blob.minY = 2;
    blob.calculateCenter(depth.data(), 0, 90, 45);
    EXPECT_FALSE(blob.valid);
    EXPECT_TRUE(blob.dirty);
}

TEST(ImageBlob, RowsWithoutARunAndBackwardRunsAreSkipped) {
    const support::LogCapture quiet;
    cImageBlob blob = sizedBlob(8, 5);
    std::vector<unsigned short> depth(40, 10);
    blob.addLine(2, 2, 0);
    blob.addLine(5, 3, 2);
    blob.addLine(4, 4, 4);
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_EQ(blob.centerX, 3.0f);
    EXPECT_EQ(blob.centerY, 2.0f);
    EXPECT_EQ(blob.centerDepth, 10.0f);
}

// The pixel count has 16 bits: at 65536 pixels it is 0, one pixel more and the depth sum is
// divided by 1.
TEST(ImageBlob, PixelCountWrapsAt16Bits) {
    constexpr unsigned int width = 256;
    std::vector<unsigned short> depth(width * 257, 10);
    cImageBlob blob = sizedBlob(width, 257);
    for (unsigned int y = 0; y < 256; ++y) {
        blob.addLine(0, width - 1, y);
    }
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_FALSE(blob.valid);

    blob.valid = true;
    blob.addLine(0, 0, 256);
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_TRUE(blob.valid);
    EXPECT_EQ(blob.centerDepth, 655370.0f);
    EXPECT_EQ(blob.centerX, 127.0f);
    EXPECT_EQ(blob.centerY, 127.0f);
}

TEST(ImageBlob, ColumnsOutsideTheImageCountForNothing) {
    cImageBlob blob = sizedBlob(4, 2);
    const std::vector<unsigned short> depth(8, 10);
    blob.addLine(2, 1000, 1);
    EXPECT_EQ(blob.lineEnd[1], 1000);
    blob.addLine(4, 9, 0);
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_TRUE(blob.valid);
    EXPECT_EQ(blob.centerX, 2.0f); // columns 2 and 3 of row 1
    EXPECT_EQ(blob.centerY, 1.0f);
    EXPECT_EQ(blob.maxX, 9U);
}

TEST(ImageBlob, RowsPastALoweredHeightCountForNothing) {
    cImageBlob blob = sizedBlob(4, 3);
    const std::vector<unsigned short> depth(8, 10);
    blob.addLine(1, 1, 0);
    blob.addLine(3, 3, 2);
    blob.height = 2;
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_EQ(blob.centerX, 1.0f);
    EXPECT_EQ(blob.centerY, 0.0f);
}

TEST(ImageBlob, RunBeyond31BitsIsNoRunOfTheRow) {
    cImageBlob blob = sizedBlob(4, 1);
    const std::vector<unsigned short> depth(4, 10);
    blob.addLine(0x80000000UL, 0x80000001UL, 0);
    blob.calculateCenter(depth.data(), 0, 20, 1);
    EXPECT_FALSE(blob.valid);
    EXPECT_EQ(blob.sumStart, 0x80000000UL);
}

TEST(ImageBlob, DirtyCenterIsLoggedAndNotGivenOut) {
    const support::LogCapture log;
    cImageBlob blob = sizedBlob(8, 1);
    blob.centerX = 3.0f;
    float x = 7.0f;
    float y = 7.0f;
    float depth = 7.0f;
    blob.getCenter(x, y, depth);
    EXPECT_EQ(log.messages(), Messages{"Tried to use dirty blob data!"});
    EXPECT_EQ(x, -1.0f);
    EXPECT_EQ(y, -1.0f);
    EXPECT_EQ(depth, 0.0f);
}

TEST(ImageBlob, CleanCenterIsGivenOutWithoutAMessage) {
    const support::LogCapture log;
    cImageBlob blob = sizedBlob(8, 2);
    const std::vector<unsigned short> image(16, 10);
    blob.addLine(5, 5, 1);
    blob.calculateCenter(image.data(), 0, 20, 1);
    float x = 0.0f;
    float y = 0.0f;
    float depth = 0.0f;
    blob.getCenter(x, y, depth);
    EXPECT_EQ(log.messages(), Messages{});
    EXPECT_EQ(x, 5.0f);
    EXPECT_EQ(y, 1.0f);
    EXPECT_EQ(depth, 10.0f);
}

} // namespace
