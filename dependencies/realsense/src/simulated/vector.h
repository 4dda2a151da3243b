// The little vector algebra that the scene needs. Millimetres; x to the right, y down, z away from
// the depth camera.
#pragma once

#include <algorithm>
#include <cmath>

namespace camera::simulated {

struct Vector {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

constexpr Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vector operator*(const Vector& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
constexpr double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline double length(const Vector& a) {
    return std::sqrt(dot(a, a));
}
inline Vector normalized(const Vector& a) {
    return a * (1.0 / length(a));
}
constexpr Vector mix(const Vector& a, const Vector& b, double share) {
    return a + (b - a) * share;
}

// 0 up to `from`, 1 from `to` on, without a corner in between.
inline double smoothStep(double from, double to, double value) {
    const double share = std::min(1.0, std::max(0.0, (value - from) / (to - from)));
    return share * share * (3.0 - 2.0 * share);
}

} // namespace camera::simulated
