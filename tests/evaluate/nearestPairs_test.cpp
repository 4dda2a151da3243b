#include "common/ErrorFigures.h"
#include "common/nearestPairs.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using programs::NearestPair;
using programs::nearestPairs;

std::vector<NearestPair> pairsOf(const std::vector<double>& firsts,
                                 const std::vector<double>& seconds, double farthest) {
    return nearestPairs(firsts.size(), seconds.size(), farthest, [&](std::size_t a, std::size_t b) {
        return std::abs(firsts[a] - seconds[b]);
    });
}

TEST(NearestPairs, TheNearestTwoAreJoinedFirst) {
    // In the order of the first kind, 0 would take 5 and leave 100 to 6.
    const auto pairs = pairsOf({0, 6}, {5, 100}, 1000);
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0].first, 1u);
    EXPECT_EQ(pairs[0].second, 0u);
    EXPECT_EQ(pairs[0].distance, 1);
    EXPECT_EQ(pairs[1].first, 0u);
    EXPECT_EQ(pairs[1].second, 1u);
}

TEST(NearestPairs, NothingFartherThanTheLimitIsJoined) {
    EXPECT_EQ(pairsOf({0}, {40}, 40).size(), 1u);
    EXPECT_EQ(pairsOf({0}, {40.001}, 40).size(), 0u);
    EXPECT_EQ(pairsOf({}, {1, 2}, 40).size(), 0u);
}

TEST(NearestPairs, EachIsJoinedOnceAndOfEqualsTheLowerNumber) {
    const auto pairs = pairsOf({3, 3, 3}, {3}, 1);
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_EQ(pairs[0].first, 0u);
}

TEST(NearestPairs, WhatHasNoDistanceIsNotJoined) {
    EXPECT_TRUE(pairsOf({std::numeric_limits<double>::quiet_NaN()}, {0}, 1).empty());
    EXPECT_TRUE(pairsOf({std::numeric_limits<double>::infinity()}, {0}, 1e300).empty());
}

TEST(ErrorFigures, MeanAndWhatNinetyFiveOfAHundredStayWithin) {
    std::vector<double> errors;
    for (int i = 100; i >= 1; --i) {
        errors.push_back(i);
    }
    EXPECT_DOUBLE_EQ(programs::figuresOf(errors).mean, 50.5);
    EXPECT_DOUBLE_EQ(programs::figuresOf(errors).p95, 95);
    EXPECT_DOUBLE_EQ(programs::figuresOf({7}).p95, 7);
    EXPECT_DOUBLE_EQ(programs::figuresOf({}).mean, 0);
}

} // namespace
