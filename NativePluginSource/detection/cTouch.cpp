#include "detection/cTouch.h"

#include "detection/touchCalibration.h"

namespace QVR {

namespace {

float lerp(float from, float to, double amount) {
    return static_cast<float>(from + (static_cast<double>(to) - from) * amount);
}

} // namespace

void cTouch::setCurrentPosition(float x, float y, float z) {
    const TouchPosition position{x, y, z};
    if (confidence < 0) {
        previousPos = position;
        lerpedPos = position;
    } else {
        previousPos = currentPos;
        const double amount = touchSmoothing();
        lerpedPos.x = lerp(lerpedPos.x, currentPos.x, amount);
        lerpedPos.y = lerp(lerpedPos.y, currentPos.y, amount);
        lerpedPos.z = lerp(lerpedPos.z, currentPos.z, amount);
    }
    currentPos = position;
}

void cTouch::getLerpedPos(Vector3& out) {
    out.x = lerpedPos.x;
    out.y = lerpedPos.y;
    out.z = lerpedPos.z;
}

float cTouch::getDistanceTo(float x, float y, float) {
    const float dx = currentPos.x - x;
    const float dy = currentPos.y - y;
    return dx * dx + dy * dy;
}

} // namespace QVR
