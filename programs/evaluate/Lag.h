// How far touches trail behind moving fingers.
#pragma once

#include "evaluate/Matcher.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace evaluate {

struct LagFigures {
    double frames = 0.0;
    double millimeters = 0.0; // what a finger of this scene moves in that time
};

// The delay with which the ways of the fingers fit the touches best, over all frames together:
// what is off sideways or by the same amount in both directions does not count.
class Lag {
  public:
    static constexpr double longest = 8.0; // frames

    void frame(const JudgedFrame& frame);

    // Nothing unless touches of moving fingers were seen.
    std::optional<LagFigures> figures() const;

  private:
    struct Place {
        std::size_t frame = 0;
        int finger = 0;
        double x = 0.0;
        double y = 0.0;
    };
    using Way = std::map<std::size_t, Place>; // by frame, while the finger touched

    std::optional<double> mismatch(double delay) const;
    double meanStep() const;

    std::size_t number_ = 0;
    std::map<int, Way> ways_;
    std::vector<Place> touches_;
};

} // namespace evaluate
