// Apart from the tests, for the compiler must not look into both ends of an allocation at once:
// it takes the pair of operator new and free for a mistake.
#include "support/countedAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<int> allocations{0};

int countedAllocations() {
    return allocations.load();
}

void* operator new(std::size_t size) {
    allocations.fetch_add(1);
    if (void* memory = std::malloc(size)) {
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
