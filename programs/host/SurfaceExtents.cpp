#include "host/SurfaceExtents.h"

#include <cmath>
#include <sstream>

namespace host {

namespace {

// The least round number that is not below `value` > 0.
double roundUp(double value) {
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    for (const double step : {1.0, 1.5, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0}) {
        if (value <= step * power) {
            return step * power;
        }
    }
    return 10.0 * power;
}

// The display goes on beyond a touch: grow further than it asks for, and not at every step.
constexpr double spare = 1.2;

// Widens one axis to hold `value`; both ends are 0 or round.
void widen(double& low, double& high, double value) {
    if (value > high) {
        high = roundUp(value * spare);
    } else if (value < low) {
        low = -roundUp(-value * spare);
    }
}

} // namespace

std::optional<Extents> SurfaceExtents::parse(const std::string& text) {
    std::istringstream stream(text);
    Extents extents;
    char first = 0;
    char second = 0;
    char third = 0;
    stream >> extents.left >> first >> extents.top >> second >> extents.right >> third >>
        extents.bottom;
    const bool complete = !stream.fail() && stream.peek() == std::istringstream::traits_type::eof();
    if (!complete || first != ',' || second != ',' || third != ',' ||
        !(extents.left < extents.right) || !(extents.top < extents.bottom)) {
        return std::nullopt;
    }
    return extents;
}

void SurfaceExtents::fix(const Extents& extents) {
    extents_ = extents;
    fixed_ = true;
}

void SurfaceExtents::startFrom(int depthWidth, int depthHeight) {
    if (!fixed_ && !learned_ && depthWidth > 0 && depthHeight > 0) {
        extents_ = {0, 0, static_cast<double>(depthWidth), static_cast<double>(depthHeight)};
    }
}

void SurfaceExtents::see(double x, double y) {
    if (fixed_ || !std::isfinite(x) || !std::isfinite(y)) {
        return;
    }
    if (!learned_) {
        learned_ = true;
        extents_ = {0, 0, 0, 0};
    }
    widen(extents_.left, extents_.right, x);
    widen(extents_.top, extents_.bottom, y);
    if (extents_.left == extents_.right) {
        extents_.right += 1.0;
    }
    if (extents_.top == extents_.bottom) {
        extents_.bottom += 1.0;
    }
}

} // namespace host
