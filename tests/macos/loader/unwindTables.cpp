#include "macos/loader/unwindTables.h"

#include "macos/loader/MachOFile.h"
#include "macos/loader/compactUnwind.h"
#include "macos/loader/unwindInfo.h"

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <vector>

// The compiler's runtime has these; no header declares them.
extern "C" void __register_frame(void* table); // NOLINT(bugprone-reserved-identifier)

namespace loader {

namespace {

constexpr int returnAddress = 16; // the last of DWARF's register numbers here
constexpr int wordSize = 8;

// A call frame table as DWARF has it, in the form of .eh_frame with plain addresses.
class FrameTable {
  public:
    void add(const UnwindFunction& function, const Frame& frame, std::uintptr_t base,
             std::uintptr_t personality) {
        const std::size_t common = commonPart(personality);
        const std::size_t entry = beginEntry();
        // How far back the common part lies, from this very place.
        put32(static_cast<std::uint32_t>(bytes_.size() - common));
        put64(base + function.begin);
        put64(function.end - function.begin);
        if (personality != 0) {
            putNumber(wordSize);
            put64(function.handlers != 0 ? base + function.handlers : 0);
        } else {
            putNumber(0);
        }
        put8(0x0C); // the caller's stack pointer is ...
        putNumber(static_cast<std::uint64_t>(frame.base));
        putNumber(static_cast<std::uint64_t>(frame.offset));
        save(returnAddress, -wordSize);
        for (const Frame::SavedRegister& saved : frame.saved) {
            save(saved.number, saved.offset);
        }
        endEntry(entry);
    }

    // The table stays where it is: the unwinder reads it from now on.
    void registerForGood() {
        put32(0);
        __register_frame(bytes_.data());
    }

  private:
    // One for each personality function: what the entries that use it have in common.
    std::size_t commonPart(std::uintptr_t personality) {
        const auto [place, isNew] = commonParts_.try_emplace(personality, bytes_.size());
        if (isNew) {
            const std::size_t entry = beginEntry();
            put32(0);
            put8(1);
            for (const char letter : personality != 0 ? std::string("zPLR") : std::string("zR")) {
                put8(static_cast<unsigned char>(letter));
            }
            put8(0);
            putNumber(1);          // code addresses count bytes,
            put8(0x80 - wordSize); // offsets words downwards
            put8(returnAddress);
            putNumber(personality != 0 ? 3 + wordSize : 1);
            if (personality != 0) {
                put8(plainAddress);
                put64(personality);
                put8(plainAddress);
            }
            put8(plainAddress);
            endEntry(entry);
        }
        return place->second;
    }

    void save(int number, std::int64_t offset) {
        put8(static_cast<unsigned char>(0x80 + number));
        putNumber(static_cast<std::uint64_t>(-offset / wordSize));
    }

    std::size_t beginEntry() {
        put32(0);
        return bytes_.size();
    }
    // Filled up with instructions that do nothing, and measured.
    void endEntry(std::size_t entry) {
        while (bytes_.size() % wordSize != 0) {
            put8(0);
        }
        const auto size = static_cast<std::uint32_t>(bytes_.size() - entry);
        std::memcpy(&bytes_[entry - sizeof size], &size, sizeof size);
    }

    void put8(unsigned char byte) { bytes_.push_back(byte); }
    void put32(std::uint32_t value) { putBytes(&value, sizeof value); }
    void put64(std::uint64_t value) { putBytes(&value, sizeof value); }
    void putBytes(const void* bytes, std::size_t size) {
        const auto* first = static_cast<const unsigned char*>(bytes);
        bytes_.insert(bytes_.end(), first, first + size);
    }
    // Seven bits a byte, the lowest first.
    void putNumber(std::uint64_t number) {
        for (; number >= 0x80; number >>= 7) {
            put8(static_cast<unsigned char>(number | 0x80));
        }
        put8(static_cast<unsigned char>(number));
    }

    static constexpr unsigned char plainAddress = 0;

    std::vector<unsigned char> bytes_;
    std::map<std::uintptr_t, std::size_t> commonParts_; // by personality function, 0 for none
};

} // namespace

void registerUnwindTables(const MachOFile& file, std::uintptr_t base) {
    const Section* section = file.section("__unwind_info");
    if (section == nullptr) {
        return;
    }
    static FrameTable table;
    for (const UnwindFunction& function :
         readUnwindInfo(reinterpret_cast<unsigned char*>(base + section->address),
                        static_cast<std::size_t>(section->size))) {
        if (function.encoding == 0) {
            continue;
        }
        std::uintptr_t personality = 0;
        if (function.personalityPlace != 0) {
            personality = *reinterpret_cast<std::uintptr_t*>(base + function.personalityPlace);
        }
        const auto* code = reinterpret_cast<unsigned char*>(base + function.begin);
        table.add(function, decodeCompactUnwind(function.encoding, code), base, personality);
    }
    table.registerForGood();
}

} // namespace loader
