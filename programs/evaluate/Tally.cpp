#include "evaluate/Tally.h"

#include <cmath>
#include <limits>

namespace evaluate {

namespace {

void append(std::vector<double>& to, const std::vector<double>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

} // namespace

double Tally::falsePerMinute() const {
    return seconds > 0.0 ? static_cast<double>(falseTouches) / (seconds / 60.0) : 0.0;
}

double Tally::detectionRate() const {
    return touchDowns > 0 ? static_cast<double>(detected) / static_cast<double>(touchDowns) : 1.0;
}

double Tally::jitter() const {
    return jitterCount > 0 ? std::sqrt(jitterSquares / static_cast<double>(jitterCount))
                           : std::numeric_limits<double>::quiet_NaN();
}

void Tally::add(const Tally& other) {
    frames += other.frames;
    seconds += other.seconds;
    touchDowns += other.touchDowns;
    detected += other.detected;
    broken += other.broken;
    splits += other.splits;
    switches += other.switches;
    falseTouches += other.falseTouches;
    append(reportedOn, other.reportedOn);
    append(reportedOnSinceSeen, other.reportedOnSinceSeen);
    append(errorBefore, other.errorBefore);
    append(errorAfter, other.errorAfter);
    append(errorOffPath, other.errorOffPath);
    jitterSquares += other.jitterSquares;
    jitterCount += other.jitterCount;
}

} // namespace evaluate
