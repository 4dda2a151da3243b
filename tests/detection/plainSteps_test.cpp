// Which steps a vector form does itself: the proof that comparing it compares more than the plain
// form with itself.
#include "detectionComparison.h"
#include "detectionVariants.h"
#include "plainSteps.h"

#include <gtest/gtest.h>

namespace {

using PlainSteps = literal::EveryForm;

INSTANTIATE_TEST_SUITE_P(All, PlainSteps, ::testing::ValuesIn(literal::kernelNames),
                         literal::formName);

// Three fingers of 20 columns and more before a surface out of range.
literal::Image fingers(std::uint32_t width, std::uint32_t height) {
    literal::Image image(width, height, 9000);
    for (std::uint32_t y = height / 4; y < height / 2; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            image.at(x, y) = x % 60 < 40 ? std::uint16_t{1000} : std::uint16_t{9000};
        }
    }
    return image;
}

TEST_P(PlainSteps, VectorFormsDoWholeFramesThemselves) {
    const literal::Image image = fingers(200, 60);
    QVR::blobManager product;
    product.setConfig(8000.0f, image.width, image.height);
    literal::Detection expected(image.width, image.height);
    const std::size_t marks = literal::plainMarks();
    const std::size_t cuts = literal::plainCuts();
    const std::size_t runs = literal::plainRuns();
    const std::size_t sums = literal::plainSums();
    product.processFrame(image.data());
    product.extractBlobs(image.data());
    expected.processFrame(image);
    expected.extractBlobs(image);
    EXPECT_TRUE(literal::sameDetection(expected, product));
    EXPECT_TRUE(product.blobs[2].valid);
    EXPECT_EQ(literal::plainMarks() - marks, plain() ? 1U : 0U);
    EXPECT_EQ(literal::plainCuts() - cuts, plain() ? 1U : 0U);
    EXPECT_EQ(literal::plainRuns() - runs, plain() ? 60U : 0U);
    if (plain()) {
        EXPECT_GT(literal::plainSums(), sums);
    }
}

TEST_P(PlainSteps, MarkingIsHandedOverWhereBlocksDoNotFit) {
    const auto handedOver = [this](std::uint32_t width, literal::Settings settings) {
        const literal::Image image = fingers(width, 8);
        std::vector<std::uint8_t> counted(QVR::blocksInRow(width) * image.height);
        std::vector<std::uint8_t> marks(image.pixels.size());
        const QVR::DepthView view{image.data(), width, image.height};
        const QVR::FlatnessSettings flatness{settings.nearNoiseCutoff, settings.farLimit,
                                             settings.flatnessRadius, settings.flatnessThreshold};
        const std::size_t before = literal::plainMarks();
        const std::size_t cutsBefore = literal::plainCuts();
        kernels->findNearest(view, flatness, counted.data(), marks.data());
        kernels->markUpTo(view, flatness, 1100, counted.data(), marks.data());
        EXPECT_EQ(literal::plainCuts() - cutsBefore, literal::plainMarks() - before);
        return literal::plainMarks() != before;
    };
    literal::Settings settings;
    EXPECT_EQ(handedOver(32, settings), plain());
    EXPECT_TRUE(handedOver(31, settings));
    settings.flatnessRadius = 16;
    EXPECT_EQ(handedOver(64, settings), plain());
    settings.flatnessRadius = 17;
    EXPECT_TRUE(handedOver(64, settings));
    settings = {};
    settings.flatnessThreshold = 0;
    EXPECT_TRUE(handedOver(64, settings));
    settings.flatnessThreshold = 1;
    EXPECT_EQ(handedOver(64, settings), plain());
    settings.farLimit = static_cast<std::uint16_t>(settings.nearNoiseCutoff + 1);
    EXPECT_TRUE(handedOver(64, settings));
    settings.farLimit = static_cast<std::uint16_t>(settings.nearNoiseCutoff + 2);
    EXPECT_EQ(handedOver(64, settings), plain());
}

TEST_P(PlainSteps, RunsAreHandedOverWhereWordsDoNotFit) {
    const auto handedOver = [this](std::uint32_t width, const QVR::RunSettings& settings) {
        const std::vector<std::uint8_t> row(width, 16);
        std::vector<QVR::BlobRun> runs(QVR::mostRuns(width));
        const std::size_t before = literal::plainRuns();
        kernels->findRuns(row.data(), width, settings, runs.data());
        return literal::plainRuns() != before;
    };
    EXPECT_EQ(handedOver(64, {11, 3, 3}), plain());
    EXPECT_TRUE(handedOver(63, {11, 3, 3}));
    EXPECT_EQ(handedOver(64, {62, 63, 63}), plain());
    EXPECT_TRUE(handedOver(64, {63, 3, 3}));
    EXPECT_TRUE(handedOver(64, {11, 64, 3}));
    EXPECT_TRUE(handedOver(64, {11, 3, 64}));
    EXPECT_EQ(handedOver(64, {8, 3, 0}), plain());
    EXPECT_TRUE(handedOver(64, {7, 3, 1}));
}

TEST_P(PlainSteps, CentersOfRunsOfAnyLengthAreNotHandedOver) {
    const literal::Image image(64, 1, 1000);
    for (const std::uint32_t last : {3u, 9u, 35u}) {
        QVR::CenterSums sums;
        const std::size_t before = literal::plainSums();
        kernels->addRowToCenter(image.data(), 3, last, 0, 1100, 45, sums);
        EXPECT_EQ(literal::plainSums() != before, plain()) << "up to column " << last;
        EXPECT_EQ(sums.count, last - 2);
    }
}

} // namespace
