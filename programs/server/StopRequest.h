// The wish to end, from whatever thread, and waits that it cuts short.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace server {

class StopRequest {
  public:
    void request() {
        const std::lock_guard lock(mutex_);
        requested_ = true;
        changed_.notify_all();
    }

    bool requested() const {
        const std::lock_guard lock(mutex_);
        return requested_;
    }

    // Waits for `duration` or until the request comes; true when it came.
    bool waitFor(std::chrono::nanoseconds duration) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, duration, [this] { return requested_; });
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool requested_ = false;
};

} // namespace server
