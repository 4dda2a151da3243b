// The inner functions, each form against the literal algorithm, over every width from 1 to 130.
#include "detectionVariants.h"
#include "randomImages.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t mostColumns = 130;

class DetectionVariants : public ::testing::TestWithParam<literal::DetectionVariant> {};

INSTANTIATE_TEST_SUITE_P(All, DetectionVariants, ::testing::ValuesIn(literal::detectionVariants()),
                         [](const auto& entry) { return entry.param.name; });

TEST_P(DetectionVariants, MarksAndCutEqualTheLiteralAlgorithm) {
    literal::RandomCases random(1);
    for (std::uint32_t width = 1; width <= mostColumns; ++width) {
        for (std::uint32_t height = 1; height <= 9; ++height) {
            const literal::Settings settings = random.settings();
            const literal::Image image = random.image(width, height, settings);
            std::vector<std::uint8_t> marks(image.pixels.size(), 99);
            const QVR::FlatnessResult result =
                GetParam().markFlatPixels({image.data(), width, height},
                                          {settings.nearNoiseCutoff, settings.farLimit,
                                           settings.flatnessRadius, settings.flatnessThreshold},
                                          marks.data());

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
                ASSERT_EQ(marks[i], mark) << width << " x " << height << ", pixel " << i;
            }
            ASSERT_EQ(result.anyInRange, anyInRange) << width << " x " << height;
            ASSERT_EQ(result.nearest, nearest) << width << " x " << height;

            const std::uint16_t cut = random.oneIn(4) ? image.pixels[0] : random.depth();
            std::vector<std::uint8_t> cutMarks = marks;
            GetParam().clearBeyondCut(image.data(), cutMarks.size(), cut, cutMarks.data());
            for (std::size_t i = 0; i < marks.size(); ++i) {
                ASSERT_EQ(cutMarks[i], image.pixels[i] > cut ? 0 : marks[i]) << "cut " << cut;
            }
        }
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
            const std::size_t count = GetParam().findRuns(
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

TEST_P(DetectionVariants, CenterSumsEqualTheLiteralAlgorithm) {
    literal::RandomCases random(3);
    for (std::uint32_t width = 1; width <= mostColumns; ++width) {
        for (int repeat = 0; repeat < 20; ++repeat) {
            const literal::Settings settings = random.settings();
            const literal::Image image = random.image(width, 1, settings);
            const std::uint32_t first = random.below(width);
            const std::uint32_t last = first + random.below(width - first);
            const std::uint32_t y = random.oneIn(4) ? 0xffffffffU : random.below(480);
            const std::uint16_t cutoff = random.oneIn(3) ? image.pixels[first] : random.depth();

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
            GetParam().addRowToCenter(image.data(), first, last, y, cutoff, settings.biasStrength,
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
