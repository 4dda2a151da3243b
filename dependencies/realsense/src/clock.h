// The time that paces a camera; a test puts its own in.
#pragma once

#include <chrono>

namespace camera {

class Clock {
  public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~Clock() = default;
    virtual Time now() = 0;
    virtual void sleepUntil(Time time) = 0;
};

// Real time, which no change of the wall clock disturbs.
Clock& steadyClock();

} // namespace camera
