#include "host/TouchPlacer.h"

#include <gtest/gtest.h>

namespace {

using host::DepthSample;
using host::Snapshot;
using host::Touch;
using host::TouchPlacer;

std::array<float, 3> display(const DepthSample& sample) {
    return {200 - sample.column, sample.row / 2, sample.depth / 8};
}

std::array<float, 3> nothingLoaded(const DepthSample&) {
    return {0, 0, 0};
}

Snapshot twoFingers() {
    Snapshot snapshot;
    snapshot.depth = programs::DepthImage(160, 120, 4000);
    snapshot.processed = programs::GrayImage(160, 120);
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column) {
            snapshot.processed.at(40 + column, 30 + row) = 12;
            snapshot.processed.at(100 + column, 80 + row) = 12;
        }
    }
    return snapshot;
}

TEST(TouchPlacer, SamplesTheMarkedPixels) {
    const auto samples = TouchPlacer::samples(twoFingers());
    ASSERT_EQ(samples.size(), 50u);
    EXPECT_FLOAT_EQ(samples[0].column, 40);
    EXPECT_FLOAT_EQ(samples[0].row, 30);
    EXPECT_FLOAT_EQ(samples[0].depth, 4000);
}

TEST(TouchPlacer, SamplesEveryMeasurementWithoutAMask) {
    Snapshot snapshot = twoFingers();
    snapshot.processed = {};
    snapshot.depth.at(3, 3) = 0;
    EXPECT_EQ(TouchPlacer::samples(snapshot).size(), 160u * 120u - 1);
}

TEST(TouchPlacer, SamplesNothingWithoutDepth) {
    Snapshot snapshot = twoFingers();
    snapshot.depth = {};
    EXPECT_TRUE(TouchPlacer::samples(snapshot).empty());
}

TEST(TouchPlacer, ReadsASmallerDepthPictureAtTheMasksPixels) {
    Snapshot snapshot = twoFingers();
    snapshot.depth = programs::DepthImage(80, 60, 4000);
    snapshot.depth.at(50, 40) = 4800;
    const auto samples = TouchPlacer::samples(snapshot);
    ASSERT_EQ(samples.size(), 50u);
    EXPECT_FLOAT_EQ(samples[25].column, 100);
    EXPECT_FLOAT_EQ(samples[25].row, 80);
    EXPECT_FLOAT_EQ(samples[25].depth, 4800);
}

TEST(TouchPlacer, PutsATouchAtThePixelThatCalibratesNearest) {
    const auto samples = TouchPlacer::samples(twoFingers());
    const auto placed =
        TouchPlacer::place({{3, 200 - 102.2f, 41.1f, 500}, {8, 158, 16, 500}}, samples, display);
    ASSERT_EQ(placed.size(), 2u);
    EXPECT_EQ(placed[0].touch.slot, 3);
    EXPECT_FLOAT_EQ(placed[0].column, 102);
    EXPECT_FLOAT_EQ(placed[0].row, 82);
    EXPECT_FLOAT_EQ(placed[1].column, 42);
    EXPECT_FLOAT_EQ(placed[1].row, 32);
}

TEST(TouchPlacer, TakesTouchesForPixelsWithoutACalibration) {
    const auto samples = TouchPlacer::samples(twoFingers());
    const auto placed = TouchPlacer::place({{0, 42.5f, 32.5f, 4000}}, samples, nothingLoaded);
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_TRUE(placed[0].placed);
    EXPECT_FLOAT_EQ(placed[0].column, 42.5f);
    EXPECT_FLOAT_EQ(placed[0].row, 32.5f);
}

TEST(TouchPlacer, TakesTouchesForPixelsWhenThatFitsBetter) {
    const auto samples = TouchPlacer::samples(twoFingers());
    const auto placed = TouchPlacer::place({{0, 101, 81, 4000}}, samples, display);
    EXPECT_FLOAT_EQ(placed[0].column, 101);
    EXPECT_FLOAT_EQ(placed[0].row, 81);
}

TEST(TouchPlacer, TakesTouchesForPixelsWithoutSamples) {
    const auto placed = TouchPlacer::place({{0, 101, 81, 4000}}, {}, display);
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_FLOAT_EQ(placed[0].column, 101);
}

TEST(TouchPlacer, PlacesNothingWhenNothingTouches) {
    EXPECT_TRUE(TouchPlacer::place({}, TouchPlacer::samples(twoFingers()), display).empty());
}

} // namespace
