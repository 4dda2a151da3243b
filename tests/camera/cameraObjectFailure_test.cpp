// A camera object that cannot be created, which only a failing allocation can bring about.
#include "camera/FailingAllocation.h"
#include "camera/ManagerFixture.h"
#include "camera/hardwareCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class CameraObjectFailure : public support::ManagerFixture {};

TEST_F(CameraObjectFailure, SetUpContinuesWithoutACamera) {
    support::refuseNextAllocationOf(sizeof(QVR::hardwareCamera));
    QVR::cameraManager::init();
    EXPECT_FALSE(support::allocationRefusalPending());
    ASSERT_NE(QVR::cameraManager::get(), nullptr);
    EXPECT_THAT(
        log.messages(),
        testing::ElementsAre("Caught exception while initializing camera.",
                             "Could not read data from: QVR_calibration/touch.json",
                             "Could not read data from: QVR_calibration/touch_projectionMap.json",
                             "ERROR: realSense not initialized. Can't load cell calibration.",
                             "Failed to initialize the camera."));
    EXPECT_EQ(QVR::cameraManager::get()->camera, nullptr);
    EXPECT_EQ(QVR::cameraManager::get()->getCameraOneMeterScale(), -1.0f);
    EXPECT_EQ(QVR::cameraManager::update(), 1);
    EXPECT_THAT(fake.takeCalls(), testing::IsEmpty());
}

} // namespace
