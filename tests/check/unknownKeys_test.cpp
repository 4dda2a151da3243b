#include "check/unknownKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using json11::Json;
using QVR::UnknownKey;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::set<std::string> known{"depthResX",      "streaming",   "streaming.fps",
                                  "streaming.port", "calibration", "calibration.fpx"};

// The unknown keys of the document, each as "key -> nearest".
std::vector<std::string> unknown(const std::string& text,
                                 const std::set<std::string>& keys = known) {
    std::string error;
    std::vector<std::string> named;
    for (const UnknownKey& key : QVR::unknownKeys(Json::parse(text, error), keys)) {
        named.push_back(key.key + " -> " + key.nearest);
    }
    EXPECT_EQ(error, "");
    return named;
}

} // namespace

TEST(UnknownKeys, AreNoneAmongTheKnown) {
    EXPECT_THAT(unknown(R"({"depthResX": 1, "streaming": {"fps": 1}})"), IsEmpty());
    EXPECT_THAT(unknown("[1, 2]"), IsEmpty());
}

TEST(UnknownKeys, AreNamedWithTheNearestKnownOne) {
    EXPECT_THAT(unknown(R"({"depthRezX": 1, "streaming": {"prot": 1}})"),
                ElementsAre("depthRezX -> depthResX", "streaming.prot -> streaming.port"));
}

TEST(UnknownKeys, DifferByLettersNotByTheirCase) {
    EXPECT_THAT(unknown(R"({"DEPTHRESX": 1})"), ElementsAre("DEPTHRESX -> depthResX"));
}

TEST(UnknownKeys, AreMeantForTheirOwnObjectWhenTwoAreEquallyNear) {
    EXPECT_THAT(unknown(R"({"streaming": {"fpy": 1}})"),
                ElementsAre("streaming.fpy -> streaming.fps"));
    EXPECT_THAT(unknown(R"({"calibration": {"fpy": 1}})"),
                ElementsAre("calibration.fpy -> calibration.fpx"));
}

TEST(UnknownKeys, AreFoundOutInTheWrongObject) {
    EXPECT_THAT(unknown(R"({"fps": 30})"), ElementsAre("fps -> streaming.fps"));
}

TEST(UnknownKeys, CoverWhatLiesBelowThem) {
    EXPECT_THAT(unknown(R"({"streams": {"fps": 1, "x": {"y": 1}}})"),
                ElementsAre("streams -> streaming"));
}

TEST(UnknownKeys, HaveNoNearestWhenNothingIsKnown) {
    EXPECT_THAT(unknown(R"({"a": 1})", {}), ElementsAre("a -> "));
}

TEST(UnknownKeys, MayBeOfAnyLength) {
    const std::string name(100000, 'x');
    EXPECT_EQ(unknown("{\"" + name + "\": 1}").size(), 1U);
}
