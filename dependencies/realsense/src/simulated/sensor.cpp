#include "simulated/sensor.h"

#include "simulated/hash.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace camera::simulated {
namespace {

// Standard deviation in depth units: 0.5 near the camera, 2 where fingers touch (a quarter of a
// millimetre), 4.5 at the display.
constexpr double sigmaFloor = 0.5;
constexpr double sigmaGrowth = 3.4e-7;

// The sum of four random bytes is a good bell; this is its middle and its standard deviation.
constexpr std::int32_t bellMiddle = 510;
constexpr double bellSigma = 147.8;
constexpr int noiseShift = 16;

// Surfaces that turn away from the projector by more than about 80 degrees are lost, with a
// ragged limit between these cosines.
constexpr double surelyLost = 0.10;
constexpr double surelySeen = 0.22;

// Past this distance one pixel in 4096 is lost in every frame.
constexpr FineDepth speckleFrom = 2560 * fineSteps;

// Holes are placed patch by patch, each patch this many pixels wide and high.
constexpr std::size_t patchSide = 8;

std::int32_t bell(std::uint32_t bits) {
    const std::uint32_t pairs = (bits & 0x00ff00ffu) + ((bits >> 8) & 0x00ff00ffu);
    return static_cast<std::int32_t>((pairs & 0xffffu) + (pairs >> 16)) - bellMiddle;
}

} // namespace

Sensor::Sensor(double noise, std::uint64_t seed, double holes)
    : ideal_(noise <= 0.0), seed_(seed),
      holes_(static_cast<std::uint32_t>(std::lround(holes * 655.36))) {
    const double perBell = std::max(noise, 0.0) * fineSteps * (1 << noiseShift) / bellSigma;
    floor_ = static_cast<std::int32_t>(std::lround(sigmaFloor * perBell));
    growth_ = static_cast<std::int32_t>(std::lround(sigmaGrowth * perBell * 65536.0));
}

std::uint64_t Sensor::frameSeed(std::uint64_t frame) const {
    return hash(seed_, frame);
}

bool Sensor::losesGrazing(double facing, std::uint64_t frame, std::uint32_t pixel) const {
    if (ideal_ || facing >= surelySeen)
        return false;
    const std::uint64_t bits = hash(frameSeed(frame), ~static_cast<std::uint64_t>(pixel));
    const double limit =
        surelyLost + (surelySeen - surelyLost) * static_cast<double>(bits >> 48) / 65536.0;
    return facing < limit;
}

// In the projector's image a point stands at its column minus its disparity. Going leftwards
// through visible points that place moves left as well, except past the left edge of something
// near: what follows there stands to the right of it and behind it, until the place has caught up.
void Sensor::castShadows(std::span<FineDepth> row, int first, int end, double projectorReach) {
    constexpr double tolerance = 0.5;
    double leftmost = std::numeric_limits<double>::max();
    for (int column = end - 1; column >= first; --column) {
        FineDepth& depth = row[static_cast<std::size_t>(column)];
        const double place = column - projectorReach / std::abs(depth);
        if (place > leftmost + tolerance)
            depth = -std::abs(depth);
        leftmost = std::min(leftmost, place);
    }
}

void Sensor::measure(std::span<const FineDepth> row, std::uint64_t frame, std::uint32_t firstPixel,
                     std::span<std::uint16_t> out) const {
    constexpr FineDepth half = fineSteps / 2;
    const auto sample = [&](FineDepth depth, std::uint32_t bits) -> std::uint16_t {
        if (depth <= 0 || (depth > speckleFrom && (bits >> 20) == 0))
            return 0;
        const std::int32_t units = std::min(depth / fineSteps, 4095);
        const std::int32_t strength = floor_ + (((units * units) >> 12) * growth_ >> 4);
        const std::int32_t noise = (bell(bits) * strength) >> noiseShift;
        return static_cast<std::uint16_t>(std::clamp((depth + noise + half) / fineSteps, 1, 65535));
    };
    if (ideal_) {
        for (std::size_t i = 0; i < row.size(); ++i)
            out[i] = static_cast<std::uint16_t>(std::clamp((row[i] + half) / fineSteps, 0, 65535));
    } else {
        const std::uint64_t key = frameSeed(frame);
        for (std::size_t i = 0; i < row.size(); i += 2) {
            const std::uint64_t bits = hash(key + firstPixel + i);
            out[i] = sample(row[i], static_cast<std::uint32_t>(bits));
            if (i + 1 < row.size())
                out[i + 1] = sample(row[i + 1], static_cast<std::uint32_t>(bits >> 32));
        }
    }
    if (holes_ > 0)
        punch(out, frame, firstPixel / static_cast<std::uint32_t>(row.size()));
}

void Sensor::punch(std::span<std::uint16_t> row, std::uint64_t frame, std::uint32_t number) const {
    const std::uint64_t key = hash(frameSeed(frame), number / patchSide + 1);
    for (std::size_t start = 0; start < row.size(); start += patchSide) {
        const std::uint64_t bits = hash(key, start);
        if ((bits & 0xffff) >= holes_)
            continue;
        const std::size_t width = 1 + ((bits >> 16) & 3);
        const std::size_t height = 1 + ((bits >> 18) & 3);
        const std::size_t left = start + (bits >> 20 & 0xff) % (patchSide + 1 - width);
        const std::size_t top = (bits >> 28 & 0xff) % (patchSide + 1 - height);
        const std::size_t level = number % patchSide;
        if (level < top || level >= top + height)
            continue;
        for (std::size_t i = left; i < std::min(left + width, row.size()); ++i)
            row[i] = 0;
    }
}

} // namespace camera::simulated
