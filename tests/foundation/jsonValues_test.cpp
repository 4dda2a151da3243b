#include "foundation/jsonValues.h"

#include <limits>

#include <gtest/gtest.h>
#include <json11.hpp>

using json11::Json;

namespace {

const Json document(Json::object{
    {"number", 30.5}, {"truth", true}, {"lie", false}, {"text", "12"}, {"nothing", nullptr}});

} // namespace

TEST(JsonValues, ReadValuesOfTheExpectedType) {
    EXPECT_EQ(QVR::numberValue(document["number"], 1.0), 30.5);
    EXPECT_EQ(QVR::intValue(document["number"], 1), 30);
    EXPECT_TRUE(QVR::boolValue(document["truth"], false));
    EXPECT_FALSE(QVR::boolValue(document["lie"], true));
}

TEST(JsonValues, LeaveTheFallbackForMissingValues) {
    EXPECT_EQ(QVR::numberValue(document["missing"], 1.5), 1.5);
    EXPECT_EQ(QVR::intValue(document["missing"], 7), 7);
    EXPECT_TRUE(QVR::boolValue(document["missing"], true));
    EXPECT_FALSE(QVR::boolValue(document["missing"], false));
}

TEST(JsonValues, LeaveTheFallbackForOtherTypes) {
    for (const char* key : {"text", "nothing", "truth"}) {
        EXPECT_EQ(QVR::numberValue(document[key], 1.5), 1.5) << key;
        EXPECT_EQ(QVR::intValue(document[key], 7), 7) << key;
    }
    for (const char* key : {"text", "nothing", "number"}) {
        EXPECT_TRUE(QVR::boolValue(document[key], true)) << key;
    }
}

TEST(JsonValues, TruncateIntegersTowardZero) {
    EXPECT_EQ(QVR::intValue(Json(-30.9), 0), -30);
    EXPECT_EQ(QVR::intValue(Json(0.99), 5), 0);
}

TEST(JsonValues, GiveTheSmallestIntForNumbersBeyondInt) {
    EXPECT_EQ(QVR::intValue(Json(3e9), 0), std::numeric_limits<int>::min());
    EXPECT_EQ(QVR::intValue(Json(-1e300), 0), std::numeric_limits<int>::min());
}
