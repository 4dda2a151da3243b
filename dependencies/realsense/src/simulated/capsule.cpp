#include "simulated/capsule.h"

namespace camera::simulated {
namespace {

struct Range {
    double low;
    double high;
};

// The slopes lateral / z between which a sphere is seen: those of the two tangents.
Range tangents(double lateral, double z, double radius) {
    const double reach = radius * std::sqrt(lateral * lateral + z * z - radius * radius);
    const double scale = 1.0 / (z * z - radius * radius);
    return {(lateral * z - reach) * scale, (lateral * z + reach) * scale};
}

Range pixels(Range a, Range b, float focal, float principal, int size) {
    const double low = std::min(a.low, b.low) * static_cast<double>(focal);
    const double high = std::max(a.high, b.high) * static_cast<double>(focal);
    const auto inside = [&](double value) {
        return std::clamp(value + static_cast<double>(principal), -1.0, size + 1.0);
    };
    return {inside(low), inside(high)};
}

} // namespace

PixelBox boundsInImage(const Capsule& capsule, const rs_intrinsics& intrinsics) {
    const Range columns = pixels(tangents(capsule.a.x, capsule.a.z, capsule.radius),
                                 tangents(capsule.b.x, capsule.b.z, capsule.radius), intrinsics.fx,
                                 intrinsics.ppx, intrinsics.width);
    const Range rows = pixels(tangents(capsule.a.y, capsule.a.z, capsule.radius),
                              tangents(capsule.b.y, capsule.b.z, capsule.radius), intrinsics.fy,
                              intrinsics.ppy, intrinsics.height);
    PixelBox box;
    box.left = std::max(0, static_cast<int>(std::ceil(columns.low)));
    box.right = std::min(intrinsics.width, static_cast<int>(std::floor(columns.high)) + 1);
    box.top = std::max(0, static_cast<int>(std::ceil(rows.low)));
    box.bottom = std::min(intrinsics.height, static_cast<int>(std::floor(rows.high)) + 1);
    return box;
}

} // namespace camera::simulated
