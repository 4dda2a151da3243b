#include "Frame.h"

#include <algorithm>

namespace server {

void intrusive_ptr_add_ref(Frame* frame) noexcept {
    frame->references_.fetch_add(1, std::memory_order_relaxed);
}

// What the holder read of the frame is done before another thread may see it free and write it.
void intrusive_ptr_release(Frame* frame) noexcept {
    if (frame->references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete frame;
}

void Frame::lend(const FrameParts& parts) {
    const std::lock_guard lock(reading_);
    lent_ = parts;
    isLent_ = true;
}

bool Frame::isLent() const {
    const std::lock_guard lock(reading_);
    return isLent_;
}

void Frame::takeBack() {
    const std::lock_guard lock(reading_);
    isLent_ = false;
}

FrameParts Frame::rest(std::size_t offset) const {
    FrameParts parts = isLent_ ? lent_ : FrameParts{std::span<const std::byte>(bytes_)};
    for (std::span<const std::byte>& part : parts) {
        const std::size_t before = std::min(offset, part.size());
        part = part.subspan(before);
        offset -= before;
    }
    return parts;
}

void Frame::beginUse() {
    const std::lock_guard lock(counting_);
    ++uses_;
}

void Frame::endUse() {
    const std::lock_guard lock(counting_);
    --uses_;
    if (uses_ == 0)
        unused_.notify_all();
}

bool Frame::waitUntilSent(Clock::time_point deadline) const {
    std::unique_lock lock(counting_);
    return unused_.wait_until(lock, deadline, [this] { return uses_ == 0; });
}

FrameUse useOf(FrameRef frame) {
    frame->beginUse();
    return FrameUse(frame.detach());
}

void EndOfUse::operator()(Frame* frame) const noexcept {
    const FrameRef reference(frame, false);
    frame->endUse();
}

} // namespace server
