#include "macos/loader/compactUnwind.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace loader {

namespace {

constexpr std::uint32_t modeMask = 0x0F000000;
constexpr std::uint32_t framePointer = 0x01000000;
constexpr std::uint32_t smallFrame = 0x02000000;
constexpr std::uint32_t largeFrame = 0x03000000;

constexpr int wordSize = 8;
constexpr int rbp = 6;
constexpr int rsp = 7;
// The registers that a function keeps for its caller, in the order of the compact form: rbx, r12 to
// r15, rbp. Number 0 there is none.
constexpr std::array<int, 7> dwarfNumber = {-1, 3, 12, 13, 14, 15, rbp};

std::uint32_t bits(std::uint32_t encoding, int lowest, int count) {
    return encoding >> lowest & ((1u << count) - 1);
}

// Up to five registers from a place below the frame pointer upwards.
Frame withFramePointer(std::uint32_t encoding) {
    Frame frame{rbp, 2 * wordSize, {{rbp, -2 * wordSize}}};
    const std::int64_t lowest = -2 * wordSize - std::int64_t{wordSize} * bits(encoding, 16, 8);
    for (int place = 0; place < 5; ++place) {
        const std::uint32_t number = bits(encoding, 3 * place, 3);
        if (number != 0) {
            frame.saved.push_back({dwarfNumber.at(number), lowest + wordSize * place});
        }
    }
    return frame;
}

// Which registers lie below the return address, upwards, is one number: the how manieth of all the
// ways to take `count` of six in order.
std::vector<std::uint32_t> savedInOrder(std::uint32_t permutation, std::uint32_t count) {
    std::vector<std::uint32_t> left = {1, 2, 3, 4, 5, 6};
    std::vector<std::uint32_t> order;
    for (std::uint32_t place = 0; place < count; ++place) {
        std::uint32_t waysForTheRest = 1;
        for (std::uint32_t later = place + 1; later < count; ++later) {
            waysForTheRest *= 6 - later;
        }
        const std::uint32_t choice = permutation / waysForTheRest;
        permutation %= waysForTheRest;
        order.push_back(left.at(choice));
        left.erase(left.begin() + choice);
    }
    return order;
}

Frame withoutFramePointer(std::uint32_t encoding, std::int64_t size) {
    Frame frame{rsp, size, {}};
    const std::uint32_t count = bits(encoding, 10, 3);
    if (count > 6) {
        throw std::runtime_error("a function that saves more registers than there are");
    }
    std::int64_t place = -wordSize - std::int64_t{wordSize} * count;
    for (const std::uint32_t number : savedInOrder(bits(encoding, 0, 10), count)) {
        frame.saved.push_back({dwarfNumber.at(number), place});
        place += wordSize;
    }
    return frame;
}

// Too large for the encoding, it is read from the instruction that makes the frame.
std::int64_t largeFrameSize(std::uint32_t encoding, const unsigned char* code) {
    std::uint32_t subtracted = 0;
    std::memcpy(&subtracted, code + bits(encoding, 16, 8), sizeof subtracted);
    return std::int64_t{subtracted} + std::int64_t{wordSize} * bits(encoding, 13, 3);
}

} // namespace

Frame decodeCompactUnwind(std::uint32_t encoding, const unsigned char* code) {
    switch (encoding & modeMask) {
    case framePointer:
        return withFramePointer(encoding);
    case smallFrame:
        return withoutFramePointer(encoding, std::int64_t{wordSize} * bits(encoding, 16, 8));
    case largeFrame:
        return withoutFramePointer(encoding, largeFrameSize(encoding, code));
    default:
        throw std::runtime_error("a compact unwind encoding of " + std::to_string(encoding));
    }
}

} // namespace loader
