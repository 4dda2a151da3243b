#include "FramePool.h"

namespace server {

namespace {

// The pool holds one reference to each of its frames; a frame with no other is free.
constexpr unsigned poolOnly = 1;

} // namespace

FramePool::FramePool(std::size_t frameBytes, std::size_t frameCount) {
    frames_.reserve(frameCount);
    for (std::size_t i = 0; i < frameCount; ++i)
        frames_.emplace_back(new Frame(frameBytes));
}

FrameRef FramePool::acquire() {
    for (const FrameRef& frame : frames_) {
        unsigned expected = poolOnly;
        if (frame->references_.compare_exchange_strong(
                expected, poolOnly + 1, std::memory_order_acquire, std::memory_order_relaxed))
            return {frame.get(), false};
    }
    return {};
}

std::size_t FramePool::freeCount() const {
    std::size_t count = 0;
    for (const FrameRef& frame : frames_)
        count += frame->references_.load(std::memory_order_relaxed) == poolOnly ? 1U : 0U;
    return count;
}

} // namespace server
