#include "foundation/SettingsListener.h"
#include "foundation/SettingsSection.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using json11::Json;
using QVR::SettingsSection;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Listener final : QVR::SettingsListener {
    void asked(const std::string& key) override { keys.push_back(key); }
    void found(const QVR::SettingsFinding& finding) override {
        findings.push_back(finding.key + ": " + finding.found + " -> " + finding.used);
    }

    std::vector<std::string> keys;
    std::vector<std::string> findings;
};

const Json document(Json::object{
    {"number", 30.5},
    {"text", "12"},
    {"on", true},
    {"items", Json::array{1, "x", 2}},
    {"inner", Json::object{{"whole", 7}}},
});

} // namespace

TEST(SettingsSection, ReadsValuesOfTheExpectedType) {
    const SettingsSection settings(document);
    EXPECT_EQ(settings.number("number", 1.0), 30.5);
    EXPECT_EQ(settings.whole("number", 1), 30);
    EXPECT_EQ(settings.text("text"), "12");
    EXPECT_TRUE(settings.isOn("on", false));
    EXPECT_TRUE(settings.truth("on", false));
    EXPECT_EQ(settings.numbers("items").size(), 3U);
    EXPECT_EQ(settings.section("inner").whole("whole", 0), 7);
}

TEST(SettingsSection, LeavesTheFallbackForEverythingElse) {
    const SettingsSection settings(document);
    for (const char* key : {"missing", "text", "on", "items", "inner"}) {
        EXPECT_EQ(settings.number(key, 1.5), 1.5) << key;
        EXPECT_EQ(settings.whole(key, 9U), 9U) << key;
    }
    EXPECT_EQ(settings.text("number"), "");
    EXPECT_TRUE(settings.isOn("text", true));
    EXPECT_TRUE(settings.isOn("number", false));
    EXPECT_FALSE(settings.truth("number", false));
    EXPECT_TRUE(settings.numbers("text").empty());
    EXPECT_FALSE(settings.section("text").isThere());
    EXPECT_EQ(settings.section("missing").section("more").whole("whole", 3), 3);
}

TEST(SettingsSection, KeepsTheLowBitsThatAFieldHolds) {
    const Json large(Json::object{{"key", 70000}, {"minus", -1}});
    const SettingsSection settings(large);
    EXPECT_EQ(settings.whole<std::uint16_t>("key", 0), 4464);
    EXPECT_EQ(settings.whole<std::uint32_t>("minus", 0), 4294967295U);
}

TEST(SettingsSection, UsesNumbersThatMakeNoSense) {
    EXPECT_EQ(SettingsSection(document).whole("number", 1, {0.0, 10.0}), 30);
    EXPECT_EQ(SettingsSection(document).number("number", 1.0, {31.0}), 30.5);
}

TEST(SettingsSection, TellsWhichKeysAreAsked) {
    Listener listener;
    const QVR::ListeningToSettings listening(listener);
    const SettingsSection settings(document);
    settings.number("number", 0.0);
    settings.section("inner").whole("whole", 0);
    settings.section("missing").section("more").whole("whole", 0);
    EXPECT_THAT(listener.keys, ElementsAre("number", "inner", "inner.whole", "missing",
                                           "missing.more", "missing.more.whole"));
    EXPECT_THAT(listener.findings, IsEmpty());
}

TEST(SettingsSection, TellsWhatIsUsedInsteadOfWhatIsThere) {
    Listener listener;
    const QVR::ListeningToSettings listening(listener);
    const SettingsSection settings(document);
    settings.whole("number", 1);
    settings.whole("text", 1);
    settings.isOn("items", false);
    settings.numbers("items");
    settings.section("inner").hasNumber("missing", "the usual one");
    EXPECT_THAT(listener.findings,
                ElementsAre("number: 30.5 -> 30", "text: \"12\" -> 1", "items: a list -> false",
                            "items: 1 items that are no numbers -> 0 for each",
                            "inner.missing: nothing -> the usual one"));
}

TEST(SettingsSection, TellsOnlyWhileSomeoneListens) {
    Listener outer;
    {
        const QVR::ListeningToSettings listening(outer);
        Listener inner;
        {
            const QVR::ListeningToSettings innermost(inner);
            SettingsSection(document).whole("first", 0);
        }
        SettingsSection(document).whole("second", 0);
        EXPECT_THAT(inner.keys, ElementsAre("first"));
    }
    SettingsSection(document).whole("third", 0);
    EXPECT_THAT(outer.keys, ElementsAre("second"));
}
