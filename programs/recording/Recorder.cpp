#include "recording/Recorder.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace recording {

namespace {

constexpr std::size_t memoryBound = std::size_t{128} * 1024 * 1024;
constexpr std::size_t fewestBuffers = 4;
constexpr std::size_t mostBuffers = 64;

} // namespace

Recorder::Recorder(std::size_t depthPixels, std::size_t colorBytes, std::size_t buffers,
                   std::uint64_t every, Write write, Failed failed, WhenFull whenFull)
    : write_(std::move(write)), failed_(std::move(failed)), ring_(buffers), every_(every),
      whenFull_(whenFull) {
    for (Buffer& buffer : ring_) {
        buffer.depth.resize(depthPixels);
        buffer.color.resize(colorBytes);
    }
    thread_ = std::thread([this] { run(); });
}

Recorder::~Recorder() {
    finish();
}

std::size_t Recorder::bufferCount(std::size_t depthPixels, std::size_t colorBytes) {
    const std::size_t bytes = std::max<std::size_t>(1, depthPixels * 2 + colorBytes);
    return std::clamp(memoryBound / bytes, fewestBuffers, mostBuffers);
}

void Recorder::offer(const FrameInfo& frame, const PictureView& pictures, const Tracking& before) {
    std::unique_lock lock(mutex_);
    if (broken_ || finished_) {
        return;
    }
    if (offered_++ % every_ != 0) {
        ++missing_;
        return;
    }
    if (whenFull_ == WhenFull::wait) {
        changed_.wait(lock, [this] { return filled_ < ring_.size() || broken_; });
        if (broken_) {
            return;
        }
    }
    if (filled_ == ring_.size()) {
        ++missing_;
        ++dropped_;
        return;
    }
    Buffer& buffer = ring_[(first_ + filled_) % ring_.size()];
    // Nobody else touches a buffer that is not filled.
    lock.unlock();
    buffer.depth.assign(pictures.depth.begin(), pictures.depth.end());
    buffer.color.assign(pictures.color.begin(), pictures.color.end());
    buffer.frame = frame;
    buffer.frame.dropped = missing_;
    if (missing_ != 0) {
        buffer.frame.tracking = before;
    }
    missing_ = 0;
    lock.lock();
    ++filled_;
    changed_.notify_one();
}

void Recorder::finish() {
    {
        const std::lock_guard lock(mutex_);
        finished_ = true;
        changed_.notify_one();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

std::uint64_t Recorder::written() const {
    const std::lock_guard lock(mutex_);
    return written_;
}

std::uint64_t Recorder::dropped() const {
    const std::lock_guard lock(mutex_);
    return dropped_;
}

bool Recorder::failed() const {
    const std::lock_guard lock(mutex_);
    return broken_;
}

void Recorder::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return filled_ != 0 || finished_; });
        if (filled_ == 0) {
            return;
        }
        const Buffer& buffer = ring_[first_];
        lock.unlock();
        std::string problem;
        try {
            write_(buffer.frame, {buffer.depth, buffer.color});
        } catch (const std::exception& error) {
            problem = error.what();
        }
        lock.lock();
        if (!problem.empty()) {
            broken_ = true;
            changed_.notify_all();
            lock.unlock();
            failed_(problem);
            return;
        }
        ++written_;
        first_ = (first_ + 1) % ring_.size();
        --filled_;
        changed_.notify_all();
    }
}

} // namespace recording
