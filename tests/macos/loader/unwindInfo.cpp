#include "macos/loader/unwindInfo.h"

#include <cstring>
#include <map>
#include <stdexcept>

namespace loader {

namespace {

constexpr std::uint32_t plainPage = 2;
constexpr std::uint32_t compressedPage = 3;

class Reader {
  public:
    Reader(const unsigned char* section, std::size_t size) : section_(section), size_(size) {
        if (word(0) != 1) {
            throw std::runtime_error("unwind info of version " + std::to_string(word(0)));
        }
    }

    // Pages of functions, in the order of their addresses. The last entry of the index only says
    // where the last function ends.
    std::vector<UnwindFunction> functions() {
        const std::uint32_t index = word(20);
        const std::uint32_t pages = word(24);
        for (std::uint32_t page = 0; page + 1 < pages; ++page) {
            const std::uint32_t entry = index + 12 * page;
            readHandlers(word(entry + 8), word(entry + 20));
            readPage(word(entry), word(entry + 4));
        }
        const std::uint32_t end = word(index + 12 * (pages - 1));
        for (std::size_t number = 0; number < functions_.size(); ++number) {
            UnwindFunction& function = functions_[number];
            function.end = number + 1 < functions_.size() ? functions_[number + 1].begin : end;
            describe(function);
        }
        return std::move(functions_);
    }

  private:
    std::uint32_t word(std::size_t offset) const { return read<std::uint32_t>(offset); }
    std::uint16_t halfWord(std::size_t offset) const { return read<std::uint16_t>(offset); }
    template <typename Value>
    Value read(std::size_t offset) const {
        Value value;
        if (offset > size_ || size_ - offset < sizeof value) {
            throw std::runtime_error("unwind info points outside itself");
        }
        std::memcpy(&value, section_ + offset, sizeof value);
        return value;
    }

    void readHandlers(std::uint32_t begin, std::uint32_t end) {
        for (std::uint32_t entry = begin; entry < end; entry += 8) {
            handlers_[word(entry)] = word(entry + 4);
        }
    }

    void readPage(std::uint32_t firstFunction, std::uint32_t page) {
        const std::uint32_t entries = page + halfWord(page + 4);
        const std::uint32_t count = halfWord(page + 6);
        if (word(page) == plainPage) {
            for (std::uint32_t entry = entries; entry < entries + 8 * count; entry += 8) {
                add(word(entry), word(entry + 4));
            }
        } else if (word(page) == compressedPage) {
            const std::uint32_t own = page + halfWord(page + 8);
            for (std::uint32_t entry = entries; entry < entries + 4 * count; entry += 4) {
                const std::uint32_t packed = word(entry);
                add(firstFunction + (packed & 0xFFFFFF), encodingNumber(packed >> 24, own));
            }
        } else {
            throw std::runtime_error("an unwind page of kind " + std::to_string(word(page)));
        }
    }

    // The encodings of the whole file come first, then those of the page.
    std::uint32_t encodingNumber(std::uint32_t number, std::uint32_t ownEncodings) const {
        const std::uint32_t commonCount = word(8);
        return number < commonCount ? word(word(4) + 4 * number)
                                    : word(ownEncodings + 4 * (number - commonCount));
    }

    void add(std::uint64_t begin, std::uint32_t encoding) {
        functions_.push_back({begin, 0, encoding, 0, 0});
    }

    void describe(UnwindFunction& function) const {
        const std::uint32_t personality = function.encoding >> 28 & 3;
        if (personality != 0) {
            function.personalityPlace = word(word(12) + 4 * (personality - 1));
        }
        const auto handlers = handlers_.find(function.begin);
        if (handlers != handlers_.end()) {
            function.handlers = handlers->second;
        }
    }

    const unsigned char* section_;
    std::size_t size_;
    std::map<std::uint64_t, std::uint64_t> handlers_; // by the function's address
    std::vector<UnwindFunction> functions_;
};

} // namespace

std::vector<UnwindFunction> readUnwindInfo(const unsigned char* section, std::size_t size) {
    return Reader(section, size).functions();
}

} // namespace loader
