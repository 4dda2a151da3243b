// Camera URIs and the options in them.
#include "source_uri.h"

#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

using camera::ImageSize;
using camera::parseSourceUri;
using camera::SourceOptions;
using Values = SourceOptions::Values;

namespace {

template <class Action>
std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

SourceOptions with(const std::string& value) {
    return {"test", "", {{"key", value}}};
}

TEST(SourceUri, IsASchemeAlone) {
    for (const char* uri : {"simulated", "simulated:"}) {
        const SourceOptions options = parseSourceUri(uri);
        EXPECT_EQ(options.scheme(), "simulated");
        EXPECT_EQ(options.positional(), "");
        EXPECT_EQ(options.values(), Values{});
    }
}

TEST(SourceUri, ListsKeysInTheOrderWritten) {
    const SourceOptions options = parseSourceUri("simulated:fingers=3,depth=640x480,pace=,x=a=b");
    EXPECT_EQ(options.positional(), "");
    EXPECT_EQ(options.values(),
              (Values{{"fingers", "3"}, {"depth", "640x480"}, {"pace", ""}, {"x", "a=b"}}));
}

TEST(SourceUri, PutsAPathBeforeTheFirstKey) {
    const SourceOptions options = parseSourceUri("images:/data/take 1,fps=60");
    EXPECT_EQ(options.scheme(), "images");
    EXPECT_EQ(options.positional(), "/data/take 1");
    EXPECT_EQ(options.values(), (Values{{"fps", "60"}}));
}

TEST(SourceUri, LetsAPathHoldCommasColonsAndEqualSigns) {
    EXPECT_EQ(parseSourceUri("images:a,b,c,fps=60").positional(), "a,b,c");
    EXPECT_EQ(parseSourceUri("images:C:/x").positional(), "C:/x");
    EXPECT_EQ(parseSourceUri("images:/data/gain=2,fps=60").positional(), "/data/gain=2");
    EXPECT_EQ(parseSourceUri("images:,a").positional(), ",a");
}

TEST(SourceUri, RefusesAnItemWithoutAKeyBehindKeys) {
    EXPECT_EQ(messageOf([] { parseSourceUri("simulated:seed=1,oops,fps=2"); }),
              "camera source \"simulated\": \"oops\" is not of the form key=value");
    EXPECT_EQ(messageOf([] { parseSourceUri("simulated:seed=1,"); }),
              "camera source \"simulated\": \"\" is not of the form key=value");
}

TEST(SourceUri, NamesTheSourcesThatThereAre) {
    for (const char* uri : {"", "webcam", "Images:x", "webcam:x=1"}) {
        const std::string scheme = parseSourceUri(uri).scheme();
        EXPECT_EQ(messageOf([&] { camera::makeSource(uri); }),
                  "unknown camera source \"" + scheme +
                      "\"; accepted: simulated, images:DIR, realsense, realsense:SERIAL, bag:FILE");
    }
}

TEST(SourceUri, MakesTheSimulatedCamera) {
    EXPECT_NE(camera::makeSource("simulated"), nullptr);
    EXPECT_FALSE(camera::makeSource("simulated:pace=off")->paced());
    EXPECT_NE(messageOf([] { camera::makeSource("simulated:nonsense=1"); }), "");
}

TEST(SourceOptions, GiveFallbacksForAbsentKeys) {
    const SourceOptions options("test", "", {});
    EXPECT_FALSE(options.has("key"));
    EXPECT_EQ(options.text("key", "a"), "a");
    EXPECT_EQ(options.choice("key", "none of them", {"x", "y"}), "none of them");
    EXPECT_EQ(options.integer("key", -4, 0, 9), -4);
    EXPECT_EQ(options.seed("key", 12), 12u);
    EXPECT_EQ(options.number("key", 99.5, 0, 1), 99.5);
    EXPECT_TRUE(options.onOff("key", true));
    EXPECT_FALSE(options.onOff("key", false));
    EXPECT_EQ(options.size("key", {3, 4}), (ImageSize{3, 4}));
}

TEST(SourceOptions, ReadTextsAndChoices) {
    EXPECT_TRUE(with("v").has("key"));
    EXPECT_EQ(with("v").text("key", "a"), "v");
    EXPECT_EQ(with("y").choice("key", "x", {"x", "y"}), "y");
    EXPECT_EQ(messageOf([] {
                  with("z").choice("key", "x", {"x", "y"});
              }),
              "camera source \"test\": key \"key\" cannot be \"z\"; accepted: one of x, y");
}

TEST(SourceOptions, ReadWholeNumbersInTheirRange) {
    EXPECT_EQ(with("0").integer("key", 5, 0, 9), 0);
    EXPECT_EQ(with("9").integer("key", 5, 0, 9), 9);
    EXPECT_EQ(with("-3").integer("key", 5, -3, 9), -3);
    for (const char* bad : {"10", "-1", "", "3x", " 3", "3.0", "99999999999", "+3"}) {
        EXPECT_EQ(messageOf([&] { with(bad).integer("key", 5, 0, 9); }),
                  "camera source \"test\": key \"key\" cannot be \"" + std::string(bad) +
                      "\"; accepted: a whole number from 0 to 9");
    }
}

TEST(SourceOptions, ReadSeedsOfSixtyFourBits) {
    EXPECT_EQ(with("18446744073709551615").seed("key", 0),
              std::numeric_limits<std::uint64_t>::max());
    for (const char* bad : {"18446744073709551616", "-1", "", "0x1"}) {
        EXPECT_EQ(messageOf([&] { with(bad).seed("key", 0); }),
                  "camera source \"test\": key \"key\" cannot be \"" + std::string(bad) +
                      "\"; accepted: a whole number from 0 to 18446744073709551615");
    }
}

TEST(SourceOptions, ReadNumbersInTheirRange) {
    EXPECT_EQ(with("0.000125").number("key", 0, 0, 1), 0.000125);
    EXPECT_EQ(with("1.25e-4").number("key", 0, 0, 1), 0.000125);
    EXPECT_EQ(with("1").number("key", 0, 0, 1), 1.0);
    EXPECT_EQ(with("-0.5").number("key", 0, -1, 1), -0.5);
    for (const char* bad : {"1.01", "-0.1", "", "half", "0.5m", "0,5", "nan", "inf", "1e999"}) {
        EXPECT_EQ(messageOf([&] { with(bad).number("key", 0.25, 0, 1); }),
                  "camera source \"test\": key \"key\" cannot be \"" + std::string(bad) +
                      "\"; accepted: a number from 0 to 1");
    }
}

TEST(SourceOptions, ReadSwitches) {
    EXPECT_TRUE(with("on").onOff("key", false));
    EXPECT_FALSE(with("off").onOff("key", true));
    EXPECT_EQ(messageOf([] { with("true").onOff("key", true); }),
              "camera source \"test\": key \"key\" cannot be \"true\"; accepted: one of on, off");
}

TEST(SourceOptions, ReadSizes) {
    EXPECT_EQ(with("640x480").size("key", {}), (ImageSize{640, 480}));
    EXPECT_EQ(with("1x16384").size("key", {}), (ImageSize{1, 16384}));
    for (const char* bad : {"640", "x", "640x", "x480", "0x480", "640x0", "-1x5", "640x480x3",
                            "16385x1", "1x16385", "640X480", ""}) {
        EXPECT_EQ(messageOf([&] { with(bad).size("key", {}); }),
                  "camera source \"test\": key \"key\" cannot be \"" + std::string(bad) +
                      "\"; accepted: a size such as 640x480, no side longer than 16384");
    }
}

TEST(SourceOptions, KnowTheirKeys) {
    const SourceOptions options("test", "", {{"a", "1"}, {"b", "2"}});
    EXPECT_NO_THROW(options.acceptOnly({"b", "c", "a"}));
    EXPECT_EQ(messageOf([&] {
                  options.acceptOnly({"a", "c"});
              }),
              "camera source \"test\" has no key \"b\"; accepted: a, c");
    const SourceOptions twice("test", "", {{"a", "1"}, {"a", "1"}});
    EXPECT_EQ(messageOf([&] { twice.acceptOnly({"a"}); }),
              "camera source \"test\": key \"a\" is written twice");
}

TEST(SourceOptions, RefusePositionalTextWhereThereIsNoUseForIt) {
    EXPECT_NO_THROW(SourceOptions("test", "", {}).acceptNoPositional());
    EXPECT_EQ(messageOf([] { SourceOptions("test", "3", {}).acceptNoPositional(); }),
              "camera source \"test\" takes key=value pairs only, \"3\" is none");
}

#if !QVR_WITH_REALSENSE2
TEST(SourceUri, SaysHowToGetTheSdkThatTheBuildIsWithout) {
    for (const std::string scheme : {"realsense", "bag"}) {
        const std::string uri = scheme + ":12";
        EXPECT_EQ(messageOf([&] { camera::makeSource(uri); }),
                  "camera source \"" + scheme +
                      "\" needs RealSense SDK 2, which this build is without. Install librealsense "
                      "2.13 or newer with its headers (or let ./dev sdk build one) and configure "
                      "anew with -DQVR_REALSENSE2=ON -DCMAKE_PREFIX_PATH=where it is");
    }
}
#endif

} // namespace
