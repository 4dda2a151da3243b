// From the threads in which a camera's frames arrive to the one that waits for them: one pair of
// depth and colour after the other.
#pragma once

#include "clock.h"
#include "frame_source.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

#include <librealsense2/rs.hpp>

namespace camera::sdk {

// Depth leads when it is enabled: every pair is a new leading frame and the other stream's frame
// that is nearest in time to it, which may be the one of the pair before.
class FrameMailbox {
  public:
    // Of a stream that nobody waits for at most this many frames are kept, then the oldest go.
    static constexpr std::size_t leadingFrames = 4;
    static constexpr std::size_t followingFrames = 8;

    // A pair waits for its second frame at most `patience`, the first pair as long as may be. A
    // lossless mailbox makes those who bring leading frames wait instead of dropping any.
    FrameMailbox(EnabledStreams enabled, std::chrono::nanoseconds patience, bool lossless);

    // Frames that came before are dropped.
    void open();
    // From now on a lossless mailbox makes those wait who bring leading frames faster than they are
    // taken. A device that is still starting would wait for them; until then all frames are kept.
    void holdUp();
    // Any thread: a frame of either stream.
    void put(rs2::frame frame);
    // Any thread: no frame will come any more.
    void end();
    // The one who takes: gives all frames back. Those that come from now on are dropped, and those
    // who bring them do not wait any more.
    void close();

    enum class Outcome { Frame, NoFrame, End };
    // Waits for the next pair; it stays until the next one is taken. NoFrame after `deadline`;
    // End when the last pair has been taken already.
    Outcome take(Clock::Time deadline);

    // The frame that led to the pair taken last.
    const rs2::frame& leader() const { return leader_; }
    // The pair taken last. Empty where there is none yet, or the stream is not enabled.
    const rs2::frame& depth() const { return enabled_.depth ? leader_ : follower_; }
    const rs2::frame& color() const { return enabled_.depth ? follower_ : leader_; }

  private:
    bool hasPartner() const;
    void pair();

    const EnabledStreams enabled_;
    const std::chrono::nanoseconds patience_;
    const bool lossless_;

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::condition_variable taken_;
    std::deque<rs2::frame> leading_;
    std::deque<rs2::frame> following_;
    bool ended_ = false;
    bool closed_ = true;
    bool holdsUp_ = false;

    // Only for the one who takes.
    rs2::frame leader_;
    rs2::frame follower_;
};

} // namespace camera::sdk
