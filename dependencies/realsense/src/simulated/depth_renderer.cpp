#include "simulated/depth_renderer.h"

#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cstdlib>

namespace camera::simulated {
namespace {

constexpr double fineStepsPerMillimeter = unitsPerMillimeter * fineSteps;

std::vector<double> bendingOf(const rs_intrinsics& intrinsics, double bend) {
    std::vector<double> factors;
    if (bend == 0.0)
        return factors;
    const double middleX = 0.5 * (intrinsics.width - 1);
    const double middleY = 0.5 * (intrinsics.height - 1);
    const double corner = middleX * middleX + middleY * middleY;
    for (int row = 0; row < intrinsics.height; ++row) {
        for (int column = 0; column < intrinsics.width; ++column) {
            const double x = column - middleX;
            const double y = row - middleY;
            factors.push_back(1.0 + bend / bendDistance * ((x * x + y * y) / corner));
        }
    }
    return factors;
}

std::vector<FineDepth> planeOfDisplay(const rs_intrinsics& intrinsics, const Display& display,
                                      const std::vector<double>& bending) {
    std::vector<FineDepth> plane;
    plane.reserve(static_cast<std::size_t>(intrinsics.width) *
                  static_cast<std::size_t>(intrinsics.height));
    const Vector normal = display.front;
    const double offset = dot(display.origin, normal);
    for (int row = 0; row < intrinsics.height; ++row) {
        const double y =
            (row - static_cast<double>(intrinsics.ppy)) / static_cast<double>(intrinsics.fy);
        for (int column = 0; column < intrinsics.width; ++column) {
            const double x =
                (column - static_cast<double>(intrinsics.ppx)) / static_cast<double>(intrinsics.fx);
            const double factor = bending.empty() ? 1.0 : bending[plane.size()];
            const double z = factor * offset / dot(normal, {x, y, 1.0});
            plane.push_back(static_cast<FineDepth>(z * fineStepsPerMillimeter + 0.5));
        }
    }
    return plane;
}

} // namespace

DepthRenderer::DepthRenderer(const rs_intrinsics& intrinsics, const Sensor& sensor,
                             const Display& display, double bend)
    : intrinsics_(intrinsics), sensor_(sensor),
      projectorReach_(static_cast<double>(intrinsics.fx) * projectorBaseline *
                      fineStepsPerMillimeter),
      longestShadow_(
          static_cast<int>(static_cast<double>(intrinsics.fx) * projectorBaseline / nearClip) + 1),
      bending_(bendingOf(intrinsics, bend)),
      background_(planeOfDisplay(intrinsics, display, bending_)), surface_(background_),
      touched_(intrinsics.width, intrinsics.height) {}

std::span<FineDepth> DepthRenderer::surfaceRow(int row) {
    const auto width = static_cast<std::size_t>(intrinsics_.width);
    return std::span(surface_).subspan(static_cast<std::size_t>(row) * width, width);
}

void DepthRenderer::draw(const Capsule& capsule, std::uint64_t frame) {
    const PixelBox box = boundsInImage(capsule, intrinsics_);
    if (box.empty())
        return;
    touched_.add(box);
    const int width = intrinsics_.width;
    castCapsule(capsule, intrinsics_, box,
                [&](int column, int row, double x, double y, double z, const Vector& normal) {
                    const auto pixel = static_cast<std::uint32_t>(row * width + column);
                    const double read = bending_.empty() ? z : z * bending_[pixel];
                    const auto depth = static_cast<FineDepth>(read * fineStepsPerMillimeter + 0.5);
                    FineDepth& surface = surface_[pixel];
                    if (depth >= std::abs(surface))
                        return;
                    // The projector is about as far away as the camera, hence the division by z.
                    const double facing = dot(normal, {projectorBaseline / z - x, -y, -1.0});
                    surface = sensor_.losesGrazing(facing, frame, pixel) ? -depth : depth;
                });
}

void DepthRenderer::render(const std::vector<Capsule>& capsules, std::uint64_t frame,
                           std::span<std::uint16_t> out) {
    for (const Capsule& capsule : capsules)
        draw(capsule, frame);

    const auto width = static_cast<std::size_t>(intrinsics_.width);
    for (int row = 0; row < intrinsics_.height; ++row) {
        const auto [covered, end] = touched_[row];
        const int first = std::max(0, covered - longestShadow_);
        const std::span<FineDepth> surface = surfaceRow(row);
        const std::size_t start = static_cast<std::size_t>(row) * width;
        if (covered < end && !sensor_.ideal())
            Sensor::castShadows(surface, first, end, projectorReach_);
        sensor_.measure(surface, frame, static_cast<std::uint32_t>(start),
                        out.subspan(start, width));
        if (covered < end)
            std::copy(background_.begin() + static_cast<std::ptrdiff_t>(start) + first,
                      background_.begin() + static_cast<std::ptrdiff_t>(start) + end,
                      surface.begin() + first);
    }
    touched_.clear();
}

} // namespace camera::simulated
