// A point or a vector of three doubles. The unit is that of the space it is in: pixels and depth
// units in camera space, the display's own unit after calibration.
#pragma once

#include "foundation/qvrApi.h"

namespace QVR {

struct QVR_API Vector3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

} // namespace QVR
