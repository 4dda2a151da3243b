// What the compact form of one function's unwind information says, in the terms of DWARF.
#pragma once

#include <cstdint>
#include <vector>

namespace loader {

// Where the caller's frame is, seen from the body of a function: its stack pointer was a register's
// value plus an offset, and registers lie at offsets from that.
struct Frame {
    struct SavedRegister {
        int number = 0; // as DWARF counts them
        std::int64_t offset = 0;
    };

    int base = 0;
    std::int64_t offset = 0;
    std::vector<SavedRegister> saved; // the return address apart, which lies at -8
};

// `code`: the function's first byte, in which large frames are measured. Throws std::runtime_error
// for a function that the compact form does not suffice for.
Frame decodeCompactUnwind(std::uint32_t encoding, const unsigned char* code);

} // namespace loader
