#include "host/TouchTable.h"

#include <gtest/gtest.h>

namespace {

using host::Touch;
using host::TouchChange;
using host::TouchTable;
using Kind = TouchChange::Kind;

std::vector<Kind> kinds(const std::vector<TouchChange>& changes) {
    std::vector<Kind> result;
    for (const TouchChange& change : changes) {
        result.push_back(change.kind);
    }
    return result;
}

TEST(TouchTable, TellsOfTouchesInTheOrderOfTheirSlots) {
    TouchTable table(1);
    const auto changes = table.update({{7, 1, 2, 3}, {2, 4, 5, 6}}, 0.5);
    ASSERT_EQ(kinds(changes), (std::vector{Kind::down, Kind::down}));
    EXPECT_EQ(changes[0].touch, (Touch{2, 4, 5, 6}));
    EXPECT_EQ(changes[1].touch, (Touch{7, 1, 2, 3}));
    ASSERT_EQ(table.touches().size(), 2u);
    EXPECT_EQ(table.touches()[0].touch.slot, 2);
    EXPECT_DOUBLE_EQ(table.touches()[0].since, 0.5);
    EXPECT_EQ(table.downCount(), 2u);
}

TEST(TouchTable, KeepsQuietAboutSmallSteps) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}}, 0);
    EXPECT_TRUE(table.update({{0, 10.6f, 10, 0}}, 1).empty());
    EXPECT_FLOAT_EQ(table.touches()[0].touch.x, 10.6f);
}

TEST(TouchTable, TellsOfSmallStepsThatAddUp) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}}, 0);
    table.update({{0, 10.6f, 10, 0}}, 1);
    const auto changes = table.update({{0, 11.1f, 10, 0}}, 2);
    ASSERT_EQ(kinds(changes), std::vector{Kind::move});
    EXPECT_FLOAT_EQ(changes[0].touch.x, 11.1f);
}

TEST(TouchTable, CountsDepthAsMovement) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}}, 0);
    EXPECT_EQ(kinds(table.update({{0, 10, 10, 1}}, 1)), std::vector{Kind::move});
}

TEST(TouchTable, LiftsWhereItWasLast) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}, {1, 50, 50, 0}}, 0);
    table.update({{0, 10.5f, 10, 0}, {1, 50, 50, 0}}, 1);
    const auto changes = table.update({{1, 60, 50, 0}}, 2);
    ASSERT_EQ(kinds(changes), (std::vector{Kind::up, Kind::move}));
    EXPECT_EQ(changes[0].touch, (Touch{0, 10.5f, 10, 0}));
}

TEST(TouchTable, LiftsAllAtOnce) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}, {1, 50, 50, 0}}, 0);
    EXPECT_EQ(kinds(table.liftAll()), (std::vector{Kind::up, Kind::up}));
    EXPECT_TRUE(table.touches().empty());
    EXPECT_TRUE(table.liftAll().empty());
}

TEST(TouchTable, CountsATouchThatComesBackAgain) {
    TouchTable table(1);
    table.update({{0, 10, 10, 0}}, 0);
    table.update({}, 1);
    EXPECT_EQ(kinds(table.update({{0, 10, 10, 0}}, 2)), std::vector{Kind::down});
    EXPECT_EQ(table.downCount(), 2u);
    EXPECT_DOUBLE_EQ(table.touches()[0].since, 2);
}

TEST(TouchTable, KeepsATrailOfLimitedLength) {
    TouchTable table(1);
    for (int i = 0; i < 30; ++i) {
        table.update({{0, static_cast<float>(i), 0, 0}}, i);
    }
    const auto& trail = table.touches()[0].trail;
    ASSERT_EQ(trail.size(), TouchTable::trailLength);
    EXPECT_FLOAT_EQ(trail.back()[0], 29);
    EXPECT_FLOAT_EQ(trail.front()[0], 30 - static_cast<float>(TouchTable::trailLength));
}

} // namespace
