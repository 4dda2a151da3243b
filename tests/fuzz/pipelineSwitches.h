// The pipeline's switches outlive a camera manager: no run may start from what an earlier document
// has set.
#pragma once

#include "camera/cameraManager.h"

namespace fuzzing {

inline void resetPipelineSwitches() {
    QVR::cameraManager::serverSendColor = true;
    QVR::cameraManager::serverSendDepth = true;
    QVR::cameraManager::serverSendProcessed = true;
    QVR::cameraManager::serverSendTouch = true;
    QVR::cameraManager::serverAutoClose = true;
}

} // namespace fuzzing
