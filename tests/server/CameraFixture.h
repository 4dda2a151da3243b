// A fake camera, a calibration folder and the pipeline's switches, fresh for each test.
#pragma once

#include "camera/cameraManager.h"
#include "server/FakeCamera.h"
#include "support/LogCapture.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryVolume.h"

#include <string>

#include <gtest/gtest.h>

namespace support {

class CameraFixture : public testing::Test {
  protected:
    CameraFixture() {
        camera.reset();
        QVR::cameraManager::serverSendColor = false;
        QVR::cameraManager::serverSendDepth = true;
        QVR::cameraManager::serverSendProcessed = false;
        QVR::cameraManager::serverSendTouch = true;
        QVR::cameraManager::serverAutoClose = true;
    }

    // Clip distances and margins that let the fake's finger through, and `more` keys.
    void writeDocument(const std::string& more = "") const {
        volume.write("QVR_calibration/touch.json",
                     R"({"nearClipMeters": 0.1, "farClipMeters": 0.25, "touchDetection": {)"
                     R"("forwardFacing": {"borderClipTop": 0, "borderClipBottom": 0,)"
                     R"( "borderClipLeft": 0, "borderClipRight": 0}})" +
                         (more.empty() ? "" : ", " + more) + "}");
    }

    FakeCamera& camera = FakeCamera::get();
    TemporaryVolume volume;
    ScopedEnvironment source{"QVR_CAMERA", nullptr};
    LogCapture log;
};

} // namespace support
