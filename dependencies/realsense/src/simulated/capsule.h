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

// The rays of one image row against the infinite cylinder around a capsule's axis.
//
// A ray is z * (x, y, 1), so the ray parameter is the depth itself. It hits where
// a z^2 + 2 b z + c = 0; along a row b is linear in x, and a and the discriminant b^2 - a c are
// quadratic.
struct CapsuleRow {
    double a0, a1, a2;
    double b0, b1;
    double h0, h1, h2; // the discriminant

    double a(double x) const { return a0 + (a1 + a2 * x) * x; }
    double b(double x) const { return b0 + b1 * x; }
    double discriminant(double x) const { return h0 + (h1 + h2 * x) * x; }
};

// The quantities of a capsule that no ray changes.
class CapsuleCaster {
  public:
    explicit CapsuleCaster(const Capsule& capsule)
        : capsule_(capsule), axis_(capsule.b - capsule.a), axisAxis_(dot(axis_, axis_)),
          axisOrigin_(-dot(axis_, capsule.a)), radiusSquared_(capsule.radius * capsule.radius),
          c_(axisAxis_ * (dot(capsule.a, capsule.a) - radiusSquared_) - axisOrigin_ * axisOrigin_) {
    }

    CapsuleRow row(double y) const;

    // Narrows [low, high], a range of x, to where rays of the row meet the cylinder. False when
    // none does.
    static bool narrow(const CapsuleRow& row, double& low, double& high);

    // Whether the ray hits; if so z, the distance from the camera plane, and the unit normal.
    bool cast(const CapsuleRow& row, double x, double y, double& z, Vector& normal) const {
        const double discriminant = row.discriminant(x);
        if (discriminant < 0.0)
            return false; // outside the infinite cylinder, which holds both end spheres as well
        // Zero when the ray runs along the axis: then the end at `a` is what it meets.
        const double a = std::max(row.a(x), 1e-12);
        z = (-row.b(x) - std::sqrt(discriminant)) / a;
        const double axisRay = axis_.x * x + axis_.y * y + axis_.z;
        double along = (axisOrigin_ + z * axisRay) / axisAxis_;
        if (!(along > 0.0 && along < 1.0)) {
            along = along > 0.5 ? 1.0 : 0.0;
            const Vector center = mix(capsule_.a, capsule_.b, along);
            const double rayRay = x * x + y * y + 1.0;
            const double rayCenter = center.x * x + center.y * y + center.z;
            const double under =
                rayCenter * rayCenter - rayRay * (dot(center, center) - radiusSquared_);
            if (under < 0.0)
                return false;
            z = (rayCenter - std::sqrt(under)) / rayRay;
        }
        const Vector foot = capsule_.a + axis_ * along;
        normal = (Vector{x * z, y * z, z} - foot) * (1.0 / capsule_.radius);
        return true;
    }

  private:
    Capsule capsule_;
    Vector axis_;
    double axisAxis_;
    double axisOrigin_;
    double radiusSquared_;
    double c_;
};

// Casts the ray of every pixel of `box` at the capsule and calls visit(column, row, x, y, z,
// normal) for each that hits; (x, y, 1) is the direction of the ray.
template <class Visit>
void castCapsule(const Capsule& capsule, const rs_intrinsics& intrinsics, const PixelBox& box,
                 Visit visit) {
    const CapsuleCaster caster(capsule);
    const double centerX = static_cast<double>(intrinsics.ppx);
    const double focalX = static_cast<double>(intrinsics.fx);
    const double stepX = 1.0 / focalX;
    const double stepY = 1.0 / static_cast<double>(intrinsics.fy);
    for (int row = box.top; row < box.bottom; ++row) {
        const double y = (row - static_cast<double>(intrinsics.ppy)) * stepY;
        const CapsuleRow rays = caster.row(y);
        double low = (box.left - centerX) * stepX;
        double high = (box.right - 1 - centerX) * stepX;
        if (!CapsuleCaster::narrow(rays, low, high))
            continue;
        // A pixel more on both sides, for the cast itself decides.
        const int first = std::max(box.left, static_cast<int>(low * focalX + centerX) - 1);
        const int end = std::min(box.right, static_cast<int>(high * focalX + centerX) + 2);
        for (int column = first; column < end; ++column) {
            const double x = (column - centerX) * stepX;
            double z;
            Vector normal;
            if (caster.cast(rays, x, y, z, normal))
                visit(column, row, x, y, z, normal);
        }
    }
}

} // namespace camera::simulated
