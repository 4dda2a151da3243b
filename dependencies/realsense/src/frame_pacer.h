// When frames arrive: a camera takes pictures at its rate whether or not anybody waits for them.
#pragma once

#include "clock.h"
#include "frame_source.h"

#include <cstdint>
#include <optional>

namespace camera {

class FramePacer : public FrameArrivals {
  public:
    // Starts the first exposure now. Unpaced frames are there as soon as they are asked for.
    FramePacer(Clock& clock, int framerate, bool paced);

    // Waits for the next frame and gives its number, from 0. A frame that is queued already comes
    // at once; at most four are queued, so that a late caller misses the older ones. Nothing when
    // no frame arrives until `deadline`.
    std::optional<std::uint64_t> next(Clock::Time deadline) override;

  private:
    std::uint64_t arrivedUntil(Clock::Time time) const;
    Clock::Time arrival(std::uint64_t number) const;

    Clock& clock_;
    std::uint64_t framerate_;
    bool paced_;
    Clock::Time start_;
    std::uint64_t next_ = 0;
};

} // namespace camera
