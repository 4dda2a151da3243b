#include "simulated/color_renderer.h"

#include "simulated/display_picture.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace camera::simulated {
namespace {

constexpr float farAway = std::numeric_limits<float>::max();

// Where two capsules meet, flesh has a fold and no edge: this many millimetres to either side of
// the line the shading passes from one to the other.
constexpr double softSeam = 2.5;

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 1.0) * 255.0 + 0.5);
}

Capsule inColorCamera(const Capsule& capsule) {
    Capsule result = capsule;
    result.a = pointInColorCamera(capsule.a);
    result.b = pointInColorCamera(capsule.b);
    return result;
}

// Unit vectors to a lamp over the left shoulder, and halfway from there to the camera.
constexpr Vector lamp{-0.5015, -0.6219, -0.6018};
constexpr Vector halfway{-0.2801, -0.3474, -0.8949};

struct Tones {
    Color dark;
    Color bright;
    double gloss;
};
constexpr Tones skin{{0.40, 0.21, 0.16}, {0.98, 0.78, 0.65}, 0.16};
constexpr Tones sleeve{{0.07, 0.12, 0.16}, {0.25, 0.42, 0.48}, 0.04};

// The lamp lights what is turned to it, and the display's glow what turns sideways. Runs for every
// covered pixel, so there is no division in it.
Color shade(const Tones& tones, const Vector& normal, double facing, double depth) {
    const double lit = std::max(0.0, dot(normal, lamp) * 0.74 + 0.26);
    Color color = blend(tones.dark, tones.bright, lit);
    const double shine = std::max(0.0, dot(normal, halfway));
    const double shine4 = shine * shine * shine * shine;
    color = blend(color, {1.0, 1.0, 1.0}, tones.gloss * shine4 * shine4 * shine4 * shine4);
    const double rim = (1.0 - facing) * (1.0 - facing);
    color = blend(color, {0.36, 0.38, 0.74}, 0.45 * rim);
    // What is nearer to the camera stands out.
    const double dim = 1.0 - 0.30 * std::clamp((depth - 290.0) * (1.0 / 90.0), 0.0, 1.0);
    return {color.red * dim, color.green * dim, color.blue * dim};
}

} // namespace

ColorRenderer::ColorRenderer(const rs_intrinsics& intrinsics, const Display& display)
    : intrinsics_(intrinsics), display_(display), touched_(intrinsics.width, intrinsics.height) {}

void ColorRenderer::paintBackground() {
    const std::size_t pixels =
        static_cast<std::size_t>(intrinsics_.width) * static_cast<std::size_t>(intrinsics_.height);
    nearest_.assign(pixels, farAway);
    background_.reserve(pixels * 3);
    const Vector origin = pointInColorCamera(display_.origin);
    const Vector right = directionInColorCamera(display_.right);
    const Vector down = directionInColorCamera(display_.down);
    const Vector front = directionInColorCamera(display_.front);
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
    const Tones& tones = capsule.material == Material::Skin ? skin : sleeve;
    const double radiusInPixels =
        capsule.radius * static_cast<double>(intrinsics_.fx) / (0.5 * (capsule.a.z + capsule.b.z));
    castCapsule(capsule, intrinsics_, box,
                [&](int column, int row, double x, double y, double z, const Vector& normal) {
                    const std::size_t pixel =
                        static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column);
                    const double gap = static_cast<double>(nearest_[pixel]) - z;
                    if (gap <= -softSeam)
                        return;
                    nearest_[pixel] = std::min(nearest_[pixel], static_cast<float>(z));
                    // 1 / length of (x, y, 1) as a series, good to a percent in the picture's
                    // corners.
                    const double square = x * x + y * y;
                    const double facing =
                        -dot(normal, {x, y, 1.0}) * (1.0 - square * (0.5 - 0.375 * square));
                    const Color color = shade(tones, normal, facing, z);
                    // Within a pixel of the outline the surface covers only a part of the pixel: a
                    // circle of this radius falls away from its edge with the square of `facing`.
                    double cover = std::min(1.0, 0.35 + 0.5 * facing * facing * radiusInPixels);
                    if (gap < softSeam)
                        cover *= smoothStep(-softSeam, softSeam, gap);
                    const auto put = [cover](std::uint8_t& value, double paint) {
                        const double under = value;
                        value = static_cast<std::uint8_t>(under + (paint * 255.0 - under) * cover +
                                                          0.5);
                    };
                    put(out[pixel * 3], color.red);
                    put(out[pixel * 3 + 1], color.green);
                    put(out[pixel * 3 + 2], color.blue);
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
