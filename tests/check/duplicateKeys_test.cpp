#include "check/duplicateKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using QVR::duplicateKeys;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(DuplicateKeys, AreNamedWithTheObjectsAroundThem) {
    EXPECT_THAT(duplicateKeys(R"({"a": 1, "b": {"c": 1, "c": 2}, "a": 2, "b": {"d": 1}})"),
                ElementsAre("b.c", "a", "b"));
}

TEST(DuplicateKeys, AreNamedOnce) {
    EXPECT_THAT(duplicateKeys(R"({"a": 1, "a": 2, "a": 3})"), ElementsAre("a"));
}

TEST(DuplicateKeys, AreSoughtWithinOneObject) {
    EXPECT_THAT(duplicateKeys(R"({"a": {"x": 1}, "b": {"x": 1}, "c": [{"x": 1}, {"x": 1}]})"),
                IsEmpty());
}

TEST(DuplicateKeys, AreFoundInListsAndAfterThem) {
    EXPECT_THAT(duplicateKeys(R"({"l": [[{"x": 1, "x": 2}], "t", null, true, 1.5, -1], "l": 0})"),
                ElementsAre("l.x", "l"));
}

TEST(DuplicateKeys, AreFoundAtTheTopOfAList) {
    EXPECT_THAT(duplicateKeys(R"([{"x": 1, "x": 2}])"), ElementsAre("x"));
    EXPECT_THAT(duplicateKeys("7"), IsEmpty());
}
