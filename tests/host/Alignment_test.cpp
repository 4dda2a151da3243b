#include "demo/Alignment.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using demo::align;
using demo::Alignment;
using demo::HostFrame;
using demo::ServerFrame;

// A frame with one touch at `x`, or without a touch.
ServerFrame sent(double x) {
    ServerFrame frame;
    frame.touches.push_back({{2, {static_cast<float>(x), 5, 7}}, {0, 0}});
    return frame;
}
HostFrame received(double x) {
    HostFrame frame;
    frame.touches.push_back({2, {static_cast<float>(x), 5, 7}});
    return frame;
}
const ServerFrame sentNothing;
const HostFrame receivedNothing;

std::vector<std::size_t> serverFrames(const Alignment& alignment) {
    std::vector<std::size_t> indices;
    for (const Alignment::Pair& pair : alignment.pairs) {
        indices.push_back(pair.server);
    }
    return indices;
}

TEST(Alignment, JoinsFramesWithTheSameTouches) {
    const Alignment alignment = align({received(1), received(2)}, {sent(1), sent(2)});
    EXPECT_EQ(serverFrames(alignment), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(alignment.pairs[1].host, 1u);
    EXPECT_EQ(alignment.strangers, 0u);
}

TEST(Alignment, AllowsForFramesThatTheHostSkipped) {
    const Alignment alignment =
        align({received(1), received(4)}, {sent(0), sent(1), sent(2), sent(3), sent(4)});
    EXPECT_EQ(serverFrames(alignment), (std::vector<std::size_t>{1, 4}));
}

TEST(Alignment, GoesForwardOnly) {
    const Alignment alignment = align({received(2), received(1)}, {sent(1), sent(2)});
    EXPECT_EQ(serverFrames(alignment), std::vector<std::size_t>{1});
    EXPECT_EQ(alignment.strangers, 1u);
}

TEST(Alignment, JoinsRepeatedTouchesOneByOne) {
    const Alignment alignment = align({received(1), received(1)}, {sent(1), sent(1), sent(1)});
    EXPECT_EQ(serverFrames(alignment), (std::vector<std::size_t>{0, 1}));
}

TEST(Alignment, GoesOnAfterAStranger) {
    const Alignment alignment =
        align({received(1), received(99), received(3)}, {sent(1), sent(2), sent(3)});
    EXPECT_EQ(serverFrames(alignment), (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(alignment.strangers, 1u);
}

TEST(Alignment, LeavesOutFramesWithoutTouchesAndFailedUpdates) {
    HostFrame failed;
    failed.result = -101;
    const Alignment alignment = align({receivedNothing, failed, received(1)},
                                      {sentNothing, sentNothing, sent(1), sentNothing});
    EXPECT_EQ(serverFrames(alignment), std::vector<std::size_t>{2});
    EXPECT_EQ(alignment.pairs[0].host, 2u);
}

TEST(Alignment, TellsWhatTheHostHeard) {
    const Alignment alignment =
        align({receivedNothing, received(1), receivedNothing, received(2), receivedNothing},
              {sentNothing, sentNothing, sentNothing, sent(1), sent(1.5), sent(2), sentNothing,
               sentNothing});
    EXPECT_EQ(alignment.firstHeard, 2u);
    EXPECT_EQ(alignment.endHeard, 7u);
}

TEST(Alignment, HeardEverythingWhenNothingCanBeJoined) {
    const Alignment alignment = align({receivedNothing}, {sentNothing, sent(1)});
    EXPECT_EQ(alignment.firstHeard, 0u);
    EXPECT_EQ(alignment.endHeard, 2u);
    EXPECT_EQ(align({}, {sent(1)}).endHeard, 0u);
}

TEST(Alignment, ComparesSlotsAndPositionsInSinglePrecision) {
    ServerFrame server = sent(123.456789012345);
    EXPECT_TRUE(demo::sameTouches(received(123.456789), server));
    EXPECT_FALSE(demo::sameTouches(received(123.457), server));
    server.touches[0].touch.slot = 3;
    EXPECT_FALSE(demo::sameTouches(received(123.456789), server));
    EXPECT_FALSE(demo::sameTouches(receivedNothing, server));
    EXPECT_TRUE(demo::sameTouches(received(std::nan("")), sent(std::nan(""))));
}

} // namespace
