#include "simulated/color_renderer.h"

#include "simulated/display_picture.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace camera::simulated {
namespace {

constexpr float farAway = std::numeric_limits<float>::max();

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 1.0) * 255.0 + 0.5);
}

Capsule inColorCamera(const Capsule& capsule) {
    Capsule result = capsule;
    result.a = pointInColorCamera(capsule.a);
    result.b = pointInColorCamera(capsule.b);
    return result;
}

// A lamp over the left shoulder, and the glow of the display from below on what turns sideways.
Color shade(Material material, const Vector& normal, double facing, double depth) {
    static const Vector lamp = normalized({-0.50, -0.62, -0.60});
    static const Vector halfway = normalized(lamp + Vector{0.0, 0.0, -1.0});
    const bool skin = material == Material::Skin;
    const double lit = std::max(0.0, (dot(normal, lamp) + 0.35) / 1.35);
    const Color dark = skin ? Color{0.40, 0.21, 0.16} : Color{0.07, 0.12, 0.16};
    const Color bright = skin ? Color{0.98, 0.78, 0.65} : Color{0.25, 0.42, 0.48};
    Color color = blend(dark, bright, lit);
    const double shine = std::max(0.0, dot(normal, halfway));
    const double squared = shine * shine * shine * shine;
    const double gloss = (skin ? 0.16 : 0.04) * squared * squared * squared * squared;
    color = blend(color, {1.0, 1.0, 1.0}, gloss);
    const double rim = (1.0 - facing) * (1.0 - facing);
    color = blend(color, {0.36, 0.38, 0.74}, 0.45 * rim);
    // What is nearer to the camera stands out.
    const double dim = 1.0 - 0.30 * smoothStep(290.0, 380.0, depth);
    return {color.red * dim, color.green * dim, color.blue * dim};
}

} // namespace

ColorRenderer::ColorRenderer(const rs_intrinsics& intrinsics)
    : intrinsics_(intrinsics), touched_(intrinsics.width, intrinsics.height) {}

void ColorRenderer::paintBackground() {
    const std::size_t pixels =
        static_cast<std::size_t>(intrinsics_.width) * static_cast<std::size_t>(intrinsics_.height);
    nearest_.assign(pixels, farAway);
    background_.reserve(pixels * 3);
    const Vector origin = pointInColorCamera(display().origin);
    const Vector right = directionInColorCamera(display().right);
    const Vector down = directionInColorCamera(display().down);
    const Vector front = directionInColorCamera(display().front);
    const double offset = dot(origin, front);
    for (int row = 0; row < intrinsics_.height; ++row) {
        const double y =
            (row - static_cast<double>(intrinsics_.ppy)) / static_cast<double>(intrinsics_.fy);
        for (int column = 0; column < intrinsics_.width; ++column) {
            const double x = (column - static_cast<double>(intrinsics_.ppx)) /
                             static_cast<double>(intrinsics_.fx);
            const double z = offset / dot(front, {x, y, 1.0});
            const Vector onPlane = Vector{x * z, y * z, z} - origin;
            const Color color = pictureAt(dot(onPlane, right), dot(onPlane, down),
                                          1.4 * z / static_cast<double>(intrinsics_.fx));
            const double corner = 1.0 - 0.55 * (x * x + y * y);
            background_.push_back(toByte(color.red * corner));
            background_.push_back(toByte(color.green * corner));
            background_.push_back(toByte(color.blue * corner));
        }
    }
}

void ColorRenderer::draw(const Capsule& capsule, std::span<std::uint8_t> out) {
    const PixelBox box = boundsInImage(capsule, intrinsics_);
    if (box.empty())
        return;
    touched_.add(box);
    const auto width = static_cast<std::size_t>(intrinsics_.width);
    castCapsule(
        capsule, intrinsics_, box, [&](int column, int row, double z, const Vector& normal) {
            const std::size_t pixel =
                static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column);
            if (static_cast<float>(z) >= nearest_[pixel])
                return;
            nearest_[pixel] = static_cast<float>(z);
            const double x = (column - static_cast<double>(intrinsics_.ppx)) /
                             static_cast<double>(intrinsics_.fx);
            const double y =
                (row - static_cast<double>(intrinsics_.ppy)) / static_cast<double>(intrinsics_.fy);
            const double facing = -dot(normal, {x, y, 1.0}) / std::sqrt(x * x + y * y + 1.0);
            const Color color = shade(capsule.material, normal, facing, z);
            // Within a pixel of the outline the surface covers only a part of the pixel: a circle
            // of this radius falls away from its edge with the square of `facing`.
            const double edge =
                0.5 * facing * facing * capsule.radius * static_cast<double>(intrinsics_.fx) / z;
            const double cover = std::min(1.0, 0.35 + edge);
            std::uint8_t* rgb = &out[pixel * 3];
            const Color under{rgb[0] / 255.0, rgb[1] / 255.0, rgb[2] / 255.0};
            const Color blended = blend(under, color, cover);
            rgb[0] = toByte(blended.red);
            rgb[1] = toByte(blended.green);
            rgb[2] = toByte(blended.blue);
        });
}

void ColorRenderer::render(const std::vector<Capsule>& capsules, std::span<std::uint8_t> out) {
    if (background_.empty())
        paintBackground();
    std::copy(background_.begin(), background_.end(), out.begin());

    // From far to near, so that soft outlines show what is behind them.
    std::vector<Capsule> sorted;
    sorted.reserve(capsules.size());
    for (const Capsule& capsule : capsules)
        sorted.push_back(inColorCamera(capsule));
    std::stable_sort(sorted.begin(), sorted.end(), [](const Capsule& one, const Capsule& other) {
        return one.a.z + one.b.z > other.a.z + other.b.z;
    });
    for (const Capsule& capsule : sorted)
        draw(capsule, out);

    for (int row = 0; row < intrinsics_.height; ++row) {
        const auto [first, end] = touched_[row];
        if (first >= end)
            continue;
        const auto start = nearest_.begin() + static_cast<std::ptrdiff_t>(row) * intrinsics_.width;
        std::fill(start + first, start + end, farAway);
    }
    touched_.clear();
}

} // namespace camera::simulated
