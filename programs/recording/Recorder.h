// Frames on their way from the camera to the disk, which is slower at times.
#pragma once

#include "recording/Frame.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace recording {

// What happens to a frame for which no buffer is free.
enum class WhenFull {
    drop, // it is left out, and whoever offers it never waits
    wait, // whoever offers it waits for the disk
};

// A fixed number of frame buffers and a thread that writes them in order. Whoever offers frames
// allocates nothing. Every frame that is taken says how many before it were not.
class Recorder {
  public:
    // Writes one frame; what it throws ends the recording.
    using Write = std::function<void(const FrameInfo& frame, const PictureView& pictures)>;
    // Called once, on the writing thread, when writing has failed.
    using Failed = std::function<void(const std::string& why)>;

    // Pictures of `depthPixels` samples and `colorBytes` bytes, in so many buffers. The first frame
    // offered is wanted, and then one in `every`, from 1.
    Recorder(std::size_t depthPixels, std::size_t colorBytes, std::size_t buffers,
             std::uint64_t every, Write write, Failed failed, WhenFull whenFull = WhenFull::drop);
    // As finish().
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // As many as fit into a bounded amount of memory, for about a second of frames.
    static std::size_t bufferCount(std::size_t depthPixels, std::size_t colorBytes);

    // Takes a copy of a frame, or leaves it out. `before` is what the tracking knew before this
    // frame; it is written with the first frame after some were left out. Pictures of another size
    // end the recording.
    void offer(const FrameInfo& frame, const PictureView& pictures, const Tracking& before);

    // Writes what was taken and ends the thread; what is offered from now on is ignored.
    void finish();

    std::uint64_t written() const; // frames, so far
    std::uint64_t dropped() const; // frames that were wanted and found no buffer
    bool failed() const;

  private:
    struct Buffer {
        FrameInfo frame;
        std::vector<std::uint16_t> depth;
        std::vector<std::uint8_t> color;
    };

    void run();

    Write write_;
    Failed failed_;
    std::vector<Buffer> ring_;
    std::uint64_t every_;
    WhenFull whenFull_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t first_ = 0;  // of the buffers that wait to be written, or is being written
    std::size_t filled_ = 0; // so many
    std::uint64_t written_ = 0;
    std::uint64_t dropped_ = 0;
    bool broken_ = false;
    bool finished_ = false;

    // Of the offering thread.
    std::uint64_t offered_ = 0;
    std::uint64_t missing_ = 0; // since the last frame taken
    std::thread thread_;
};

} // namespace recording
