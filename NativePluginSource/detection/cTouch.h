// One tracking slot: where a finger is, and how sure we are of it.
#pragma once

#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"

namespace QVR {

// A pixel column, a pixel row and a depth in depth units.
struct QVR_API TouchPosition {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

// One thread at a time.
class QVR_API cTouch {
  public:
    // Moves the slot to a blob's centre. A free slot starts there; a used one smooths towards
    // the position held before this call, so the smoothed value trails by one frame.
    void setCurrentPosition(float x, float y, float z);

    // The smoothed position, widened to double precision.
    void getLerpedPos(Vector3& out);

    // Squared distance in the image plane; `z` plays no part.
    float getDistanceTo(float x, float y, float z);

    int confidence = -1;  // -1: free slot
    bool matched = false; // a blob was given to this slot in the current frame
    TouchPosition currentPos;
    TouchPosition previousPos;
    TouchPosition lerpedPos; // smoothed
};

} // namespace QVR
