// Whole frames through the blob manager, bit for bit against the literal algorithm.
#include "detectionComparison.h"
#include "detectionVariants.h"
#include "randomImages.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

using BlobManagerOracle = literal::EveryForm;

INSTANTIATE_TEST_SUITE_P(All, BlobManagerOracle, ::testing::ValuesIn(literal::kernelNames),
                         literal::formName);

struct Found {
    std::size_t marked = 0;
    std::size_t runs = 0;
    std::size_t centers = 0;
};

void count(const literal::Detection& detection, Found& found) {
    for (const std::uint8_t mark : detection.mask) {
        found.marked += mark != 0 ? 1U : 0U;
    }
    found.runs += detection.runs.size();
    for (const literal::Blob& blob : detection.blobs) {
        found.centers += blob.valid ? 1U : 0U;
    }
}

TEST_P(BlobManagerOracle, SequencesOfFramesEqualTheLiteralAlgorithm) {
    const support::LogCapture quiet;
    literal::RandomCases random(4);
    Found found;
    for (std::uint32_t width = 1; width <= 130; ++width) {
        for (std::uint32_t height = 1; height <= 9; ++height) {
            QVR::blobManager product;
            product.setConfig(8000.0f, width, height);
            literal::Detection expected(width, height);
            expected.settings = random.settings();
            literal::apply(expected.settings, product);
            for (int frame = 0; frame < 3; ++frame) {
                const literal::Image image = random.image(width, height, expected.settings);
                expected.processFrame(image);
                expected.extractBlobs(image);
                product.processFrame(image.data());
                product.extractBlobs(image.data());
                ASSERT_TRUE(literal::sameDetection(expected, product))
                    << width << " x " << height << ", frame " << frame;
                count(expected, found);
            }
        }
    }
    // The cases must not be trivial.
    EXPECT_GT(found.marked, 50000U);
    EXPECT_GT(found.runs, 2000U);
    EXPECT_GT(found.centers, 500U);
}

TEST_P(BlobManagerOracle, MasksOfAnyShapeEqualTheLiteralAlgorithm) {
    const support::LogCapture quiet;
    literal::RandomCases random(5);
    Found found;
    for (int repeat = 0; repeat < 600; ++repeat) {
        const std::uint32_t width = 1 + random.below(130);
        const std::uint32_t height = 1 + random.below(24);
        QVR::blobManager product;
        product.setConfig(8000.0f, width, height);
        literal::Detection expected(width, height);
        expected.settings = random.settings();
        literal::apply(expected.settings, product);
        const literal::Image image = random.image(width, height, expected.settings);
        expected.cutoffDepth = product.cutoffDepth = random.depth();
        expected.mask.clear();
        for (std::uint32_t y = 0; y < height; ++y) {
            const std::vector<std::uint8_t> row = random.maskRow(width);
            expected.mask.insert(expected.mask.end(), row.begin(), row.end());
        }
        product.mask = expected.mask;
        expected.extractBlobs(image);
        product.extractBlobs(image.data());
        ASSERT_TRUE(literal::sameDetection(expected, product)) << "repeat " << repeat;
        count(expected, found);
    }
    EXPECT_GT(found.runs, 10000U);
    EXPECT_GT(found.centers, 1000U);
}

TEST_P(BlobManagerOracle, FullSizeFramesEqualTheLiteralAlgorithm) {
    const support::LogCapture quiet;
    literal::RandomCases random(6);
    QVR::blobManager product;
    product.setConfig(8000.0f, 640, 480);
    literal::Detection expected(640, 480);
    Found found;
    for (std::uint32_t frame = 0; frame < 3; ++frame) {
        // Fingers of 17 columns and 60 rows on a far surface.
        literal::Image image(640, 480, 2400);
        for (std::uint32_t y = 40; y < 400; ++y) {
            for (std::uint32_t x = 20; x < 600; ++x) {
                if (x % 97 < 17 && y % 120 < 60) {
                    image.at(x, y) =
                        static_cast<std::uint16_t>(1000 + 20 * frame + random.below(9));
                }
            }
        }
        expected.processFrame(image);
        expected.extractBlobs(image);
        product.processFrame(image.data());
        product.extractBlobs(image.data());
        ASSERT_TRUE(literal::sameDetection(expected, product)) << "frame " << frame;
        count(expected, found);
    }
    EXPECT_EQ(found.centers, 30U);
}

} // namespace
