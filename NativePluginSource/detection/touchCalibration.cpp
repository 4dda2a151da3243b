// The one place where detection looks up to the camera manager.
#include "detection/touchCalibration.h"

namespace QVR {

float touchSmoothing() {
    return 0.8f;
}

void calibrateTouch(Vector3&) {}

} // namespace QVR
