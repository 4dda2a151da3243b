// One camera's picture in the geometry of the other.
#pragma once

#include "frame_source.h"

#include <cstdint>
#include <span>
#include <vector>

namespace camera {

// Each measured depth pixel is a small square patch in space: its two corners are brought into
// space, moved to the colour camera and projected there, and the patch covers the rectangle
// between them. A patch that is not wholly inside the colour image counts for nothing.
class Alignment {
  public:
    // Throws std::runtime_error for lens models that cannot be followed: the depth camera may
    // have inverse Brown-Conrady distortion, the colour camera the modified one.
    explicit Alignment(const CameraGeometry& geometry);

    // Colour (RGB bytes) at each depth pixel, black where nothing is measured. `aligned` has the
    // depth image's size.
    void colorToDepth(std::span<const std::uint16_t> depth, std::span<const std::uint8_t> color,
                      std::span<std::uint8_t> aligned) const;

    // The nearest depth sample at each colour pixel, 0 where none falls. `aligned` has the colour
    // image's size.
    void depthToColor(std::span<const std::uint16_t> depth, std::span<std::uint16_t> aligned) const;

  private:
    // The direction through a corner of a depth pixel: x and y at a distance of one.
    struct Ray {
        float x, y;
    };
    struct Pixel {
        int x, y;
    };

    Ray deproject(float column, float row) const;
    bool project(Ray ray, float distance, Pixel& pixel) const;
    Ray distort(Ray ray) const;
    template <class Visit>
    void forEachPatch(std::span<const std::uint16_t> depth, Visit&& visit) const;

    CameraGeometry geometry_;
    std::vector<Ray> corners_; // (depth width + 1) x (depth height + 1), shared by neighbours
};

} // namespace camera
