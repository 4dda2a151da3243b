#include "foundation/numbers.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

using QVR::truncateToInt;
using QVR::unitsPerMeter;

namespace {

constexpr int smallest = std::numeric_limits<int>::min();
constexpr int largest = std::numeric_limits<int>::max();

} // namespace

TEST(TruncateToInt, CutsTowardZero) {
    EXPECT_EQ(truncateToInt(0.0), 0);
    EXPECT_EQ(truncateToInt(2.999), 2);
    EXPECT_EQ(truncateToInt(-2.999), -2);
    EXPECT_EQ(truncateToInt(-0.5), 0);
}

TEST(TruncateToInt, KeepsEverythingThatTruncatesIntoRange) {
    EXPECT_EQ(truncateToInt(2147483647.0), largest);
    EXPECT_EQ(truncateToInt(2147483647.9), largest);
    EXPECT_EQ(truncateToInt(-2147483648.0), smallest);
    EXPECT_EQ(truncateToInt(-2147483648.9), smallest);
    EXPECT_EQ(truncateToInt(-2147483647.9), smallest + 1);
}

TEST(TruncateToInt, GivesTheSmallestIntForWhatNoIntHolds) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {2147483648.0, -2147483649.0, 1e300, -1e300, infinity, -infinity,
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(truncateToInt(value), smallest) << value;
    }
}

TEST(UnitsPerMeter, TakesTheWholeNumberWithinSinglePrecisionRounding) {
    EXPECT_EQ(unitsPerMeter(0.001f), 1000.0f);
    EXPECT_EQ(unitsPerMeter(0.000125f), 8000.0f);
    EXPECT_EQ(unitsPerMeter(0.00003125f), 32000.0f);
    EXPECT_EQ(unitsPerMeter(0.0001f), 10000.0f);
    EXPECT_EQ(unitsPerMeter(1.0f), 1.0f);
}

TEST(UnitsPerMeter, KeepsAQuotientThatIsNotWhole) {
    EXPECT_FLOAT_EQ(unitsPerMeter(0.000124986647f), 8000.8547f);
    EXPECT_EQ(unitsPerMeter(0.000124986647f), 1.0f / 0.000124986647f);
    EXPECT_EQ(unitsPerMeter(0.3f), 1.0f / 0.3f);
}

TEST(UnitsPerMeter, IsInfiniteForAScaleOfZero) {
    EXPECT_TRUE(std::isinf(unitsPerMeter(0.0f)));
}
