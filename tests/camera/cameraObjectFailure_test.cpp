// A camera object that cannot be created, which only a failing allocation can bring about.
#include "camera/ManagerFixture.h"
#include "camera/hardwareCamera.h"

#include <cstdlib>
#include <new>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::size_t sizeToRefuse = 0;

} // namespace

void* operator new(std::size_t size) {
    if (size == sizeToRefuse) {
        sizeToRefuse = 0;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

class CameraObjectFailure : public support::ManagerFixture {};

TEST_F(CameraObjectFailure, SetUpContinuesWithoutACamera) {
    sizeToRefuse = sizeof(QVR::hardwareCamera);
    QVR::cameraManager::init();
    EXPECT_EQ(sizeToRefuse, 0U);
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
