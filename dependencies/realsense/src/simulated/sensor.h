// What the depth sensor makes of the surface in front of a row of pixels.
//
// Distances are fixed point, sixteenths of a depth unit, and everything here is integer
// arithmetic: the same scene gives the same picture on every compiler. A negative distance is a
// surface that returns too little light to be measured, though it hides what is behind it.
#pragma once

#include <cstdint>
#include <span>

namespace camera::simulated {

using FineDepth = std::int32_t;
inline constexpr int fineSteps = 16;

class Sensor {
  public:
    // `noise` scales the axial noise of the real thing; 0 is an ideal sensor, which also has
    // neither lost edges nor shadows. At most 16.
    // `holes`: how many of a hundred patches of 8 x 8 pixels have a hole in a frame, 1 to 4 pixels
    // wide and high, whatever the noise.
    Sensor(double noise, std::uint64_t seed, double holes);

    bool ideal() const { return ideal_; }

    // Whether a surface that turns this far from the projector is lost. `facing` is the cosine
    // between its normal and the direction to the projector.
    bool losesGrazing(double facing, std::uint64_t frame, std::uint32_t pixel) const;

    // Makes points of a row negative that other points of it hide from the projector.
    // `projectorReach` is focal length in pixels x baseline in fine depth steps: what divided by
    // a distance gives the disparity. Columns `first` up to `end` are looked at.
    static void castShadows(std::span<FineDepth> row, int first, int end, double projectorReach);

    // Measures a row: adds noise, rounds to depth units, and gives 0 where nothing is measured.
    void measure(std::span<const FineDepth> row, std::uint64_t frame, std::uint32_t firstPixel,
                 std::span<std::uint16_t> out) const;

  private:
    std::uint64_t frameSeed(std::uint64_t frame) const;
    void punch(std::span<std::uint16_t> row, std::uint64_t frame, std::uint32_t number) const;

    bool ideal_;
    std::uint64_t seed_;
    std::int32_t floor_;  // noise at distance 0
    std::int32_t growth_; // and how it grows with the squared distance
    std::uint32_t holes_; // of 65536 patches
};

} // namespace camera::simulated
