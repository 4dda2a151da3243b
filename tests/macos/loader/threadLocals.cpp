#include "macos/loader/threadLocals.h"

#include "macos/loader/MachOFile.h"

#include <algorithm>
#include <vector>

namespace {

struct Descriptor {
    void* (*address)(Descriptor*); // called with all registers but two to be kept
    std::uintptr_t unused;
    std::uintptr_t offset;
};

// The initial values of the one bundle, zeros included.
std::vector<char> initialValues;

} // namespace

extern "C" {

// The thread's copies appear with the first use and go with the thread, after what their
// destructors are.
__attribute__((used)) void* qvrLoaderThreadLocal(const Descriptor* descriptor) {
    thread_local std::vector<char> copies = initialValues;
    return copies.data() + descriptor->offset;
}

void* qvrLoaderThreadLocalThunk(Descriptor* descriptor);
}

// Callers keep values in registers that calls usually overwrite. Seven pushed words and the return
// address leave the stack aligned for a call.
asm(R"(
    .text
    .type qvrLoaderThreadLocalThunk, @function
qvrLoaderThreadLocalThunk:
    push %rcx
    push %rdx
    push %rsi
    push %r8
    push %r9
    push %r10
    push %r11
    call qvrLoaderThreadLocal
    pop %r11
    pop %r10
    pop %r9
    pop %r8
    pop %rsi
    pop %rdx
    pop %rcx
    ret
    .size qvrLoaderThreadLocalThunk, . - qvrLoaderThreadLocalThunk
)");

namespace loader {

void placeThreadLocals(const MachOFile& file, std::uintptr_t base) {
    std::uint64_t begin = UINT64_MAX;
    std::uint64_t end = 0;
    for (const Section& section : file.sections(SectionKind::ThreadLocalData)) {
        begin = std::min(begin, section.address);
        end = std::max(end, section.address + section.size);
    }
    if (begin < end) {
        initialValues.assign(reinterpret_cast<const char*>(base + begin),
                             reinterpret_cast<const char*>(base + end));
    }
    for (const Section& section : file.sections(SectionKind::ThreadLocalVariables)) {
        auto* descriptor = reinterpret_cast<Descriptor*>(base + section.address);
        for (std::uint64_t size = 0; size < section.size; size += sizeof(Descriptor)) {
            descriptor->address = qvrLoaderThreadLocalThunk;
            ++descriptor;
        }
    }
}

} // namespace loader
