#include "clock.h"

#include <thread>

namespace camera {
namespace {

class SteadyClock : public Clock {
  public:
    Time now() override { return std::chrono::steady_clock::now(); }
    void sleepUntil(Time time) override { std::this_thread::sleep_until(time); }
};

} // namespace

Clock& steadyClock() {
    static SteadyClock clock;
    return clock;
}

} // namespace camera
