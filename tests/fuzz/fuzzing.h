// What every fuzz target uses: a reader of the fuzzer's bytes, and the end of a run that found
// something.
#pragma once

#include "foundation/Logger.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

// A target is one source file with this function, which libFuzzer calls with bytes of its making
// and the replay with the files of the target's corpus. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzzing {

// Ends the program, which makes the input a finding, unless `holds`.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "this does not hold: %s\n", what);
        std::abort();
    }
}

// Reads every message to its end and keeps none.
inline void swallowMessages() {
    QVR::Logger::RegisterDebugCallback([](const char* text) {
        require(std::strlen(text) < std::size_t{1} << 30, "a message ends");
    });
}

// Hands the bytes out from the front; what is missing reads as 0.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    // Little-endian.
    template <typename Number>
    Number number() {
        Number value{};
        const std::size_t bytes = std::min(sizeof value, left_);
        if (bytes != 0) {
            std::memcpy(&value, next_, bytes);
        }
        skip(bytes);
        return value;
    }

    std::uint8_t byte() { return number<std::uint8_t>(); }

    std::string text(std::size_t size) {
        const std::size_t bytes = std::min(size, left_);
        std::string taken(reinterpret_cast<const char*>(next_), bytes);
        skip(bytes);
        return taken;
    }

    std::string rest() { return text(left_); }
    std::size_t left() const { return left_; }

  private:
    void skip(std::size_t bytes) {
        next_ += bytes;
        left_ -= bytes;
    }

    const std::uint8_t* next_;
    std::size_t left_;
};

} // namespace fuzzing
