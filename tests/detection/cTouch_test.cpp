#include "camera/cameraManager.h"
#include "detection/cTouch.h"

#include <gtest/gtest.h>

namespace {

using QVR::cTouch;
using QVR::TouchPosition;

void expectPosition(const TouchPosition& position, float x, float y, float z) {
    EXPECT_EQ(position.x, x);
    EXPECT_EQ(position.y, y);
    EXPECT_EQ(position.z, z);
}

float smoothed(float from, float to) {
    return static_cast<float>(from + (static_cast<double>(to) - from) * 0.8f);
}

TEST(Touch, StartsFreeAtTheOrigin) {
    const cTouch touch;
    EXPECT_EQ(touch.confidence, -1);
    EXPECT_FALSE(touch.matched);
    expectPosition(touch.currentPos, 0.0f, 0.0f, 0.0f);
    expectPosition(touch.previousPos, 0.0f, 0.0f, 0.0f);
    expectPosition(touch.lerpedPos, 0.0f, 0.0f, 0.0f);
}

TEST(Touch, FreeSlotSnapsToThePosition) {
    cTouch touch;
    touch.currentPos = {1.0f, 2.0f, 3.0f};
    touch.setCurrentPosition(100.0f, 50.0f, 900.0f);
    expectPosition(touch.currentPos, 100.0f, 50.0f, 900.0f);
    expectPosition(touch.previousPos, 100.0f, 50.0f, 900.0f);
    expectPosition(touch.lerpedPos, 100.0f, 50.0f, 900.0f);
    EXPECT_EQ(touch.confidence, -1);
}

TEST(Touch, SmoothedPositionTrailsByOneFrame) {
    cTouch touch;
    touch.setCurrentPosition(100.0f, 50.0f, 900.0f);
    touch.confidence = 0;
    touch.setCurrentPosition(200.0f, 60.0f, 1000.0f);
    expectPosition(touch.currentPos, 200.0f, 60.0f, 1000.0f);
    expectPosition(touch.previousPos, 100.0f, 50.0f, 900.0f);
    expectPosition(touch.lerpedPos, 100.0f, 50.0f, 900.0f);
    touch.setCurrentPosition(300.0f, 70.0f, 1100.0f);
    expectPosition(touch.previousPos, 200.0f, 60.0f, 1000.0f);
    expectPosition(touch.lerpedPos, smoothed(100.0f, 200.0f), smoothed(50.0f, 60.0f),
                   smoothed(900.0f, 1000.0f));
    EXPECT_NEAR(touch.lerpedPos.x, 180.0f, 0.001f);
}

TEST(Touch, SmoothingIsComputedInDoublePrecision) {
    // In single precision the last bits of all three would differ.
    cTouch touch;
    touch.confidence = 2;
    touch.lerpedPos = {605.0f, 325.0f, 540.0f};
    touch.currentPos = {104.0f, 31.0f, 227.0f};
    touch.setCurrentPosition(0.0f, 0.0f, 0.0f);
    expectPosition(touch.lerpedPos, 204.199997f, 89.7999954f, 289.600006f);
}

TEST(Touch, SmoothingFollowsTheCameraManagersSetting) {
    const float before = QVR::cameraManager::touchLerp;
    QVR::cameraManager::touchLerp = 0.25f;
    cTouch touch;
    touch.confidence = 1;
    touch.lerpedPos = {100.0f, 100.0f, 100.0f};
    touch.currentPos = {200.0f, 300.0f, 500.0f};
    touch.setCurrentPosition(0.0f, 0.0f, 0.0f);
    QVR::cameraManager::touchLerp = before;
    expectPosition(touch.lerpedPos, 125.0f, 150.0f, 200.0f);
}

TEST(Touch, DistanceIsSquaredAndIgnoresDepth) {
    cTouch touch;
    touch.currentPos = {10.0f, 20.0f, 30.0f};
    EXPECT_EQ(touch.getDistanceTo(13.0f, 16.0f, 5000.0f), 25.0f);
    EXPECT_EQ(touch.getDistanceTo(10.0f, 20.0f, -1.0f), 0.0f);
}

TEST(Touch, LerpedPositionIsWidened) {
    cTouch touch;
    touch.lerpedPos = {0.1f, 0.2f, 0.3f};
    QVR::Vector3 position;
    touch.getLerpedPos(position);
    EXPECT_EQ(position.x, static_cast<double>(0.1f));
    EXPECT_EQ(position.y, static_cast<double>(0.2f));
    EXPECT_EQ(position.z, static_cast<double>(0.3f));
}

} // namespace
