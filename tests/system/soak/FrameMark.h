// What is remembered of a frame: enough to tell it from every other, torn ones included.
#pragma once

#include "serverClient/frameProtocol.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace soak {

constexpr std::size_t touchSlots = 10;
using TouchRecords = std::array<QVR::NetworkTouch, touchSlots>;

inline std::uint64_t hashOf(std::span<const std::byte> bytes) {
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

inline std::uint64_t hashOf(const TouchRecords& records) {
    return hashOf(std::as_bytes(std::span(records)));
}

struct FrameMark {
    std::uint64_t touches = 0; // hash of the ten touch records
    std::uint64_t images = 0;  // hash of all that follows them

    bool operator==(const FrameMark&) const = default;
};

inline FrameMark markOf(std::span<const std::byte> frame) {
    return {hashOf(frame.first(sizeof(TouchRecords))), hashOf(frame.subspan(sizeof(TouchRecords)))};
}

// The whole frames that one connection brought, in order.
using Visit = std::vector<FrameMark>;

} // namespace soak
