#include "foundation/numbers.h"

#include <gtest/gtest.h>

TEST(UnitsPerMeter, TakesTheWholeNumberWithinSinglePrecisionRounding) {
    EXPECT_EQ(QVR::unitsPerMeter(0.001f), 1000.0f);
    EXPECT_EQ(QVR::unitsPerMeter(0.000125f), 8000.0f);
    EXPECT_EQ(QVR::unitsPerMeter(0.00003125f), 32000.0f);
}

TEST(UnitsPerMeter, KeepsAQuotientThatIsNotWhole) {
    EXPECT_FLOAT_EQ(QVR::unitsPerMeter(0.000124986647f), 8000.8547f);
}
