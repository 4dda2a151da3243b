// Depth images of the scene: hands in front of the plane of the display.
#pragma once

#include "simulated/capsule.h"
#include "simulated/scene_geometry.h"
#include "simulated/sensor.h"
#include "simulated/touched_rows.h"

#include <cstdint>
#include <span>
#include <vector>

#include <librealsense/rs.h>

namespace camera::simulated {

class DepthRenderer {
  public:
    // `bend`: what is `bendDistance` away reads this many millimetres farther in the corners of
    // the picture, growing with the distance and with the square of the way from the middle.
    DepthRenderer(const rs_intrinsics& intrinsics, const Sensor& sensor, const Display& display,
                  double bend);

    // Fills `out`, width x height depth units row by row. `capsules` are in depth camera space.
    void render(const std::vector<Capsule>& capsules, std::uint64_t frame,
                std::span<std::uint16_t> out);

  private:
    void draw(const Capsule& capsule, std::uint64_t frame);
    std::span<FineDepth> surfaceRow(int row);

    rs_intrinsics intrinsics_;
    Sensor sensor_;
    double projectorReach_;
    int longestShadow_;           // in pixels
    std::vector<double> bending_; // by pixel: what distances read times this; empty is none
    std::vector<FineDepth> background_;
    std::vector<FineDepth> surface_; // equals the background between two frames
    TouchedRows touched_;
};

} // namespace camera::simulated
