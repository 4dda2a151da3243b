#include "sdk/frame_mailbox.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace camera::sdk {
namespace {

// How far apart in time two frames are, in milliseconds. Sensors whose clocks have nothing to do
// with each other tell nothing about that.
double distance(const rs2::frame& a, const rs2::frame& b) {
    if (a.get_frame_timestamp_domain() != b.get_frame_timestamp_domain()) {
        return 0.0;
    }
    return std::abs(a.get_timestamp() - b.get_timestamp());
}

bool notBefore(const rs2::frame& frame, const rs2::frame& other) {
    return frame.get_frame_timestamp_domain() != other.get_frame_timestamp_domain() ||
           frame.get_timestamp() >= other.get_timestamp();
}

} // namespace

FrameMailbox::FrameMailbox(EnabledStreams enabled, std::chrono::nanoseconds patience, bool lossless)
    : enabled_(enabled), patience_(patience), lossless_(lossless) {}

void FrameMailbox::open() {
    const std::lock_guard lock(mutex_);
    closed_ = false;
}

void FrameMailbox::holdUp() {
    const std::lock_guard lock(mutex_);
    holdsUp_ = true;
}

void FrameMailbox::put(rs2::frame frame) {
    const bool isDepth = frame.get_profile().stream_type() == RS2_STREAM_DEPTH;
    const bool leads = isDepth == enabled_.depth;
    std::unique_lock lock(mutex_);
    if (closed_) {
        return;
    }
    auto& queue = leads ? leading_ : following_;
    queue.push_back(std::move(frame));
    arrived_.notify_one();
    const bool awaited = lossless_ && !leading_.empty(); // by one that is still to be paired
    if (lossless_ && leads) {
        taken_.wait(lock, [&] { return closed_ || !holdsUp_ || leading_.size() <= leadingFrames; });
    } else if (queue.size() > (leads ? leadingFrames : followingFrames) && !awaited) {
        queue.pop_front();
    }
}

void FrameMailbox::end() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    arrived_.notify_one();
}

void FrameMailbox::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    leading_.clear();
    following_.clear();
    leader_ = {};
    follower_ = {};
    taken_.notify_all();
}

FrameMailbox::Outcome FrameMailbox::take(Clock::Time deadline) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_until(lock, deadline, [&] { return ended_ || !leading_.empty(); })) {
        return Outcome::NoFrame;
    }
    if (leading_.empty()) {
        return Outcome::End;
    }
    const Clock::Time patient =
        follower_ ? std::min(deadline, std::chrono::steady_clock::now() + patience_) : deadline;
    arrived_.wait_until(lock, patient, [&] { return ended_ || hasPartner(); });
    pair();
    taken_.notify_all();
    return Outcome::Frame;
}

// Whether a better partner for the oldest leading frame cannot come any more, or will not while
// somebody is held up with a further leading frame.
bool FrameMailbox::hasPartner() const {
    if (!(enabled_.depth && enabled_.color) || leading_.size() > leadingFrames) {
        return true;
    }
    const rs2::frame& newest = following_.empty() ? follower_ : following_.back();
    return newest && notBefore(newest, leading_.front());
}

void FrameMailbox::pair() {
    leader_ = std::move(leading_.front());
    leading_.pop_front();
    while (!following_.empty() &&
           (!follower_ || distance(following_.front(), leader_) <= distance(follower_, leader_))) {
        follower_ = std::move(following_.front());
        following_.pop_front();
    }
}

} // namespace camera::sdk
