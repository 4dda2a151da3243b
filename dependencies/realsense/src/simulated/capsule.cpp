#include "simulated/capsule.h"

namespace camera::simulated {
namespace {

struct Range {
    double low;
    double high;
};

// The slopes lateral / z between which a sphere is seen: those of the two tangents.
Range tangents(double lateral, double z, double radius) {
    const double reach = radius * std::sqrt(lateral * lateral + z * z - radius * radius);
    const double scale = 1.0 / (z * z - radius * radius);
    return {(lateral * z - reach) * scale, (lateral * z + reach) * scale};
}

Range pixels(Range a, Range b, float focal, float principal, int size) {
    const double low = std::min(a.low, b.low) * static_cast<double>(focal);
    const double high = std::max(a.high, b.high) * static_cast<double>(focal);
    const auto inside = [&](double value) {
        return std::clamp(value + static_cast<double>(principal), -1.0, size + 1.0);
    };
    return {inside(low), inside(high)};
}

} // namespace

PixelBox boundsInImage(const Capsule& capsule, const rs_intrinsics& intrinsics) {
    const Range columns = pixels(tangents(capsule.a.x, capsule.a.z, capsule.radius),
                                 tangents(capsule.b.x, capsule.b.z, capsule.radius), intrinsics.fx,
                                 intrinsics.ppx, intrinsics.width);
    const Range rows = pixels(tangents(capsule.a.y, capsule.a.z, capsule.radius),
                              tangents(capsule.b.y, capsule.b.z, capsule.radius), intrinsics.fy,
                              intrinsics.ppy, intrinsics.height);
    PixelBox box;
    box.left = std::max(0, static_cast<int>(std::ceil(columns.low)));
    box.right = std::min(intrinsics.width, static_cast<int>(std::floor(columns.high)) + 1);
    box.top = std::max(0, static_cast<int>(std::ceil(rows.low)));
    box.bottom = std::min(intrinsics.height, static_cast<int>(std::floor(rows.high)) + 1);
    return box;
}

CapsuleRow CapsuleCaster::row(double y) const {
    // Products of the ray (x, y, 1) with itself, the axis and the way from `a` to the camera, each
    // as polynomials in x.
    const double rayRay0 = y * y + 1.0;
    const double axisRay0 = axis_.y * y + axis_.z;
    const double rayOrigin0 = -(capsule_.a.y * y + capsule_.a.z);
    CapsuleRow row;
    row.a0 = axisAxis_ * rayRay0 - axisRay0 * axisRay0;
    row.a1 = -2.0 * axisRay0 * axis_.x;
    row.a2 = axisAxis_ - axis_.x * axis_.x;
    row.b0 = axisAxis_ * rayOrigin0 - axisOrigin_ * axisRay0;
    row.b1 = -axisAxis_ * capsule_.a.x - axisOrigin_ * axis_.x;
    row.h0 = row.b0 * row.b0 - c_ * row.a0;
    row.h1 = 2.0 * row.b0 * row.b1 - c_ * row.a1;
    row.h2 = row.b1 * row.b1 - c_ * row.a2;
    return row;
}

bool CapsuleCaster::narrow(const CapsuleRow& row, double& low, double& high) {
    if (row.h2 >= 0.0)
        return true; // seen end-on: no two outlines to keep between
    const double middle = -row.h1 / (2.0 * row.h2);
    const double reachSquared = middle * middle - row.h0 / row.h2;
    if (reachSquared < 0.0)
        return false;
    const double reach = std::sqrt(reachSquared);
    low = std::max(low, middle - reach);
    high = std::min(high, middle + reach);
    return low <= high;
}

} // namespace camera::simulated
