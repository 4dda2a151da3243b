#include "FramePool.h"

namespace server {

namespace {

// The pool holds one reference to each of its frames; a frame with no other is free.
constexpr unsigned poolOnly = 1;

} // namespace

void intrusive_ptr_add_ref(Frame* frame) noexcept {
    frame->references_.fetch_add(1, std::memory_order_relaxed);
}

// What the holder read of the frame is done before another thread may see it free and write it.
void intrusive_ptr_release(Frame* frame) noexcept {
    if (frame->references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete frame;
}

FramePool::FramePool(std::size_t frameBytes, std::size_t frameCount) : frameBytes_(frameBytes) {
    frames_.reserve(frameCount);
    for (std::size_t i = 0; i < frameCount; ++i)
        frames_.emplace_back(new Frame(frameBytes));
}

FrameRef FramePool::acquire() {
    for (const FrameRef& frame : frames_) {
        unsigned expected = poolOnly;
        if (frame->references_.compare_exchange_strong(
                expected, poolOnly + 1, std::memory_order_acquire, std::memory_order_relaxed)) {
            frame->setReady(frameBytes_);
            return {frame.get(), false};
        }
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
