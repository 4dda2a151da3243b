// A recording of the first version that was released with the program. Whatever becomes of the
// format, this one has to be read.
#include "images/recording.h"
#include "recording/RecordedFrames.h"
#include "source_uri.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

const std::string folder = RECORDING;

TEST(ReferenceRecording, TellsWhatWasSent) {
    recording::RecordedFrames frames(folder);
    EXPECT_TRUE(frames.description().calibrated);
    EXPECT_FALSE(frames.torn());
    ASSERT_EQ(frames.count(), 3U);
    const auto first = frames.next();
    EXPECT_EQ(first->number, 0U);
    EXPECT_EQ(first->dropped, 0U);
    EXPECT_FALSE(first->tracking);
    EXPECT_EQ(first->touches[0].active, 0);
    const auto second = frames.next();
    EXPECT_EQ(second->number, 3U);
    EXPECT_EQ(second->seconds, 0.141925617);
    EXPECT_EQ(second->dropped, 2U);
    EXPECT_EQ(second->touches[0].active, 1);
    EXPECT_EQ(double{second->touches[0].x}, 115.19999694824219);
    EXPECT_EQ(second->tracked[1].z, 2169.239990234375);
    EXPECT_EQ(second->touches[2].active, 0);
    EXPECT_EQ(double{second->touches[2].x}, -1.0);
    ASSERT_TRUE(second->tracking);
    EXPECT_EQ(second->tracking->cutoff, 2187);
    EXPECT_EQ(second->tracking->slots[1].lerpedPos.z, 2170.199951171875);
    EXPECT_EQ(frames.next()->number, 6U);
    EXPECT_FALSE(frames.next());
}

TEST(ReferenceRecording, Plays) {
    const auto camera = camera::makeSource("images:" + folder);
    const camera::CameraGeometry geometry = camera->configure({}, {});
    EXPECT_EQ(geometry.depth.width, 160);
    EXPECT_EQ(geometry.depth.ppy, 60.625F);
    EXPECT_EQ(geometry.color.height, 24);
    EXPECT_EQ(geometry.framerate, 30);
    EXPECT_EQ(geometry.depthScale, 0.000125F);
    EXPECT_EQ(geometry.depthToColor.translation[0], 0.0256F);
    EXPECT_EQ(camera->truth(2).frame, 6U);
    EXPECT_EQ(camera->truth(2).seconds, 0.233217081);
    std::vector<std::uint16_t> depth(160 * 120);
    std::vector<std::uint8_t> color(32 * 24 * 3);
    camera->render(1, depth, color);
    // The fingertip of the first touch is the nearest there.
    const auto nearest = std::min_element(depth.begin() + 50 * 160, depth.begin() + 60 * 160,
                                          [](auto a, auto b) { return a && (!b || a < b); });
    EXPECT_EQ(*nearest, 2149);
    EXPECT_TRUE(std::any_of(color.begin(), color.end(), [](auto byte) { return byte > 100; }));
}

} // namespace
