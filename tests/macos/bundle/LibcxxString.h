// A std::string as the bundle's C++ library lays it out, in its 24 bytes: a short text lies in them
// behind its doubled length, a long one in memory of its own, which the bundle may replace.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

class LibcxxString {
  public:
    LibcxxString() = default;
    explicit LibcxxString(const std::string& text) {
        // Room for the zero at the end; the lowest bit marks a long text.
        const std::uint64_t room = (text.size() + 2) & ~std::uint64_t{1};
        words_ = {room | 1, text.size(), 0};
        void* memory = std::malloc(room);
        std::memcpy(memory, text.c_str(), text.size() + 1);
        std::memcpy(&words_[2], &memory, sizeof memory);
    }
    ~LibcxxString() {
        if (isLong()) {
            std::free(memory());
        }
    }
    LibcxxString(const LibcxxString&) = delete;
    LibcxxString& operator=(const LibcxxString&) = delete;

    std::string text() const {
        if (isLong()) {
            return {static_cast<const char*>(memory()), words_[1]};
        }
        const char* bytes = reinterpret_cast<const char*>(words_.data());
        return {bytes + 1, static_cast<std::size_t>(bytes[0] / 2)};
    }

  private:
    bool isLong() const { return (words_[0] & 1) != 0; }
    void* memory() const {
        void* memory = nullptr;
        std::memcpy(&memory, &words_[2], sizeof memory);
        return memory;
    }

    std::array<std::uint64_t, 3> words_{};
};
static_assert(sizeof(LibcxxString) == 24);
