// The inner functions, each form against the literal algorithm, over every width from 1 to 130.
#include "detectionVariants.h"
#include "randomImages.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t mostColumns = 130;

// Finds the nearest flat surface of one image and marks it up to a cut, both compared with the
// literal algorithm.
void compareMarks(const QVR::DetectionKernels& kernels, const literal::Image& image,
                  const literal::Settings& settings, std::uint16_t cut) {
    const std::uint32_t width = image.width;
    const QVR::DepthView view{image.data(), width, image.height};
    const QVR::FlatnessSettings flatness{settings.nearNoiseCutoff, settings.farLimit,
                                         settings.flatnessRadius, settings.flatnessThreshold};
    // Nothing may depend on what an earlier image left behind.
    std::vector<std::uint8_t> counted(QVR::blocksInRow(width) * image.height, 1);
    std::vector<std::uint8_t> marks(image.pixels.size(), 99);
    const QVR::FlatnessResult result =
        kernels.findNearest(view, flatness, counted.data(), marks.data());
    kernels.markUpTo(view, flatness, cut, counted.data(), marks.data());

    std::uint32_t nearest = 64000;
    bool anyInRange = false;
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const std::uint16_t depth = image.pixels[i];
        int mark = 0;
        if (depth > settings.nearNoiseCutoff && depth < settings.farLimit) {
            const auto x = static_cast<std::int64_t>(i % width);
            const auto y = static_cast<std::int64_t>(i / width);
            const std::int64_t radius = settings.flatnessRadius;
            mark = literal::countSame(image, x, y, radius, settings.flatnessThreshold) +
                   literal::countSame(image, x, y, 2 * radius, settings.flatnessThreshold);
            anyInRange = true;
            nearest = mark >= 11 ? std::min<std::uint32_t>(nearest, depth) : nearest;
        }
        ASSERT_EQ(marks[i], depth > cut ? 0 : mark)
            << "pixel " << i << ", radius " << settings.flatnessRadius << ", threshold "
            << settings.flatnessThreshold << ", cut " << cut;
    }
    ASSERT_EQ(result.anyInRange, anyInRange);
    ASSERT_EQ(result.nearest, nearest);
}

// Mostly a cut that divides the image's pixels.
std::uint16_t cutWithin(const literal::Image& image, literal::RandomCases& random) {
    const auto count = static_cast<std::uint32_t>(image.pixels.size());
    return random.oneIn(4) ? random.depth() : image.pixels[random.below(count)];
}

using DetectionVariants = literal::EveryForm;

INSTANTIATE_TEST_SUITE_P(All, DetectionVariants, ::testing::ValuesIn(literal::kernelNames),
                         literal::formName);

TEST_P(DetectionVariants, MarksAndCutEqualTheLiteralAlgorithm) {
    literal::RandomCases random(1);
    for (std::uint32_t width = 1; width <= mostColumns; ++width) {
        for (std::uint32_t height = 1; height <= 9; ++height) {
            const literal::Settings settings = random.settings();
            const literal::Image image = random.image(width, height, settings);
            compareMarks(*kernels, image, settings, cutWithin(image, random));
            ASSERT_FALSE(HasFailure()) << width << " x " << height;
        }
    }
}

TEST_P(DetectionVariants, MarksOfImagesBeyondEveryRadiusEqualTheLiteralAlgorithm) {
    literal::RandomCases random(7);
    for (int repeat = 0; repeat < 120; ++repeat) {
        const std::uint32_t width = 32 + random.below(200);
        const std::uint32_t height = 40 + random.below(60);
        literal::Settings settings = random.settings();
        settings.flatnessRadius = static_cast<std::uint32_t>(repeat % 20);
        const literal::Image image = random.image(width, height, settings);
        compareMarks(*kernels, image, settings, cutWithin(image, random));
        ASSERT_FALSE(HasFailure()) << width << " x " << height;
    }
}

TEST_P(DetectionVariants, RunsEqualTheLiteralAlgorithm) {
    literal::RandomCases random(2);
    std::size_t found = 0;
    for (std::uint32_t width = 1; width <= mostColumns; ++width) {
        for (int repeat = 0; repeat < 40; ++repeat) {
            const literal::Settings settings = random.settings();
            const std::vector<std::uint8_t> row = random.maskRow(width);
            const std::vector<literal::Run> expected = literal::runsOfRow(row, 0, settings);
            std::vector<QVR::BlobRun> runs(QVR::mostRuns(width));
            const std::size_t count = kernels->findRuns(
                row.data(), width,
                {settings.minBlobSize, settings.minBlobSpace, settings.allowedBlobNoiseGap},
                runs.data());
            ASSERT_EQ(count, expected.size()) << "width " << width << ", repeat " << repeat;
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(runs[i].start, expected[i].start) << width << ", " << repeat;
                ASSERT_EQ(runs[i].end, expected[i].end) << width << ", " << repeat;
            }
            found += count;
        }
    }
    EXPECT_GT(found, 1000U);
}

TEST_P(DetectionVariants, RunsOfLongRowsAndLongGapsEqualTheLiteralAlgorithm) {
    literal::RandomCases random(8);
    std::size_t found = 0;
    for (int repeat = 0; repeat < 2000; ++repeat) {
        literal::Settings settings;
        settings.minBlobSize = random.below(repeat % 2 == 0 ? 70 : 20);
        settings.minBlobSpace = random.below(repeat % 2 == 0 ? 70 : 8);
        settings.allowedBlobNoiseGap = random.below(repeat % 2 == 0 ? 70 : 8);
        std::vector<std::uint8_t> row;
        while (row.size() < 400) {
            row.insert(row.end(), random.below(150), static_cast<std::uint8_t>(random.below(3)));
            const std::vector<std::uint8_t> part = random.maskRow(1 + random.below(60));
            row.insert(row.end(), part.begin(), part.end());
        }
        row.resize(1 + random.below(400));
        const auto width = static_cast<std::uint32_t>(row.size());
        const std::vector<literal::Run> expected = literal::runsOfRow(row, 0, settings);
        std::vector<QVR::BlobRun> runs(QVR::mostRuns(width));
        const std::size_t count = kernels->findRuns(
            row.data(), width,
            {settings.minBlobSize, settings.minBlobSpace, settings.allowedBlobNoiseGap},
            runs.data());
        ASSERT_EQ(count, expected.size()) << "repeat " << repeat;
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(runs[i].start, expected[i].start) << "repeat " << repeat;
            ASSERT_EQ(runs[i].end, expected[i].end) << "repeat " << repeat;
        }
        found += count;
    }
    EXPECT_GT(found, 1000U);
}

TEST_P(DetectionVariants, CenterSumsEqualTheLiteralAlgorithm) {
    literal::RandomCases random(3);
    for (std::uint32_t width = 1; width <= 800; width += width < mostColumns ? 1 : 7) {
        for (int repeat = 0; repeat < 20; ++repeat) {
            const literal::Settings settings = random.settings();
            const literal::Image image = random.image(width, 1, settings);
            const bool whole = repeat == 0;
            const std::uint32_t first = whole ? 0 : random.below(width);
            const std::uint32_t last = whole ? width - 1 : first + random.below(width - first);
            const std::uint32_t y = random.oneIn(4) ? 0xffffffffU : random.below(480);
            const std::uint16_t cutoff = random.oneIn(3)   ? image.pixels[first]
                                         : random.oneIn(3) ? std::uint16_t{65535}
                                                           : random.depth();

            // Sums start from what earlier rows left.
            QVR::CenterSums sums{1, 2, 3, 4, 65530};
            QVR::CenterSums expected = sums;
            for (std::uint64_t x = first; x <= last; ++x) {
                const std::uint16_t depth = image.pixels[x];
                if (depth < cutoff) {
                    const std::uint64_t weight =
                        static_cast<std::uint64_t>(cutoff - depth) * settings.biasStrength;
                    expected.weight += weight;
                    expected.weightedX += weight * x;
                    expected.weightedY += weight * y;
                    expected.depth += depth;
                    expected.count += 1;
                }
            }
            kernels->addRowToCenter(image.data(), first, last, y, cutoff, settings.biasStrength,
                                    sums);
            ASSERT_EQ(sums.weight, expected.weight);
            ASSERT_EQ(sums.weightedX, expected.weightedX);
            ASSERT_EQ(sums.weightedY, expected.weightedY);
            ASSERT_EQ(sums.depth, expected.depth);
            ASSERT_EQ(sums.count, expected.count);
        }
    }
}

} // namespace
