// Lets visitors in, or keeps all of them out for a moment in which the server can be looked at.
#pragma once

#include <condition_variable>
#include <mutex>

namespace soak {

class Turnstile {
  public:
    // After so many seconds the server drops a client that does not read.
    static constexpr double clientTimeout = 3.0;

    // For visitors: waits while it is closed; false when it is closed for good.
    bool enter() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return open_ || over_; });
        if (over_)
            return false;
        ++inside_;
        return true;
    }
    void leave() {
        const std::lock_guard lock(mutex_);
        --inside_;
        changed_.notify_all();
    }
    // While false, those inside are asked to go.
    bool open() const {
        const std::lock_guard lock(mutex_);
        return open_;
    }

    // Asks everybody out and waits until they have gone.
    void close() {
        std::unique_lock lock(mutex_);
        open_ = false;
        changed_.wait(lock, [this] { return inside_ == 0; });
    }
    void openAgain() { set(true, false); }
    void closeForGood() { set(false, true); }

  private:
    void set(bool open, bool over) {
        const std::lock_guard lock(mutex_);
        open_ = open;
        over_ = over;
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
    bool over_ = false;
    int inside_ = 0;
};

} // namespace soak
