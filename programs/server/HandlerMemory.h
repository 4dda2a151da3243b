// Memory for handlers that wait in the event loop, used again and again, so that a frame on its way
// to the clients costs no allocation.
//
// The event loop allocates for every handler. By itself it recycles one block of what its own
// thread hands in, which is enough for a timer but not for several clients that wait at the same
// time, and nothing of what the camera's thread hands in.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace server {

// A fixed number of blocks; what does not fit comes from the heap. Any thread.
class HandlerMemory {
  public:
    explicit HandlerMemory(std::size_t blockCount) : blocks_(blockCount) {}

    void* allocate(std::size_t size);
    void deallocate(void* memory) noexcept;

  private:
    struct Block {
        alignas(std::max_align_t) std::array<std::byte, 256> bytes;
        std::atomic<bool> used{false};
    };

    std::vector<Block> blocks_;
};

// How the event loop gets at it. Shares the memory, for handlers that never ran are only destroyed
// with the loop, which may outlive everything else.
template <typename T>
class HandlerAllocator {
  public:
    using value_type = T;

    explicit HandlerAllocator(std::shared_ptr<HandlerMemory> memory) : memory_(std::move(memory)) {}
    template <typename U>
    HandlerAllocator(const HandlerAllocator<U>& other) : memory_(other.memory_) {}

    T* allocate(std::size_t count) { return static_cast<T*>(memory_->allocate(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) noexcept { memory_->deallocate(memory); }

    template <typename U>
    bool operator==(const HandlerAllocator<U>& other) const {
        return memory_ == other.memory_;
    }

  private:
    template <typename U>
    friend class HandlerAllocator;

    std::shared_ptr<HandlerMemory> memory_;
};

// A handler that the event loop keeps in `memory` while it waits.
template <typename Handler>
class KeptHandler {
  public:
    using allocator_type = HandlerAllocator<void>;

    KeptHandler(const std::shared_ptr<HandlerMemory>& memory, Handler handler)
        : allocator_(memory), handler_(std::move(handler)) {}

    allocator_type get_allocator() const { return allocator_; }

    template <typename... Results>
    void operator()(Results&&... results) {
        handler_(std::forward<Results>(results)...);
    }

  private:
    allocator_type allocator_;
    Handler handler_;
};

} // namespace server
