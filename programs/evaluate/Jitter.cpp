#include "evaluate/Jitter.h"

#include <cmath>
#include <utility>

namespace evaluate {

void Jitter::frame(const JudgedFrame& frame) {
    std::map<int, Rest> going;
    for (const TouchMatch& match : frame.matches) {
        const TrueFinger& finger = match.finger;
        if (!finger.touching) {
            continue;
        }
        Rest rest;
        if (const auto known = rests_.find(finger.id); known != rests_.end()) {
            const Point3& before = known->second.place;
            const double speed =
                rate_ * std::hypot(finger.display[0] - before[0], finger.display[1] - before[1]);
            if (speed < restingSpeed && known->second.slot == match.touch.slot) {
                rest = std::move(known->second);
                rests_.erase(known);
            }
        }
        rest.slot = match.touch.slot;
        rest.place = finger.display;
        rest.errors.push_back({match.touch.display[0] - finger.display[0],
                               match.touch.display[1] - finger.display[1]});
        going[finger.id] = std::move(rest);
    }
    finish();
    rests_ = std::move(going);
}

void Jitter::finish() {
    for (const auto& [id, rest] : rests_) {
        close(rest);
    }
    rests_.clear();
}

void Jitter::close(const Rest& rest) {
    if (rest.errors.size() < settling + shortest) {
        return;
    }
    const auto count = static_cast<double>(rest.errors.size() - settling);
    std::array<double, 2> mean{};
    for (std::size_t i = settling; i < rest.errors.size(); ++i) {
        mean[0] += rest.errors[i][0] / count;
        mean[1] += rest.errors[i][1] / count;
    }
    for (std::size_t i = settling; i < rest.errors.size(); ++i) {
        const double x = rest.errors[i][0] - mean[0];
        const double y = rest.errors[i][1] - mean[1];
        tally_.jitterSquares += x * x + y * y;
        ++tally_.jitterCount;
    }
}

} // namespace evaluate
