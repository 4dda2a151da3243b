// Random bits as a function of what they are for. Nothing is drawn from a sequence, so any pixel
// of any frame can be made on its own and frames come out the same in every order.
#pragma once

#include <cstdint>

namespace camera::simulated {

constexpr std::uint64_t hash(std::uint64_t value) {
    value ^= value >> 32;
    value *= 0xd6e8feb86659fd93u;
    value ^= value >> 32;
    value *= 0xd6e8feb86659fd93u;
    value ^= value >> 32;
    return value;
}

constexpr std::uint64_t hash(std::uint64_t a, std::uint64_t b) {
    return hash(hash(a + 0x9e3779b97f4a7c15u) + b);
}

} // namespace camera::simulated
