// One frame on its way from the camera to the clients.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace server {

// The bytes of a frame as they lie in memory, in the order on the wire: touches, colour, depth,
// processed image. What there is none of is empty.
using FrameParts = std::array<std::span<const std::byte>, 4>;

// A whole frame as it goes over the wire: the camera's own pictures as long as it lends them, so
// that a large frame is on its way before it is copied, and then the copy.
//
// Its memory is written by the one who acquired it, before it is published or while others read
// what is lent.
class Frame {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Frame(std::size_t size) : bytes_(size) {}
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    // The frame's own memory.
    std::span<std::byte> bytes() { return bytes_; }
    std::span<const std::byte> bytes() const { return bytes_; }

    // From here on, readers get `parts`, which are as long as bytes() in all. Before publishing.
    void lend(const FrameParts& parts);
    bool isLent() const;
    // From here on, readers get bytes(). Nobody reads what was lent when this returns.
    void takeBack();

    // What `reader` returns when it is given everything from `offset` on. It may keep no pointer;
    // taking back waits for it.
    template <typename Reader>
    auto read(std::size_t offset, Reader&& reader) const {
        const std::lock_guard lock(reading_);
        return reader(rest(offset));
    }

    // Counts those who are sending the frame; see FrameUse.
    void beginUse();
    void endUse();
    // False when somebody was still sending it at `deadline`.
    bool waitUntilSent(Clock::time_point deadline) const;

  private:
    friend class FramePool;
    friend void intrusive_ptr_add_ref(Frame* frame) noexcept;
    friend void intrusive_ptr_release(Frame* frame) noexcept;

    FrameParts rest(std::size_t offset) const;

    std::vector<std::byte> bytes_;
    mutable std::mutex reading_;
    FrameParts lent_;
    bool isLent_ = false;

    mutable std::mutex counting_;
    mutable std::condition_variable unused_;
    std::size_t uses_ = 0;

    std::atomic<unsigned> references_{0};
};

void intrusive_ptr_add_ref(Frame* frame) noexcept;
void intrusive_ptr_release(Frame* frame) noexcept;

using FrameRef = boost::intrusive_ptr<Frame>;

// The reference of somebody who is sending the frame.
struct EndOfUse {
    void operator()(Frame* frame) const noexcept;
};
using FrameUse = std::unique_ptr<Frame, EndOfUse>;
FrameUse useOf(FrameRef frame);

} // namespace server
