// A small, fixed set of frame buffers that camera and clients share by counting references.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace server {

// The bytes of one whole frame as they go over the wire. Written by the one who acquired it. What
// is ready of a frame that is published is written by nobody; the rest may still be, so that
// clients get the start of a large frame while its end is being copied.
class Frame {
  public:
    explicit Frame(std::size_t size) : bytes_(size), ready_(size) {}
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    std::span<std::byte> bytes() { return bytes_; }
    std::span<const std::byte> bytes() const { return bytes_; }

    // How many bytes from the start are ready; a frame that was just acquired is all ready.
    std::size_t ready() const { return ready_.load(std::memory_order_acquire); }
    bool whole() const { return ready() == bytes_.size(); }
    void setReady(std::size_t bytes) { ready_.store(bytes, std::memory_order_release); }

  private:
    friend class FramePool;
    friend void intrusive_ptr_add_ref(Frame* frame) noexcept;
    friend void intrusive_ptr_release(Frame* frame) noexcept;

    std::vector<std::byte> bytes_;
    std::atomic<std::size_t> ready_;
    std::atomic<unsigned> references_{0};
};

void intrusive_ptr_add_ref(Frame* frame) noexcept;
void intrusive_ptr_release(Frame* frame) noexcept;

using FrameRef = boost::intrusive_ptr<Frame>;

// Hands out frames that nobody else holds. Its memory is fixed at construction, however many
// clients lag. Every function may be called from any thread; none blocks or allocates. Frames
// may outlive their pool.
class FramePool {
  public:
    FramePool(std::size_t frameBytes, std::size_t frameCount);

    // A free frame with whatever bytes it last had, or null when all are in use.
    FrameRef acquire();

    std::size_t freeCount() const;
    std::size_t frameBytes() const { return frameBytes_; }

  private:
    std::size_t frameBytes_;
    std::vector<FrameRef> frames_;
};

} // namespace server
