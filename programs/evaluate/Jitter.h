// How much the touch of a finger that rests moves about.
#pragma once

#include "evaluate/Matcher.h"
#include "evaluate/Tally.h"

#include <array>
#include <cstddef>
#include <map>
#include <vector>

namespace evaluate {

// A finger rests while it is slower than `restingSpeed`; what the smoothing still does at the
// start, or until the finger is next reported under the same number, does not count. The finger's
// own tremor is taken off.
class Jitter {
  public:
    static constexpr double restingSpeed = 10.0; // millimetres a second
    static constexpr std::size_t settling = 10;  // frames
    static constexpr std::size_t shortest = 5;   // frames that count

    Jitter(Tally& tally, double framesPerSecond) : tally_(tally), rate_(framesPerSecond) {}

    void frame(const JudgedFrame& frame);
    void finish();

  private:
    struct Rest {
        int slot = -1;
        Point3 place{};
        std::vector<std::array<double, 2>> errors;
    };

    void close(const Rest& rest);

    Tally& tally_;
    double rate_;
    std::map<int, Rest> rests_;
};

} // namespace evaluate
