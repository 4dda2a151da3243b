// What tracking needs from the camera manager, which sits above it.
#pragma once

#include "foundation/Vector3.h"

namespace QVR {

// The share of the way that a smoothed position moves per frame, 0 to 1.
float touchSmoothing();

// Takes a camera-space point to the space in which touches are handed out; without a camera
// manager it stays in camera space.
void calibrateTouch(Vector3& point);

} // namespace QVR
