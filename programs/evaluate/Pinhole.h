// The plain way from a depth pixel to a point in space.
#pragma once

#include "evaluate/FrameRecord.h"

namespace evaluate {

struct Pinhole {
    double focalX = 1.0;
    double focalY = 1.0;
    double centerX = 0.0;
    double centerY = 0.0;
    double millimetersPerUnit = 1.0;

    // Millimetres right of, below and in front of the camera.
    Point3 toSpace(const Point3& measured) const {
        const double z = measured[2] * millimetersPerUnit;
        return {(measured[0] - centerX) / focalX * z, (measured[1] - centerY) / focalY * z, z};
    }
};

} // namespace evaluate
