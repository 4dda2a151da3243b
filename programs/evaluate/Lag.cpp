#include "evaluate/Lag.h"

#include <cmath>

namespace evaluate {

namespace {

constexpr double finest = 0.02; // frames

} // namespace

void Lag::frame(const JudgedFrame& frame) {
    for (const TrueFinger& finger : frame.fingers) {
        if (finger.touching) {
            ways_[finger.id][number_] = {number_, finger.id, finger.display[0], finger.display[1]};
        }
    }
    for (const TouchMatch& match : frame.matches) {
        if (match.finger.touching) {
            touches_.push_back(
                {number_, match.finger.id, match.touch.display[0], match.touch.display[1]});
        }
    }
    ++number_;
}

// The mean squared distance of the touches from where their fingers were `delay` frames ago.
std::optional<double> Lag::mismatch(double delay) const {
    double sum = 0.0;
    std::size_t count = 0;
    for (const Place& touch : touches_) {
        // Every delay is judged by the same touches.
        if (static_cast<double>(touch.frame) < longest + 1.0) {
            continue;
        }
        const Way& way = ways_.at(touch.finger);
        const double when = static_cast<double>(touch.frame) - delay;
        const double whole = std::floor(when);
        const auto before = way.find(static_cast<std::size_t>(whole));
        const auto oldest = way.find(touch.frame - static_cast<std::size_t>(longest) - 1);
        if (oldest == way.end() || before == way.end()) {
            continue;
        }
        const auto after = way.find(before->first + 1);
        const Place& from = before->second;
        const Place& to = after == way.end() ? from : after->second;
        const double share = when - whole;
        const double x = from.x + (to.x - from.x) * share - touch.x;
        const double y = from.y + (to.y - from.y) * share - touch.y;
        sum += x * x + y * y;
        ++count;
    }
    if (count == 0) {
        return std::nullopt;
    }
    return sum / static_cast<double>(count);
}

double Lag::meanStep() const {
    double sum = 0.0;
    std::size_t count = 0;
    for (const auto& [id, way] : ways_) {
        for (auto place = way.begin(); place != way.end(); ++place) {
            const auto next = std::next(place);
            if (next != way.end() && next->first == place->first + 1) {
                sum +=
                    std::hypot(next->second.x - place->second.x, next->second.y - place->second.y);
                ++count;
            }
        }
    }
    return count > 0 ? sum / static_cast<double>(count) : 0.0;
}

std::optional<LagFigures> Lag::figures() const {
    const double step = meanStep();
    if (step <= 0.0) {
        return std::nullopt;
    }
    std::optional<double> least;
    LagFigures best;
    for (int i = 0; i <= static_cast<int>(longest / finest); ++i) {
        const double delay = finest * i;
        const std::optional<double> value = mismatch(delay);
        if (value && (!least || *value < *least)) {
            least = value;
            best.frames = delay;
        }
    }
    if (!least) {
        return std::nullopt;
    }
    best.millimeters = best.frames * step;
    return best;
}

} // namespace evaluate
