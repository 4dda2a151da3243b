// Values once they exist: typed reads, comparison, text.
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <json11.hpp>

using json11::Json;

namespace {

constexpr int smallest = std::numeric_limits<int>::min();

std::string roundTrip(const std::string& text) {
    std::string error = "noError";
    const std::string result = Json::parse(text, error).dump();
    EXPECT_EQ(error, "noError");
    return result;
}

} // namespace

TEST(JsonValue, KnowsItsType) {
    EXPECT_EQ(Json().type(), Json::NUL);
    EXPECT_EQ(Json(nullptr).type(), Json::NUL);
    EXPECT_EQ(Json(1).type(), Json::NUMBER);
    EXPECT_EQ(Json(1.5).type(), Json::NUMBER);
    EXPECT_EQ(Json(false).type(), Json::BOOL);
    EXPECT_EQ(Json("text").type(), Json::STRING);
    EXPECT_EQ(Json(std::string("text")).type(), Json::STRING);
    EXPECT_EQ(Json(Json::array{}).type(), Json::ARRAY);
    EXPECT_EQ(Json(Json::object{}).type(), Json::OBJECT);
}

TEST(JsonValue, GivesNeutralValuesForOtherTypes) {
    for (const Json& value : {Json(), Json("12"), Json(Json::array{1}), Json(Json::object{})}) {
        EXPECT_EQ(value.number_value(), 0.0);
        EXPECT_EQ(value.int_value(), 0);
        EXPECT_FALSE(value.bool_value());
    }
    for (const Json& value : {Json(), Json(1), Json(true)}) {
        EXPECT_EQ(value.string_value(), "");
        EXPECT_TRUE(value.array_items().empty());
        EXPECT_TRUE(value.object_items().empty());
    }
    EXPECT_FALSE(Json(1).bool_value());
    EXPECT_EQ(Json(true).number_value(), 0.0);
}

TEST(JsonValue, GivesTheNullValueForWhatIsNotThere) {
    EXPECT_TRUE(Json(Json::array{1})[1].is_null());
    EXPECT_TRUE(Json(Json::array{1})["a"].is_null());
    EXPECT_TRUE(Json(Json::object{{"a", 1}})["b"].is_null());
    EXPECT_TRUE(Json(Json::object{{"a", 1}})[0].is_null());
    EXPECT_TRUE(Json("text")["a"]["b"][3].is_null());
    EXPECT_TRUE(Json()[std::numeric_limits<std::size_t>::max()].is_null());
}

TEST(JsonValue, TruncatesIntegersTowardZero) {
    EXPECT_EQ(Json(30.5).int_value(), 30);
    EXPECT_EQ(Json(-30.5).int_value(), -30);
    EXPECT_EQ(Json(2147483647.5).int_value(), 2147483647);
    EXPECT_EQ(Json(-2147483648.5).int_value(), smallest);
}

TEST(JsonValue, GivesTheSmallestIntForNumbersBeyondInt) {
    for (const double value :
         {2147483648.0, -2147483649.0, 1e300, -1e300, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_EQ(Json(value).int_value(), smallest) << value;
    }
}

TEST(JsonValue, ComparesByContent) {
    EXPECT_EQ(Json(1), Json(1.0));
    EXPECT_EQ(Json("a"), Json(std::string("a")));
    EXPECT_EQ(Json(Json::array{1, "a"}), Json(Json::array{1, "a"}));
    EXPECT_EQ(Json(Json::object{{"a", 1}}), Json(Json::object{{"a", 1}}));
    EXPECT_EQ(Json(), Json(nullptr));
    EXPECT_NE(Json(1), Json(2));
    EXPECT_NE(Json(1), Json(true));
    EXPECT_NE(Json("1"), Json(1));
    EXPECT_NE(Json(false), Json());
    EXPECT_NE(Json("a"), Json("b"));
    EXPECT_NE(Json(Json::array{1}), Json(Json::array{1, 1}));
    EXPECT_NE(Json(Json::object{{"a", 1}}), Json(Json::object{{"a", 2}}));
}

TEST(JsonValue, StaysAliveWithItsCopies) {
    Json copy;
    {
        const Json original(Json::object{{"a", Json::array{1, 2}}});
        copy = original;
    }
    EXPECT_EQ(copy["a"][1].int_value(), 2);
}

TEST(JsonValue, DumpsCompactTextThatReadsBackEqual) {
    EXPECT_EQ(roundTrip(R"( { "b" : [ 1 , -2.5 , true , false , null ] , "a" : "x" } )"),
              R"({"a":"x","b":[1,-2.5,true,false,null]})");
    EXPECT_EQ(roundTrip("[]"), "[]");
    EXPECT_EQ(roundTrip("{}"), "{}");
    EXPECT_EQ(roundTrip(R"("\"\\\n\u0001")"), R"("\"\\\n\u0001")");
}

TEST(JsonValue, DumpsNumbersWithoutLoss) {
    for (const double number :
         {0.1, 1.0 / 3.0, 3e9, -2147483649.0, 1e300, 5e-324, 123456.789, 2147483647.0, 0.0}) {
        std::string error = "noError";
        EXPECT_EQ(Json::parse(Json(number).dump(), error).number_value(), number);
        EXPECT_EQ(error, "noError");
    }
    EXPECT_EQ(Json(480).dump(), "480");
    EXPECT_EQ(Json(HUGE_VAL).dump(), "null");
}

TEST(JsonValue, DumpsStringsThatAreNoUtf8WithReplacements) {
    EXPECT_EQ(Json("a\xFF").dump(), "\"a\xEF\xBF\xBD\"");
}
