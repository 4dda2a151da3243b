// The one solid of the scene: all points within a radius of a line segment. Fingers, palms and
// arms are made of them.
#pragma once

#include "simulated/vector.h"

#include <algorithm>
#include <cmath>

#include <librealsense/rs.h>

namespace camera::simulated {

enum class Material { Skin, Sleeve };

struct Capsule {
    Vector a;
    Vector b;
    double radius = 0.0;
    Material material = Material::Skin;
};

// A rectangle of pixels; the ends are one past the last.
struct PixelBox {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;

    bool empty() const { return left >= right || top >= bottom; }
};

// The pixels that can see the capsule, which lies in the camera's space in front of it.
PixelBox boundsInImage(const Capsule& capsule, const rs_intrinsics& intrinsics);

// Casts the ray of every pixel of `box` at the capsule and calls visit(column, row, z, normal) for
// each that hits: z is the distance from the camera plane, the normal has unit length.
//
// A ray is z * (x, y, 1), so the ray parameter is the depth itself. Along a row the coefficients
// of the quadratic for the infinite cylinder are polynomials in x; a hit beyond the segment's
// ends is one of the sphere there or none.
template <class Visit>
void castCapsule(const Capsule& capsule, const rs_intrinsics& intrinsics, const PixelBox& box,
                 Visit visit) {
    const Vector axis = capsule.b - capsule.a;
    const double axisAxis = dot(axis, axis);
    const double axisOrigin = -dot(axis, capsule.a);
    const double originOrigin = dot(capsule.a, capsule.a);
    const double radiusSquared = capsule.radius * capsule.radius;
    const double c = axisAxis * (originOrigin - radiusSquared) - axisOrigin * axisOrigin;
    const double perRadius = 1.0 / capsule.radius;
    const double stepX = 1.0 / static_cast<double>(intrinsics.fx);
    const double stepY = 1.0 / static_cast<double>(intrinsics.fy);

    for (int row = box.top; row < box.bottom; ++row) {
        const double y = (row - static_cast<double>(intrinsics.ppy)) * stepY;
        const double axisRow = axis.y * y + axis.z;
        const double originRow = -(capsule.a.y * y + capsule.a.z);
        for (int column = box.left; column < box.right; ++column) {
            const double x = (column - static_cast<double>(intrinsics.ppx)) * stepX;
            const double rayRay = x * x + y * y + 1.0;
            const double axisRay = axis.x * x + axisRow;
            const double rayOrigin = originRow - capsule.a.x * x;
            // Zero when the ray runs along the axis: then the end at `a` is what it meets.
            const double a = std::max(axisAxis * rayRay - axisRay * axisRay, 1e-12);
            const double b = axisAxis * rayOrigin - axisOrigin * axisRay;
            const double discriminant = b * b - a * c;
            if (discriminant < 0.0)
                continue; // outside the infinite cylinder, which holds both spheres as well
            double z = (-b - std::sqrt(discriminant)) / a;
            double along = (axisOrigin + z * axisRay) / axisAxis;
            if (!(along > 0.0 && along < 1.0)) {
                along = along > 0.5 ? 1.0 : 0.0;
                const Vector center = mix(capsule.a, capsule.b, along);
                const double rayCenter = center.x * x + center.y * y + center.z;
                const double under =
                    rayCenter * rayCenter - rayRay * (dot(center, center) - radiusSquared);
                if (under < 0.0)
                    continue;
                z = (rayCenter - std::sqrt(under)) / rayRay;
            }
            const Vector foot = capsule.a + axis * along;
            visit(column, row, z, (Vector{x * z, y * z, z} - foot) * perRadius);
        }
    }
}

} // namespace camera::simulated
