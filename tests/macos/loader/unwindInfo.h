// The functions of __unwind_info: how each one keeps its caller's registers, in the 32 bits of the
// compact form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace loader {

// Addresses are the linker's; 0 is none.
struct UnwindFunction {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint32_t encoding = 0;         // 0: the function cannot be unwound
    std::uint64_t personalityPlace = 0; // where the address of the personality function lies
    std::uint64_t handlers = 0;         // its table of handlers
};

// `section` is the mapped section. Throws std::runtime_error when it is of another version or when
// it points outside itself.
std::vector<UnwindFunction> readUnwindInfo(const unsigned char* section, std::size_t size);

} // namespace loader
