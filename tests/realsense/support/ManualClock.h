// Time that stands still until somebody sleeps or a test moves it.
#pragma once

#include "clock.h"

namespace camera_test {

class ManualClock : public camera::Clock {
  public:
    Time now() override { return time; }
    void sleepUntil(Time until) override {
        ++sleeps;
        time = until > time ? until : time;
    }

    double seconds() const { return std::chrono::duration<double>(time - Time{}).count(); }
    void advance(std::chrono::nanoseconds by) { time += by; }

    Time time{};
    int sleeps = 0;
};

} // namespace camera_test
