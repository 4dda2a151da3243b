#include "host/TouchPlacer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace host {

namespace {

// A calibrated touch lies within a few pixels of a marked one; anything within this share of the
// calibrated samples' extent is believed without asking further.
constexpr double believable = 0.03;

struct Candidate {
    std::vector<PlacedTouch> touches;
    double cost = std::numeric_limits<double>::infinity(); // mean miss as a share of the extent
};

double distance(const std::array<float, 3>& a, const std::array<float, 3>& b) {
    return std::hypot(static_cast<double>(a[0]) - static_cast<double>(b[0]),
                      static_cast<double>(a[1]) - static_cast<double>(b[1]),
                      static_cast<double>(a[2]) - static_cast<double>(b[2]));
}

bool finite(const std::array<float, 3>& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

// The diagonal of the box around the points that are finite.
double extentOf(const std::vector<std::array<float, 3>>& points) {
    std::array<float, 3> low;
    std::array<float, 3> high;
    low.fill(std::numeric_limits<float>::max());
    high.fill(std::numeric_limits<float>::lowest());
    bool any = false;
    for (const auto& point : points) {
        if (!finite(point)) {
            continue;
        }
        any = true;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }
    return any ? distance(low, high) : 0.0;
}

// Places each touch at the sample whose position comes nearest to it.
Candidate nearest(const std::vector<Touch>& touches, const std::vector<DepthSample>& samples,
                  const std::vector<std::array<float, 3>>& positions) {
    Candidate candidate;
    const double extent = extentOf(positions);
    if (!(extent > 0)) {
        return candidate;
    }
    double missed = 0;
    for (const Touch& touch : touches) {
        PlacedTouch placed{touch, false, 0, 0};
        double best = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double miss = distance(positions[i], {touch.x, touch.y, touch.z});
            if (miss < best) {
                best = miss;
                placed.placed = true;
                placed.column = samples[i].column;
                placed.row = samples[i].row;
            }
        }
        missed += best;
        candidate.touches.push_back(placed);
    }
    candidate.cost = missed / static_cast<double>(touches.size()) / extent;
    return candidate;
}

std::vector<PlacedTouch> asPixels(const std::vector<Touch>& touches) {
    std::vector<PlacedTouch> placed;
    for (const Touch& touch : touches) {
        placed.push_back({touch, true, touch.x, touch.y});
    }
    return placed;
}

} // namespace

std::vector<DepthSample> TouchPlacer::samples(const Snapshot& snapshot) {
    std::vector<DepthSample> found;
    const programs::DepthImage& depth = snapshot.depth;
    const programs::GrayImage& mask = snapshot.processed;
    if (depth.empty()) {
        return found;
    }
    const int width = mask.empty() ? depth.width : mask.width;
    const int height = mask.empty() ? depth.height : mask.height;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            if (!mask.empty() && mask.at(column, row) == 0) {
                continue;
            }
            const std::uint16_t value =
                depth.at(column * depth.width / width, row * depth.height / height);
            if (value != 0) {
                found.push_back({static_cast<float>(column), static_cast<float>(row),
                                 static_cast<float>(value)});
            }
        }
    }
    return found;
}

std::vector<PlacedTouch> TouchPlacer::place(const std::vector<Touch>& touches,
                                            const std::vector<DepthSample>& samples,
                                            const Calibration& calibration) {
    if (touches.empty()) {
        return {};
    }
    std::vector<std::array<float, 3>> calibrated;
    std::vector<std::array<float, 3>> seen;
    for (const DepthSample& sample : samples) {
        calibrated.push_back(calibration(sample));
        seen.push_back({sample.column, sample.row, sample.depth});
    }
    Candidate display = nearest(touches, samples, calibrated);
    if (display.cost <= believable) {
        return std::move(display.touches);
    }
    const Candidate pixels = nearest(touches, samples, seen);
    if (display.cost < pixels.cost) {
        return std::move(display.touches);
    }
    return asPixels(touches);
}

} // namespace host
