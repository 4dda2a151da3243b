#include "macos/loader/Bundle.h"

#include "macos/loader/MachOFile.h"
#include "macos/loader/objectiveC.h"
#include "macos/loader/system/symbols.h"
#include "macos/loader/threadLocals.h"
#include "macos/loader/unwindTables.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <sys/mman.h>

namespace loader {

namespace {

// Maps the segments side by side, writable for now. The address of the file's address 0.
std::uintptr_t mapSegments(const MachOFile& file) {
    std::uintptr_t end = 0;
    for (const Segment& segment : file.segments()) {
        end = std::max(end, segment.address + segment.size);
    }
    void* base = mmap(nullptr, end, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base == MAP_FAILED) {
        throw std::runtime_error("no memory for the bundle's segments");
    }
    for (const Segment& segment : file.segments()) {
        std::memcpy(static_cast<char*>(base) + segment.address, segment.content.data(),
                    segment.content.size());
    }
    return reinterpret_cast<std::uintptr_t>(base);
}

void protectSegments(const MachOFile& file, std::uintptr_t base) {
    for (const Segment& segment : file.segments()) {
        if (mprotect(reinterpret_cast<void*>(base + segment.address), segment.size,
                     segment.protection) != 0) {
            throw std::runtime_error("cannot protect the segment " + segment.name);
        }
    }
}

std::uintptr_t& wordAt(std::uintptr_t address) {
    return *reinterpret_cast<std::uintptr_t*>(address);
}

void movePointers(const MachOFile& file, std::uintptr_t base) {
    for (const std::uint64_t place : file.pointersToMove()) {
        wordAt(base + place) += base;
    }
}

std::uintptr_t addressOfImport(const std::string& name) {
    if (const std::uintptr_t address = classSymbol(name)) {
        return address;
    }
    return systemSymbol(name);
}

// Names everything that is missing at once.
void bindImports(const MachOFile& file, std::uintptr_t base,
                 const std::map<std::string, std::uintptr_t>& exports) {
    std::map<std::string, std::uintptr_t> known;
    std::string missing;
    for (const Binding& binding : file.bindings()) {
        // What several images may define is the bundle's own here, as nobody else has it.
        const auto own = exports.find(binding.symbol);
        if (binding.weak && own == exports.end()) {
            continue;
        }
        const auto [place, isNew] = known.try_emplace(binding.symbol, 0);
        if (isNew) {
            place->second = own != exports.end() ? own->second : addressOfImport(binding.symbol);
            if (place->second == 0) {
                missing += " " + binding.symbol;
            }
        }
        wordAt(base + binding.place) = place->second + static_cast<std::uintptr_t>(binding.addend);
    }
    if (!missing.empty()) {
        throw std::runtime_error("the bundle imports what is not translated:" + missing);
    }
}

void runInitialisers(const MachOFile& file, std::uintptr_t base) {
    using Initialiser = void (*)(int, const char**, const char**, const char**, const void*);
    const char* none[] = {nullptr};
    for (const Section& section : file.sections(SectionKind::Initialisers)) {
        for (std::uint64_t offset = 0; offset < section.size; offset += sizeof(std::uintptr_t)) {
            const std::uintptr_t initialiser = wordAt(base + section.address + offset);
            reinterpret_cast<Initialiser>(initialiser)(0, none, none, none, nullptr);
        }
    }
}

} // namespace

Bundle::Bundle(const std::string& path) {
    static bool loaded = false;
    if (std::exchange(loaded, true)) {
        throw std::runtime_error("there is a bundle in this process already");
    }
    const MachOFile file(path);
    const std::uintptr_t base = mapSegments(file);
    for (const auto& [name, address] : file.exports()) {
        exports_.emplace(name, base + address);
    }
    movePointers(file, base);
    bindImports(file, base, exports_);
    placeThreadLocals(file, base);
    protectSegments(file, base);
    registerUnwindTables(file, base);
    runInitialisers(file, base);
}

void* Bundle::find(const std::string& name) const {
    const auto place = exports_.find("_" + name);
    if (place == exports_.end()) {
        throw std::runtime_error("the bundle does not export " + name);
    }
    return reinterpret_cast<void*>(place->second);
}

} // namespace loader
