#include "frame_pacer.h"

#include <algorithm>

namespace camera {
namespace {

using std::chrono::nanoseconds;

constexpr std::uint64_t queueLength = 4;
constexpr std::uint64_t second = 1'000'000'000;

} // namespace

FramePacer::FramePacer(Clock& clock, int framerate, bool paced)
    : clock_(clock), framerate_(static_cast<std::uint64_t>(framerate)), paced_(paced),
      start_(clock.now()) {}

std::optional<std::uint64_t> FramePacer::next(Clock::Time deadline) {
    const Clock::Time now = clock_.now();
    if (!paced_) {
        return now > deadline ? std::nullopt : std::optional(next_++);
    }
    const std::uint64_t arrived = arrivedUntil(now);
    const std::uint64_t oldestQueued = arrived > queueLength ? arrived - queueLength : 0;
    const std::uint64_t number = std::max(next_, oldestQueued);
    if (number >= arrived) {
        const Clock::Time time = arrival(number);
        clock_.sleepUntil(std::min(time, deadline));
        if (time > deadline) {
            return std::nullopt;
        }
    }
    next_ = number + 1;
    return number;
}

// A frame arrives when its exposure, one period long, has ended.
std::uint64_t FramePacer::arrivedUntil(Clock::Time time) const {
    const auto elapsed =
        static_cast<std::uint64_t>(std::chrono::duration_cast<nanoseconds>(time - start_).count());
    // Whole seconds apart from the rest, so that years of streaming do not overflow.
    return elapsed / second * framerate_ + elapsed % second * framerate_ / second;
}

Clock::Time FramePacer::arrival(std::uint64_t number) const {
    const std::uint64_t periods = number + 1;
    const std::uint64_t elapsed = periods / framerate_ * second +
                                  (periods % framerate_ * second + framerate_ - 1) / framerate_;
    return start_ + std::chrono::duration_cast<Clock::Time::duration>(
                        nanoseconds(static_cast<std::int64_t>(elapsed)));
}

} // namespace camera
