// What is counted of a scene; tallies of several scenes can be put together.
#pragma once

#include <cstddef>
#include <vector>

namespace evaluate {

struct Tally {
    std::size_t frames = 0;
    double seconds = 0.0; // on the scene's clock

    std::size_t touchDowns = 0; // that last long enough to be believed
    std::size_t detected = 0;   // of these, reported
    std::size_t broken = 0;     // times that a finger was reported, was not, and was again
    std::size_t splits = 0;     // times that a finger got one more touch
    std::size_t switches = 0;   // times that a touching finger got another number
    std::size_t falseTouches = 0;

    // Of every detected touch-down: the frame of the first report, counting the first frame of the
    // touch, and the first in which the detection sees the finger, as 1.
    std::vector<double> reportedOn;
    std::vector<double> reportedOnSinceSeen;

    // Millimetres along the surface, of every touch reported for a touching finger.
    std::vector<double> errorBefore;  // before calibration
    std::vector<double> errorAfter;   // as a host gets it, from where the finger is
    std::vector<double> errorOffPath; // the same from where the finger was a moment ago

    double jitterSquares = 0.0; // millimetres squared
    std::size_t jitterCount = 0;

    double falsePerMinute() const;
    double detectionRate() const; // 0 to 1; 1 without any touch-down
    double jitter() const;        // millimetres, root mean square; NaN without a resting finger

    void add(const Tally& other);
};

} // namespace evaluate
