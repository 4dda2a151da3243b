#include "alignment.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace camera {
namespace {

bool isPinhole(const rs_intrinsics& intrinsics) {
    return intrinsics.model == RS_DISTORTION_NONE ||
           std::all_of(std::begin(intrinsics.coeffs), std::end(intrinsics.coeffs),
                       [](float coefficient) { return coefficient == 0.0f; });
}

// A position in pixels becomes the pixel by adding a half and dropping the fraction, which lets
// positions down to -1.5 still count as pixel 0. Not a number is outside.
bool pixelInside(float position, int count, int& pixel) {
    const float shifted = position + 0.5f;
    if (!(shifted > -1.0f && shifted < static_cast<float>(count))) {
        return false;
    }
    pixel = static_cast<int>(shifted);
    return true;
}

} // namespace

Alignment::Alignment(const CameraGeometry& geometry) : geometry_(geometry) {
    if (!isPinhole(geometry.color) &&
        geometry.color.model != RS_DISTORTION_MODIFIED_BROWN_CONRADY) {
        throw std::runtime_error("aligned streams need a colour camera without lens distortion or "
                                 "with the modified Brown-Conrady model");
    }
    if (!isPinhole(geometry.depth) && geometry.depth.model != RS_DISTORTION_INVERSE_BROWN_CONRADY) {
        throw std::runtime_error("aligned streams need a depth camera without lens distortion or "
                                 "with the inverse Brown-Conrady model");
    }
    const int columns = geometry.depth.width + 1;
    const int rows = geometry.depth.height + 1;
    corners_.reserve(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            corners_.push_back(
                deproject(static_cast<float>(column) - 0.5f, static_cast<float>(row) - 0.5f));
        }
    }
}

void Alignment::colorToDepth(std::span<const std::uint16_t> depth,
                             std::span<const std::uint8_t> color,
                             std::span<std::uint8_t> aligned) const {
    std::fill(aligned.begin(), aligned.end(), std::uint8_t{0});
    forEachPatch(depth, [&](std::size_t index, Pixel first, Pixel last) {
        if (last.x < first.x || last.y < first.y) {
            return;
        }
        // Of the colour pixels that the patch covers the last one stays.
        const std::size_t from =
            static_cast<std::size_t>(last.y) * static_cast<std::size_t>(geometry_.color.width) +
            static_cast<std::size_t>(last.x);
        std::copy_n(color.begin() + static_cast<std::ptrdiff_t>(from * 3), 3,
                    aligned.begin() + static_cast<std::ptrdiff_t>(index * 3));
    });
}

void Alignment::depthToColor(std::span<const std::uint16_t> depth,
                             std::span<std::uint16_t> aligned) const {
    std::fill(aligned.begin(), aligned.end(), std::uint16_t{0});
    const auto width = static_cast<std::size_t>(geometry_.color.width);
    forEachPatch(depth, [&](std::size_t index, Pixel first, Pixel last) {
        const std::uint16_t sample = depth[index];
        for (int y = first.y; y <= last.y; ++y) {
            for (int x = first.x; x <= last.x; ++x) {
                std::uint16_t& seen =
                    aligned[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
                seen = seen ? std::min(seen, sample) : sample;
            }
        }
    });
}

template <class Visit>
void Alignment::forEachPatch(std::span<const std::uint16_t> depth, Visit&& visit) const {
    const auto width = static_cast<std::size_t>(geometry_.depth.width);
    const auto height = static_cast<std::size_t>(geometry_.depth.height);
    const std::size_t columns = width + 1;
    for (std::size_t row = 0; row < height; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            const std::size_t index = row * width + column;
            if (depth[index] == 0) {
                continue;
            }
            const float distance = static_cast<float>(depth[index]) * geometry_.depthScale;
            const std::size_t corner = row * columns + column;
            Pixel first{};
            Pixel last{};
            if (project(corners_[corner], distance, first) &&
                project(corners_[corner + columns + 1], distance, last)) {
                visit(index, first, last);
            }
        }
    }
}

Alignment::Ray Alignment::deproject(float column, float row) const {
    const rs_intrinsics& lens = geometry_.depth;
    const float x = (column - lens.ppx) / lens.fx;
    const float y = (row - lens.ppy) / lens.fy;
    if (lens.model != RS_DISTORTION_INVERSE_BROWN_CONRADY) {
        return {x, y};
    }
    const float* const c = lens.coeffs;
    const float r2 = x * x + y * y;
    const float radial = 1 + c[0] * r2 + c[1] * r2 * r2 + c[4] * r2 * r2 * r2;
    return {x * radial + 2 * c[2] * x * y + c[3] * (r2 + 2 * x * x),
            y * radial + 2 * c[3] * x * y + c[2] * (r2 + 2 * y * y)};
}

bool Alignment::project(Ray ray, float distance, Pixel& pixel) const {
    const float* const r = geometry_.depthToColor.rotation;
    const float* const t = geometry_.depthToColor.translation;
    const float x = ray.x * distance;
    const float y = ray.y * distance;
    const float movedX = r[0] * x + r[3] * y + r[6] * distance + t[0];
    const float movedY = r[1] * x + r[4] * y + r[7] * distance + t[1];
    const float movedZ = r[2] * x + r[5] * y + r[8] * distance + t[2];
    const rs_intrinsics& lens = geometry_.color;
    const Ray seen = distort({movedX / movedZ, movedY / movedZ});
    return pixelInside(seen.x * lens.fx + lens.ppx, lens.width, pixel.x) &&
           pixelInside(seen.y * lens.fy + lens.ppy, lens.height, pixel.y);
}

// The modified model shifts tangentially what is stretched radially already.
Alignment::Ray Alignment::distort(Ray ray) const {
    const rs_intrinsics& lens = geometry_.color;
    if (lens.model != RS_DISTORTION_MODIFIED_BROWN_CONRADY) {
        return ray;
    }
    const float* const c = lens.coeffs;
    const float r2 = ray.x * ray.x + ray.y * ray.y;
    const float radial = 1 + c[0] * r2 + c[1] * r2 * r2 + c[4] * r2 * r2 * r2;
    const float x = ray.x * radial;
    const float y = ray.y * radial;
    return {x + 2 * c[2] * x * y + c[3] * (r2 + 2 * x * x),
            y + 2 * c[3] * x * y + c[2] * (r2 + 2 * y * y)};
}

} // namespace camera
