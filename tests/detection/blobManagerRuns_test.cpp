// From the mask to blobs: runs, their joining, and what becomes of the eleventh.
#include "detection/blobManager.h"
#include "support/LogCapture.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using QVR::blobManager;
using QVR::cImageBlob;

std::string times(int count, char mark) {
    return std::string(static_cast<std::size_t>(count), mark);
}

// Draws the mask as text, "#" marked, and lies 400 units before the cut everywhere.
class BlobManagerRuns : public ::testing::Test {
  protected:
    void extract(const std::vector<std::string>& rows) {
        const auto width = static_cast<unsigned int>(rows[0].size());
        const auto height = static_cast<unsigned int>(rows.size());
        manager.setConfig(8000.0f, width, height);
        manager.cutoffDepth = 1000;
        depth.assign(rows[0].size() * rows.size(), 600);
        for (std::size_t y = 0; y < rows.size(); ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                manager.mask[y * width + x] = rows[y][x] == '#' ? 16 : 0;
            }
        }
        manager.extractBlobs(depth.data());
    }

    std::size_t validBlobs() const {
        std::size_t count = 0;
        for (const cImageBlob& blob : manager.blobs) {
            count += blob.valid ? 1U : 0U;
        }
        return count;
    }

    // Start and end of the run that a blob holds in a row.
    std::vector<int> line(std::size_t blob, std::size_t y = 0) const {
        return {manager.blobs[blob].lineStart[y], manager.blobs[blob].lineEnd[y]};
    }

    blobManager manager;
    std::vector<unsigned short> depth;
};

using Line = std::vector<int>;

TEST_F(BlobManagerRuns, DropsRunOfElevenPixels) {
    extract({"....." + times(11, '#') + "....."});
    EXPECT_EQ(validBlobs(), 0U);
}

TEST_F(BlobManagerRuns, KeepsRunOfTwelvePixelsAndEndsOnePastItsLast) {
    extract({"....." + times(12, '#') + "....."});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{5, 17}));
    EXPECT_EQ(manager.blobs[0].lineCenterX, 11.0f);
    EXPECT_FALSE(manager.blobs[0].dirty);
    EXPECT_EQ(manager.blobs[0].centerX, 11.0f); // the pixel past the run counts as well
    EXPECT_EQ(manager.blobs[0].centerY, 0.0f);
    EXPECT_EQ(manager.blobs[0].centerDepth, 600.0f);
}

TEST_F(BlobManagerRuns, DropsRunAtTheRightEdge) {
    extract({"...." + times(20, '#')});
    EXPECT_EQ(validBlobs(), 0U);
}

TEST_F(BlobManagerRuns, DropsRunWhoseGapTheRightEdgeCutsShort) {
    extract({"...." + times(20, '#') + ".."});
    EXPECT_EQ(validBlobs(), 0U);
    extract({"...." + times(20, '#') + "..."});
    EXPECT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{4, 24}));
}

TEST_F(BlobManagerRuns, ShortGapCountsIntoTheRun) {
    extract({"....." + times(12, '#') + ".." + times(4, '#') + "...."});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{5, 23}));
}

TEST_F(BlobManagerRuns, GapInARunThatIsStillTooShortDropsIt) {
    extract({"....." + times(8, '#') + "." + times(8, '#') + "...."});
    EXPECT_EQ(validBlobs(), 0U);
}

TEST_F(BlobManagerRuns, GapOfTheAllowedLengthEndsTheRun) {
    extract({"....." + times(12, '#') + "..." + times(14, '#') + "...."});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(manager.blobs[0].lineCount, 2U); // near each other: one blob, the second run stays
    EXPECT_EQ(line(0), (Line{20, 34}));
    EXPECT_EQ(manager.blobs[0].sumStart, 25U);
    EXPECT_EQ(manager.blobs[0].sumEnd, 51U);
}

TEST_F(BlobManagerRuns, DroppedRunLeavesItsStartToANextOneNearBy) {
    extract({"....." + times(6, '#') + ".." + times(12, '#') + "...."});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{5, 17})); // the marked pixels are 13 to 24
    extract({"....." + times(6, '#') + "..." + times(12, '#') + "...."});
    EXPECT_EQ(line(0), (Line{14, 26}));
}

TEST_F(BlobManagerRuns, RunThatEndedLeavesItsStartToANextOneNearBy) {
    manager.allowedBlobNoiseGap = 2;
    manager.blobLineAssocLimitU = 0; // every run is a blob of its own
    extract({"....." + times(13, '#') + ".." + times(14, '#') + "...."});
    ASSERT_EQ(validBlobs(), 2U);
    EXPECT_EQ(line(0), (Line{5, 18}));
    EXPECT_EQ(line(1), (Line{5, 19}));
}

TEST_F(BlobManagerRuns, RunNearTheLeftEdgeStartsAtTheEdge) {
    for (int first = 0; first < 3; ++first) {
        extract({times(first, '.') + times(12, '#') + "...."});
        EXPECT_EQ(line(0), (Line{0, 12})) << first;
    }
    extract({"..." + times(12, '#') + "...."});
    EXPECT_EQ(line(0), (Line{3, 15}));
}

TEST_F(BlobManagerRuns, MinBlobSizeOfZeroTakesSinglePixels) {
    manager.minBlobSize = 0;
    extract({".....#....."});
    EXPECT_EQ(line(0), (Line{5, 6}));
}

TEST_F(BlobManagerRuns, AllowedGapOfZeroEndsARunAtTheFirstUnmarkedPixel) {
    manager.allowedBlobNoiseGap = 0;
    extract({"....." + times(12, '#') + "."});
    EXPECT_EQ(line(0), (Line{5, 17}));
}

TEST_F(BlobManagerRuns, SpaceOfZeroStartsARunAtEveryMarkedPixel) {
    const support::LogCapture quiet;
    manager.minBlobSpace = 0;
    extract({"....." + times(12, '#') + "....."});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{16, 28})); // past the image, of which columns 16 to 21 count
    EXPECT_EQ(manager.blobs[0].centerX, 18.0f);
}

TEST_F(BlobManagerRuns, AllowedGapAboveTheSpaceIsWarnedOfInEveryFrame) {
    const support::LogCapture log;
    manager.allowedBlobNoiseGap = 4;
    extract({times(20, '.')});
    extract({times(20, '.')});
    const std::string warning = "WARNING! minBlobSpace must be bigger than allowedBlobNoiseGap "
                                "for blob detection to work properly!";
    EXPECT_EQ(log.messages(), (std::vector<std::string>{warning, warning}));
}

TEST_F(BlobManagerRuns, AllowedGapEqualToTheSpaceIsNotWarnedOf) {
    const support::LogCapture log;
    extract({times(20, '.')});
    EXPECT_TRUE(log.messages().empty());
}

// A gap that starts a new run without ending the old one moves the start and keeps the length.
TEST_F(BlobManagerRuns, RunCanEndPastTheImageAndOnlyPixelsInsideCount) {
    const support::LogCapture quiet;
    manager.allowedBlobNoiseGap = 4;
    extract({"....." + times(14, '#') + "..." + "#" + "....", times(27, '.')});
    ASSERT_EQ(validBlobs(), 1U);
    EXPECT_EQ(line(0), (Line{22, 40}));
    EXPECT_EQ(manager.blobs[0].sumEnd, 40U);
    EXPECT_EQ(manager.blobs[0].centerX, 24.0f); // columns 22 to 26
    EXPECT_EQ(manager.blobs[0].centerY, 0.0f);
}

TEST_F(BlobManagerRuns, EachFrameStartsWithEmptyBlobs) {
    extract({"....." + times(12, '#') + "....."});
    ASSERT_EQ(validBlobs(), 1U);
    manager.mask.assign(manager.mask.size(), 0);
    manager.extractBlobs(depth.data());
    EXPECT_EQ(validBlobs(), 0U);
    EXPECT_EQ(line(0), (Line{-1, -1}));
}

TEST_F(BlobManagerRuns, RunsInFollowingRowsMakeOneBlob) {
    const std::string row = "....." + times(13, '#') + ".....";
    extract({row, row, row});
    ASSERT_EQ(validBlobs(), 1U);
    const cImageBlob& blob = manager.blobs[0];
    EXPECT_EQ(blob.lineCount, 3U);
    EXPECT_EQ(blob.minY, 0U);
    EXPECT_EQ(blob.maxY, 2U);
    EXPECT_EQ(blob.centerX, 11.0f);
    EXPECT_EQ(blob.centerY, 1.0f);
}

TEST_F(BlobManagerRuns, BiasOfZeroMakesEveryBlobInvalid) {
    manager.biasStrength = 0;
    extract({"....." + times(12, '#') + times(60, '.') + times(12, '#') + "....."});
    EXPECT_EQ(validBlobs(), 0U);
    EXPECT_EQ(line(0), (Line{5, 17})); // the runs stay
    EXPECT_EQ(line(1), (Line{77, 89}));
}

TEST_F(BlobManagerRuns, EleventhRunIsDroppedSilently) {
    const support::LogCapture log;
    std::string row;
    for (int finger = 0; finger < 11; ++finger) {
        row += times(30, '.') + times(12, '#') + times(30, '.');
    }
    extract({row});
    EXPECT_EQ(validBlobs(), 10U);
    EXPECT_EQ(line(9), (Line{9 * 72 + 30, 9 * 72 + 42}));
    EXPECT_TRUE(log.messages().empty());
}

class BlobLines : public ::testing::Test {
  protected:
    BlobLines() {
        manager.setConfig(8000.0f, 640, 480);
        for (cImageBlob& blob : manager.blobs) {
            blob.reset();
        }
    }

    std::uint64_t lines(std::size_t blob) const { return manager.blobs[blob].lineCount; }

    blobManager manager;
};

TEST_F(BlobLines, JoinWithinTheHorizontalLimitOnly) {
    manager.processBlobLine(100, 120, 10); // centre 110
    manager.processBlobLine(131, 151, 11); // 31 beside it
    EXPECT_EQ(lines(0), 2U);               // the centre is 125.5 now
    manager.processBlobLine(147, 168, 12); // 157 with halves dropped: 31.5 beside it
    EXPECT_EQ(lines(0), 3U);
    EXPECT_EQ(lines(1), 0U);
}

TEST_F(BlobLines, HorizontalLimitItselfIsTooFar) {
    manager.processBlobLine(100, 120, 10);
    manager.processBlobLine(132, 152, 11);
    EXPECT_EQ(lines(0), 1U);
    EXPECT_EQ(lines(1), 1U);
    manager.processBlobLine(58, 98, 11); // 78: 32 to the left
    EXPECT_EQ(lines(2), 1U);
    manager.processBlobLine(58, 99, 11); // 78.5, halves dropped: joins the run at 78
    EXPECT_EQ(lines(2), 2U);
}

TEST_F(BlobLines, JoinWithinTheRowLimitOnly) {
    manager.processBlobLine(100, 120, 10);
    manager.processBlobLine(100, 120, 20);
    EXPECT_EQ(lines(0), 2U);
    manager.processBlobLine(100, 120, 31);
    EXPECT_EQ(lines(0), 2U);
    EXPECT_EQ(lines(1), 1U);
}

TEST_F(BlobLines, RowsAboveABlobAreWithinTheLimit) {
    manager.processBlobLine(100, 120, 400);
    manager.processBlobLine(100, 120, 0);
    EXPECT_EQ(lines(0), 2U);
    EXPECT_EQ(manager.blobs[0].minY, 0U);
}

TEST_F(BlobLines, RowDistanceIsThatOfTheLow32Bits) {
    manager.processBlobLine(100, 120, 10);
    manager.blobs[0].maxY += std::uint64_t{5} << 32;
    manager.processBlobLine(100, 120, 25); // 15 rows below
    EXPECT_EQ(lines(0), 1U);
    EXPECT_EQ(lines(1), 1U);
}

TEST_F(BlobLines, FirstBlobNearEnoughTakesTheRun) {
    manager.processBlobLine(100, 120, 10); // 110
    manager.processBlobLine(150, 170, 10); // 160
    manager.processBlobLine(130, 144, 11); // 137: nearer to the second
    EXPECT_EQ(lines(0), 2U);
    EXPECT_EQ(lines(1), 1U);
}

TEST_F(BlobLines, InvalidBlobTakesARunOnlyAsAFreeOne) {
    manager.processBlobLine(100, 120, 10);
    manager.processBlobLine(140, 160, 10);
    manager.blobs[0].valid = false;        // as after a centre without weight
    manager.processBlobLine(120, 140, 11); // near both
    EXPECT_EQ(lines(0), 1U);
    EXPECT_EQ(lines(1), 2U);
    manager.processBlobLine(500, 520, 12);
    EXPECT_EQ(lines(0), 2U);
    EXPECT_EQ(lines(2), 0U);
    EXPECT_TRUE(manager.blobs[0].valid);
    EXPECT_EQ(manager.blobs[0].minY, 12U);
}

TEST_F(BlobLines, NegativeLimitsJoinNothing) {
    manager.blobLineAssocLimitU = -1;
    manager.processBlobLine(100, 120, 10);
    manager.processBlobLine(100, 120, 10);
    EXPECT_EQ(lines(1), 1U);
    manager.blobLineAssocLimitU = 32;
    manager.blobLineAssocLimitV = -1;
    manager.processBlobLine(100, 120, 10);
    EXPECT_EQ(lines(2), 1U);
}

TEST_F(BlobLines, EleventhIsDroppedUnlessItJoins) {
    for (unsigned int i = 0; i < 10; ++i) {
        manager.processBlobLine(60 * i, 60 * i + 12, 5);
    }
    manager.processBlobLine(620, 632, 5);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(lines(i), 1U);
    }
    manager.processBlobLine(0, 12, 6);
    EXPECT_EQ(lines(0), 2U);
}

TEST_F(BlobLines, RowOutsideTheImageDoesNothing) {
    manager.processBlobLine(100, 120, 480);
    manager.processBlobLine(100, 120, 0xffffffffU);
    EXPECT_EQ(lines(0), 0U);
    EXPECT_FALSE(manager.blobs[0].valid);
}

TEST_F(BlobLines, ColumnsOutsideTheImageAreKept) {
    manager.processBlobLine(700, 5000, 3);
    EXPECT_TRUE(manager.blobs[0].valid);
    EXPECT_EQ(manager.blobs[0].sumEnd, 5000U);
    EXPECT_EQ(manager.blobs[0].lineCenterX, 2850.0f);
}

} // namespace
