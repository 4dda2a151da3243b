// Colour images of the scene, for people: shaded hands in front of what the display shows.
#pragma once

#include "simulated/capsule.h"
#include "simulated/scene_geometry.h"
#include "simulated/touched_rows.h"

#include <cstdint>
#include <span>
#include <vector>

#include <librealsense/rs.h>

namespace camera::simulated {

class ColorRenderer {
  public:
    ColorRenderer(const rs_intrinsics& intrinsics, const Display& display);

    // Fills `out`, width x height RGB bytes row by row. `capsules` are in depth camera space.
    void render(const std::vector<Capsule>& capsules, std::span<std::uint8_t> out);

  private:
    void paintBackground();
    void draw(const Capsule& capsule, std::span<std::uint8_t> out);

    rs_intrinsics intrinsics_;
    Display display_;
    std::vector<std::uint8_t> background_; // painted at the first picture
    std::vector<float> nearest_;           // distances drawn so far in this picture
    TouchedRows touched_;
};

} // namespace camera::simulated
