#include "host/outlines.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using host::enclosedArea;
using host::findOutlines;
using host::Point;
using programs::GrayImage;

GrayImage maskFrom(const std::vector<std::string>& rows) {
    GrayImage mask(static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size()));
    for (int row = 0; row < mask.height; ++row) {
        for (int column = 0; column < mask.width; ++column) {
            const char mark = rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
            mask.at(column, row) = mark == '#' ? 16 : 0;
        }
    }
    return mask;
}

TEST(Outlines, FindNothingInAnEmptyMask) {
    EXPECT_TRUE(findOutlines(GrayImage(5, 4)).empty());
    EXPECT_TRUE(findOutlines(GrayImage()).empty());
}

TEST(Outlines, GoClockwiseAroundASinglePixel) {
    const auto loops = findOutlines(maskFrom({"...", ".#.", "..."}));
    ASSERT_EQ(loops.size(), 1u);
    EXPECT_EQ(loops[0], (std::vector<Point>{{1, 1}, {2, 1}, {2, 2}, {1, 2}}));
    EXPECT_FLOAT_EQ(enclosedArea(loops[0]), 1);
}

TEST(Outlines, HaveCornersOnlyWhereTheyTurn) {
    const auto loops = findOutlines(maskFrom({"####", "####", "####"}));
    ASSERT_EQ(loops.size(), 1u);
    EXPECT_EQ(loops[0], (std::vector<Point>{{0, 0}, {4, 0}, {4, 3}, {0, 3}}));
}

TEST(Outlines, FollowStepsInAndOut) {
    const auto loops = findOutlines(maskFrom({"##..", "####", ".#.."}));
    ASSERT_EQ(loops.size(), 1u);
    EXPECT_FLOAT_EQ(enclosedArea(loops[0]), 7);
    EXPECT_EQ(loops[0].size(), 10u);
}

TEST(Outlines, GoTheOtherWayAroundHoles) {
    const auto loops = findOutlines(maskFrom({"###", "#.#", "###"}));
    ASSERT_EQ(loops.size(), 2u);
    EXPECT_FLOAT_EQ(enclosedArea(loops[0]), 9);
    EXPECT_FLOAT_EQ(enclosedArea(loops[1]), -1);
}

TEST(Outlines, KeepRegionsApartThatMeetAtACorner) {
    const auto loops = findOutlines(maskFrom({"#.", ".#"}));
    ASSERT_EQ(loops.size(), 2u);
    EXPECT_FLOAT_EQ(enclosedArea(loops[0]), 1);
    EXPECT_FLOAT_EQ(enclosedArea(loops[1]), 1);
}

TEST(Outlines, SurroundAsMuchAsIsMarked) {
    GrayImage mask(31, 23);
    unsigned state = 12345;
    int marked = 0;
    for (auto& value : mask.values) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<std::uint8_t>(state >> 31);
        marked += value;
    }
    float area = 0;
    for (const auto& loop : findOutlines(mask)) {
        area += enclosedArea(loop);
    }
    EXPECT_FLOAT_EQ(area, static_cast<float>(marked));
}

TEST(Outlines, SmoothingCutsCornersAndStaysInside) {
    const std::vector<Point> square = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    const auto round = host::smoothed(square, 1);
    EXPECT_EQ(round,
              (std::vector<Point>{{1, 0}, {3, 0}, {4, 1}, {4, 3}, {3, 4}, {1, 4}, {0, 3}, {0, 1}}));
    EXPECT_EQ(host::smoothed(square, 0), square);
}

} // namespace
