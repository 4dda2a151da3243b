#include "recording/touchDifference.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace recording {

namespace {

bool same(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

// As many digits as tell any two numbers apart.
std::string text(double number) {
    std::array<char, 40> digits;
    std::snprintf(digits.data(), digits.size(), "%.17g", number);
    return digits.data();
}

struct Field {
    const char* name;
    double recorded;
    double got;
};

} // namespace

std::optional<TouchDifference> firstDifference(const FrameInfo& recorded, const FrameInfo& got) {
    for (std::size_t slot = 0; slot < touchSlots; ++slot) {
        const QVR::NetworkTouch& a = recorded.touches[slot];
        const QVR::NetworkTouch& b = got.touches[slot];
        const Field active{"active", static_cast<double>(a.active), static_cast<double>(b.active)};
        std::array<Field, 7> fields = {active, {"x", a.x, b.x}, {"y", a.y, b.y}, {"z", a.z, b.z}};
        std::size_t count = 4;
        // Of a slot that is not reported the recording has no position.
        if (a.active != 0) {
            const QVR::TouchPosition& p = recorded.tracked[slot];
            const QVR::TouchPosition& q = got.tracked[slot];
            fields[count++] = {"column", p.x, q.x};
            fields[count++] = {"row", p.y, q.y};
            fields[count++] = {"depth", p.z, q.z};
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (!same(fields[i].recorded, fields[i].got)) {
                return TouchDifference{slot, fields[i].name, text(fields[i].recorded),
                                       text(fields[i].got)};
            }
        }
    }
    return std::nullopt;
}

} // namespace recording
