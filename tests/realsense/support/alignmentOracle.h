// The aligned streams, pixel by pixel as their definition reads.
#pragma once

#include "frame_source.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace camera_test {

class AlignmentOracle {
  public:
    explicit AlignmentOracle(const camera::CameraGeometry& geometry) : cameras(geometry) {}

    std::vector<std::uint8_t> colorToDepth(const std::uint16_t* depth, const std::uint8_t* color) {
        std::vector<std::uint8_t> out(3 * static_cast<std::size_t>(cameras.depth.width) *
                                      static_cast<std::size_t>(cameras.depth.height));
        eachCovered(depth, [&](int depthPixel, int colorPixel) {
            for (int channel = 0; channel < 3; ++channel) {
                out[static_cast<std::size_t>(depthPixel * 3 + channel)] =
                    color[colorPixel * 3 + channel];
            }
        });
        return out;
    }

    std::vector<std::uint16_t> depthToColor(const std::uint16_t* depth) {
        std::vector<std::uint16_t> out(static_cast<std::size_t>(cameras.color.width) *
                                       static_cast<std::size_t>(cameras.color.height));
        eachCovered(depth, [&](int depthPixel, int colorPixel) {
            std::uint16_t& cell = out[static_cast<std::size_t>(colorPixel)];
            if (cell == 0 || depth[depthPixel] < cell) {
                cell = depth[depthPixel];
            }
        });
        return out;
    }

  private:
    std::optional<std::pair<int, int>> land(float u, float v, float metres) const {
        const rs_intrinsics& d = cameras.depth;
        float x = (u - d.ppx) / d.fx;
        float y = (v - d.ppy) / d.fy;
        if (d.model == RS_DISTORTION_INVERSE_BROWN_CONRADY) {
            const float r2 = x * x + y * y;
            const float f =
                1 + d.coeffs[0] * r2 + d.coeffs[1] * r2 * r2 + d.coeffs[4] * r2 * r2 * r2;
            const float bentX = x * f + 2 * d.coeffs[2] * x * y + d.coeffs[3] * (r2 + 2 * x * x);
            const float bentY = y * f + 2 * d.coeffs[3] * x * y + d.coeffs[2] * (r2 + 2 * y * y);
            x = bentX;
            y = bentY;
        }
        const float p[3] = {x * metres, y * metres, metres};
        float q[3];
        for (int row = 0; row < 3; ++row) {
            const float* r = cameras.depthToColor.rotation + row;
            q[row] =
                r[0] * p[0] + r[3] * p[1] + r[6] * p[2] + cameras.depthToColor.translation[row];
        }
        float u2 = q[0] / q[2];
        float v2 = q[1] / q[2];
        const rs_intrinsics& seen = cameras.color;
        if (seen.model == RS_DISTORTION_MODIFIED_BROWN_CONRADY) {
            const float r2 = u2 * u2 + v2 * v2;
            const float f =
                1 + seen.coeffs[0] * r2 + seen.coeffs[1] * r2 * r2 + seen.coeffs[4] * r2 * r2 * r2;
            u2 *= f;
            v2 *= f;
            const float shiftX = 2 * seen.coeffs[2] * u2 * v2 + seen.coeffs[3] * (r2 + 2 * u2 * u2);
            const float shiftY = 2 * seen.coeffs[3] * u2 * v2 + seen.coeffs[2] * (r2 + 2 * v2 * v2);
            u2 += shiftX;
            v2 += shiftY;
        }
        const float column = u2 * cameras.color.fx + cameras.color.ppx + 0.5f;
        const float line = v2 * cameras.color.fy + cameras.color.ppy + 0.5f;
        if (!(column > -1e6f && column < 1e6f && line > -1e6f && line < 1e6f)) {
            return std::nullopt;
        }
        const int pixelX = static_cast<int>(column);
        const int pixelY = static_cast<int>(line);
        if (pixelX < 0 || pixelX >= cameras.color.width || pixelY < 0 ||
            pixelY >= cameras.color.height) {
            return std::nullopt;
        }
        return std::pair(pixelX, pixelY);
    }

    template <class Visit>
    void eachCovered(const std::uint16_t* depth, Visit&& visit) const {
        for (int y = 0; y < cameras.depth.height; ++y) {
            for (int x = 0; x < cameras.depth.width; ++x) {
                const int index = y * cameras.depth.width + x;
                if (depth[index] == 0) {
                    continue;
                }
                const float metres = static_cast<float>(depth[index]) * cameras.depthScale;
                const auto u = static_cast<float>(x);
                const auto v = static_cast<float>(y);
                const auto first = land(u - 0.5f, v - 0.5f, metres);
                const auto last = land(u + 0.5f, v + 0.5f, metres);
                if (!first || !last) {
                    continue;
                }
                for (int line = first->second; line <= last->second; ++line) {
                    for (int column = first->first; column <= last->first; ++column) {
                        visit(index, line * cameras.color.width + column);
                    }
                }
            }
        }
    }

    camera::CameraGeometry cameras;
};

} // namespace camera_test
