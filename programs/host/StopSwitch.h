// Ends the host's loop on time: by signal, time limit or wish of the user, even while the plug-in
// waits for a frame that does not come.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include <pthread.h>

namespace host {

// Made on the loop thread, one at a time. SIGINT, SIGTERM and SIGHUP ask the loop to stop; they
// and the terminal's signals are handled on the switch's own thread, so that they do not break
// into the plug-in's calls. Once a stop is asked for, the loop thread's blocking call is
// interrupted again and again until the loop calls `finish`.
class StopSwitch {
  public:
    // `tick` is called about thirty times a second on the switch's thread until the loop finishes;
    // a stop is asked for when it returns false, and when `seconds` have passed.
    StopSwitch(std::optional<double> seconds, std::function<bool()> tick);
    ~StopSwitch();
    StopSwitch(const StopSwitch&) = delete;
    StopSwitch& operator=(const StopSwitch&) = delete;

    bool stopAsked() const { return stop_.load(); }
    void askToStop() { stop_.store(true); }
    // Sleeps, but not beyond a stop.
    void pause(double seconds);
    // The loop makes no more blocking calls; ends the thread.
    void finish();

  private:
    void run();

    std::function<bool()> tick_;
    std::optional<double> seconds_;
    pthread_t loopThread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> finished_{false};
    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread thread_;
};

} // namespace host
