// What the parser accepts and refuses: exactly the documents of RFC 8259, to a depth of 200.
#include <initializer_list>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>

using json11::Json;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

std::string errorOf(const std::string& text) {
    std::string error = "noError";
    const Json value = Json::parse(text, error);
    EXPECT_TRUE(error == "noError" || value.is_null()) << text;
    return error;
}

Json parsed(const std::string& text) {
    std::string error = "noError";
    Json value = Json::parse(text, error);
    EXPECT_EQ(error, "noError") << text;
    return value;
}

std::string nested(std::size_t depth, const std::string& open, const std::string& close) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += open;
    }
    text += "1";
    for (std::size_t i = 0; i < depth; ++i) {
        text += close;
    }
    return text;
}

void expectRefused(std::initializer_list<const char*> texts) {
    for (const char* text : texts) {
        EXPECT_THAT(errorOf(text), MatchesRegex(".+ \\(byte [0-9]+\\)")) << text;
    }
}

} // namespace

TEST(JsonParse, LeavesTheErrorUntouchedOnSuccess) {
    for (const char* before : {"noError", "", "an older failure"}) {
        std::string error = before;
        EXPECT_TRUE(Json::parse("{\"a\": [1, true, null]}", error).is_object());
        EXPECT_EQ(error, before);
    }
}

TEST(JsonParse, RefusesEmptyAndIncompleteTexts) {
    expectRefused(
        {"", " \n", "[", "{", "[1", "{\"a\"", "{\"a\":", "\"a", "tru", "-", "[1,", "\"\\u12"});
}

TEST(JsonParse, RefusesComments) {
    expectRefused({"// c\n1", "/* c */ 1", "1 // c", "[1, /* c */ 2]", "# c\n1"});
}

TEST(JsonParse, RefusesCommasTooManyOrTooFew) {
    expectRefused({"[1,]", "{\"a\": 1,}", "[,1]", "[1,,2]", "[1 2]", "{\"a\": 1 \"b\": 2}"});
}

TEST(JsonParse, RefusesOtherNotationsOfNumbers) {
    expectRefused({"01", "-01", "00", "+1", ".5", "1.", "1e", "1e+", "0x10", "NaN", "nan",
                   "Infinity", "-Infinity", "inf", "1e400", "-1e400", "1_000", "--1"});
}

TEST(JsonParse, RefusesUnknownNamesAndUnquotedKeys) {
    expectRefused({"True", "nul", "nulll", "TRUE", "undefined", "{a: 1}", "{1: 1}", "{'a': 1}",
                   "{\"a\" 1}", "{\"a\", 1}"});
}

TEST(JsonParse, RefusesOtherQuotesEscapesAndControlCharacters) {
    expectRefused(
        {"'a'", "\"a\nb\"", "\"a\tb\"", "\"\\x41\"", "\"\\'\"", "\"\\u12g4\"", "\"\x01\""});
}

TEST(JsonParse, RefusesLoneSurrogates) {
    expectRefused(
        {"\"\\ud83d\"", "\"\\ude00\"", "\"\\ud83dx\"", "\"\\ud83d\\u0041\"", "\"\\ud83d\\ud83d\""});
}

TEST(JsonParse, RefusesTextsThatAreNoUtf8) {
    expectRefused({"\"\xFF\"", "\"\xC3\"", "\"\x80\"", "\"\xC0\x80\"", "\"\xED\xA0\x80\"",
                   "\"\xF4\x90\x80\x80\"", "{\"\xE2\x82\": 1}"});
}

TEST(JsonParse, RefusesAnythingBehindTheDocument) {
    expectRefused({"{} x", "1 2", "[1]]", "{}}", "null,", "[1] []", "\"a\"\"b\""});
}

TEST(JsonParse, RefusesByteOrderMarks) {
    expectRefused({"\xEF\xBB\xBF{}", "\xEF\xBB\xBF", "\xFE\xFF"});
}

TEST(JsonParse, RefusesBracketsThatDoNotMatch) {
    expectRefused({"[1}", "{\"a\": 1]", "]", "}", ":"});
}

TEST(JsonParse, RefusesNulBytesWhereverTheyStand) {
    using namespace std::string_literals;
    EXPECT_EQ(errorOf("{}\0 anything"s), "unexpected NUL character (byte 3)");
    EXPECT_EQ(errorOf("\0"s), "unexpected NUL character (byte 1)");
    EXPECT_EQ(errorOf("[\"a\0b\"]"s), "unexpected NUL character (byte 4)");
}

TEST(JsonParse, NamesTheByteOrderMark) {
    EXPECT_EQ(errorOf("\xEF\xBB\xBF{}"), "unexpected byte order mark (byte 1)");
}

TEST(JsonParse, NamesLineAndByteOfTheFailure) {
    const std::string error = errorOf("{\n  \"a\": 1,\n  \"b\": x\n}");
    EXPECT_THAT(error, HasSubstr("line 3"));
    EXPECT_THAT(error, HasSubstr("(byte 20)"));
    EXPECT_THAT(error, testing::Not(HasSubstr("exception")));
}

TEST(JsonParse, QuotesOnlyTheStartOfAnEndlessToken) {
    const std::string error = errorOf("[\"" + std::string(100000, 'x'));
    EXPECT_LT(error.size(), 400u);
    EXPECT_THAT(error, testing::EndsWith("... (byte 100003)"));
}

TEST(JsonParse, AcceptsTwoHundredLevels) {
    Json value = parsed(nested(200, "[", "]"));
    for (int level = 0; level < 200; ++level) {
        ASSERT_TRUE(value.is_array());
        value = Json(value[0]);
    }
    EXPECT_EQ(value.number_value(), 1.0);
    EXPECT_TRUE(parsed(nested(200, "{\"a\":", "}")).is_object());
    EXPECT_TRUE(parsed(nested(100, "[{\"a\":", "}]")).is_array());
}

TEST(JsonParse, RefusesOneLevelMore) {
    EXPECT_EQ(errorOf(nested(201, "[", "]")), "exceeded maximum nesting depth of 200 (byte 201)");
    EXPECT_EQ(errorOf(nested(201, "{\"[\\\"\":", "}")),
              "exceeded maximum nesting depth of 200 (byte " + std::to_string(200 * 7 + 1) + ")");
    EXPECT_EQ(errorOf("[[], {}, " + nested(200, "[", "]") + "]"),
              "exceeded maximum nesting depth of 200 (byte 209)");
    EXPECT_EQ(errorOf(R"(["\"[[", "[[",)" + nested(200, "[", "]") + "]"),
              "exceeded maximum nesting depth of 200 (byte 214)");
    EXPECT_THAT(errorOf(std::string(1000000, '[')), HasSubstr("maximum nesting depth"));
}

TEST(JsonParse, CountsDepthAndNotSiblings) {
    std::string text = "[";
    for (int i = 0; i < 1000; ++i) {
        text += "[],";
    }
    EXPECT_EQ(parsed(text + "{}]").array_items().size(), 1001u);
}

TEST(JsonParse, SurvivesComparingCopyingAndDumpingTheDeepestValues) {
    const std::string text = nested(200, "{\"a\":", "}");
    const Json one = parsed(text);
    const Json other = parsed(text);
    EXPECT_EQ(one, other);
    EXPECT_EQ(one.dump(), text);
}

TEST(JsonParse, LetsTheLastOfEqualKeysWin) {
    const Json value = parsed(R"({"a": 1, "b": 2, "a": {"c": 3}})");
    EXPECT_EQ(value.object_items().size(), 2u);
    EXPECT_EQ(value["a"]["c"].int_value(), 3);
    EXPECT_EQ(parsed(R"({"a": {"b": 1}, "a": 5})")["a"], Json(5));
}

TEST(JsonParse, ReadsEveryFormOfNumber) {
    EXPECT_EQ(parsed("0").number_value(), 0.0);
    EXPECT_EQ(parsed("-0").number_value(), 0.0);
    EXPECT_EQ(parsed("-12.5e-1").number_value(), -1.25);
    EXPECT_EQ(parsed("1E+2").number_value(), 100.0);
    EXPECT_EQ(parsed("4294967296").number_value(), 4294967296.0);
    EXPECT_EQ(parsed("18446744073709551615").number_value(), 18446744073709551615.0);
    EXPECT_EQ(parsed("-9223372036854775808").number_value(), -9223372036854775808.0);
    EXPECT_EQ(parsed("123456789012345678901234567890").number_value(),
              123456789012345678901234567890.0);
    EXPECT_EQ(parsed("0.1").number_value(), 0.1);
    EXPECT_EQ(parsed("1e-400").number_value(), 0.0);
}

TEST(JsonParse, ReadsEscapesAndUnicode) {
    EXPECT_EQ(parsed(R"("\"\\\/\b\f\n\r\t")").string_value(), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(parsed(R"("\u00e4\u20AC\ud83d\ude00")").string_value(),
              "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(parsed("\"\xF0\x9F\x98\x80\"").string_value(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(parsed(R"("a\u0000b")").string_value(), std::string("a\0b", 3));
}

TEST(JsonParse, ReadsScalarsAndBlanksAroundThem) {
    EXPECT_EQ(parsed(" \t\r\n true \t\r\n ").type(), Json::BOOL);
    EXPECT_EQ(parsed("false").type(), Json::BOOL);
    EXPECT_EQ(parsed("null").type(), Json::NUL);
    EXPECT_EQ(parsed("\"\"").type(), Json::STRING);
    EXPECT_TRUE(parsed("[]").array_items().empty());
    EXPECT_TRUE(parsed("{}").object_items().empty());
}

TEST(JsonParse, KeepsTheOrderOfItems) {
    const Json value = parsed(R"([3, "b", null, [1], {"k": false}])");
    ASSERT_EQ(value.array_items().size(), 5u);
    EXPECT_EQ(value[0].int_value(), 3);
    EXPECT_EQ(value[1].string_value(), "b");
    EXPECT_TRUE(value[2].is_null());
    EXPECT_EQ(value[3][0].int_value(), 1);
    EXPECT_TRUE(value[4]["k"].is_bool());
}
