#include "HandlerMemory.h"

#include <new>

namespace server {

void* HandlerMemory::allocate(std::size_t size) {
    for (Block& block : blocks_) {
        if (size <= block.bytes.size() && !block.used.exchange(true, std::memory_order_acquire))
            return block.bytes.data();
    }
    return ::operator new(size);
}

void HandlerMemory::deallocate(void* memory) noexcept {
    for (Block& block : blocks_) {
        if (memory == block.bytes.data()) {
            block.used.store(false, std::memory_order_release);
            return;
        }
    }
    ::operator delete(memory);
}

} // namespace server
