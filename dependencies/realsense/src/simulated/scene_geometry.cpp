#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cmath>

namespace camera::simulated {
namespace {

using Matrix = std::array<Vector, 3>; // its columns

constexpr double radians(double degrees) {
    return degrees * 3.14159265358979323846 / 180.0;
}

Vector apply(const Matrix& matrix, const Vector& v) {
    return matrix[0] * v.x + matrix[1] * v.y + matrix[2] * v.z;
}

// Turns about x first, then y, then z.
Matrix rotation(double aboutX, double aboutY, double aboutZ) {
    const double cx = std::cos(aboutX), sx = std::sin(aboutX);
    const double cy = std::cos(aboutY), sy = std::sin(aboutY);
    const double cz = std::cos(aboutZ), sz = std::sin(aboutZ);
    return {{{cz * cy, sz * cy, -sy},
             {cz * sy * sx - sz * cx, sz * sy * sx + cz * cx, cy * sx},
             {cz * sy * cx + sz * sx, sz * sy * cx - cz * sx, cy * cx}}};
}

const Matrix& colorRotation() {
    static const Matrix matrix = rotation(radians(0.35), radians(-0.6), radians(0.2));
    return matrix;
}

constexpr Vector colorTranslation{25.6, 0.3, 3.9};

} // namespace

Display displayAt(double distance, double lean) {
    const Matrix tilt = rotation(radians(2.4), radians(-1.7 - lean), radians(0.8));
    Display result;
    result.right = tilt[0];
    result.down = tilt[1];
    result.front = tilt[2] * -1.0;
    const Vector center{3.0, -4.0, distance};
    result.origin =
        center - result.right * (result.width / 2.0) - result.down * (result.height / 2.0);
    return result;
}

const Display& display() {
    static const Display value = displayAt(usualDistance, 0.0);
    return value;
}

rs_intrinsics depthIntrinsics(int width, int height) {
    rs_intrinsics result{};
    const float scaleX = static_cast<float>(width) / 640.0f;
    const float scaleY = static_cast<float>(height) / 480.0f;
    result.width = width;
    result.height = height;
    result.ppx = 314.25f * scaleX;
    result.ppy = 242.5f * scaleY;
    result.fx = 476.0f * scaleX;
    result.fy = 476.0f * scaleY;
    result.model = RS_DISTORTION_NONE;
    return result;
}

rs_intrinsics colorIntrinsics(int width, int height) {
    rs_intrinsics result{};
    const float scale =
        std::max(static_cast<float>(width) / 1920.0f, static_cast<float>(height) / 1080.0f);
    result.width = width;
    result.height = height;
    result.ppx = static_cast<float>(width) / 2.0f + 8.5f * scale;
    result.ppy = static_cast<float>(height) / 2.0f - 6.25f * scale;
    result.fx = 1386.0f * scale;
    result.fy = 1386.0f * scale;
    result.model = RS_DISTORTION_NONE;
    return result;
}

rs_extrinsics depthToColor() {
    rs_extrinsics result{};
    for (std::size_t column = 0; column < 3; ++column) {
        const Vector& v = colorRotation()[column];
        result.rotation[column * 3] = static_cast<float>(v.x);
        result.rotation[column * 3 + 1] = static_cast<float>(v.y);
        result.rotation[column * 3 + 2] = static_cast<float>(v.z);
    }
    result.translation[0] = static_cast<float>(colorTranslation.x / 1000.0);
    result.translation[1] = static_cast<float>(colorTranslation.y / 1000.0);
    result.translation[2] = static_cast<float>(colorTranslation.z / 1000.0);
    return result;
}

Vector directionInColorCamera(const Vector& direction) {
    return apply(colorRotation(), direction);
}

Vector pointInColorCamera(const Vector& point) {
    return directionInColorCamera(point) + colorTranslation;
}

std::array<double, 2> project(const rs_intrinsics& intrinsics, const Vector& point) {
    return {static_cast<double>(intrinsics.fx) * point.x / point.z +
                static_cast<double>(intrinsics.ppx),
            static_cast<double>(intrinsics.fy) * point.y / point.z +
                static_cast<double>(intrinsics.ppy)};
}

} // namespace camera::simulated
