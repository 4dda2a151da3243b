// The program's own operator new. In a file of its own, so that no compiler sees through it and
// takes it for a mismatch with free.
#include "camera/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t sizeToRefuse = 0;

} // namespace

namespace support {

void refuseNextAllocationOf(std::size_t bytes) {
    sizeToRefuse = bytes;
}

bool allocationRefusalPending() {
    return sizeToRefuse != 0;
}

} // namespace support

void* operator new(std::size_t size) {
    if (size == sizeToRefuse && size != 0) {
        sizeToRefuse = 0;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
