// The one place where detection looks up to the camera manager.
#include "detection/touchCalibration.h"

#include "camera/cameraManager.h"

namespace QVR {

float touchSmoothing() {
    return cameraManager::touchLerp;
}

void calibrateTouch(Vector3& point) {
    if (cameraManager* manager = cameraManager::get()) {
        manager->applyCalibrationToCoord(point);
    }
}

} // namespace QVR
