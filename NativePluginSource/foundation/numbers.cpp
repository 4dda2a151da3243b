#include "foundation/numbers.h"

#include <cmath>
#include <limits>

namespace QVR {

int truncateToInt(double value) {
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    // One past the ends still truncates into range; NaN fails both comparisons.
    if (value > lowest - 1.0 && value < highest + 1.0) {
        return static_cast<int>(value);
    }
    return std::numeric_limits<int>::min();
}

float unitsPerMeter(float depthScale) {
    const float quotient = 1.0f / depthScale;
    const float whole = std::round(quotient);
    const float rounding = whole * std::numeric_limits<float>::epsilon();
    return std::fabs(quotient - whole) <= rounding ? whole : quotient;
}

} // namespace QVR
