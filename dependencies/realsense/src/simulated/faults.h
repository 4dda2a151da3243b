// Faults on order: a simulated camera that vanishes, stalls, changes its size or fails, so that
// everything that depends on a camera can be tested, and tried before it is relied on.
#pragma once

#include "clock.h"
#include "frame_source.h"
#include "source_options.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace camera::simulated {

enum class FaultKind {
    Vanish, // waits fail, and no device is found until it is over
    Stall,  // no frame comes
    Shrink, // waits fail; the device that is opened then has half the width and height
    Fail,   // waits fail
};

// What befalls a camera from its first opening on: a fault may outlast the device it befell.
class FaultCourse {
  public:
    // Keys "fault" and "lasting" as simulated_source.h has them; throws std::runtime_error.
    explicit FaultCourse(const SourceOptions& options, Clock& clock = steadyClock());

    bool isFree() const { return faults_.empty(); }

    // Counts a frame that is asked for, over all devices; the fault that it meets.
    std::optional<FaultKind> nextFrame();

    // Whether the fault that began last is of this kind and lasts.
    bool lasts(FaultKind kind) const;

    Clock& clock() const { return clock_; }

  private:
    struct Fault {
        FaultKind kind;
        std::uint64_t frame;
    };

    Clock& clock_;
    std::vector<Fault> faults_; // by frame
    Clock::Time::duration lasting_;
    std::size_t begun_ = 0; // so many of the faults
    Clock::Time end_;       // of the last of these
    std::uint64_t frames_ = 0;
};

// `whole` under the faults of `course`; null while the camera is away.
std::unique_ptr<FrameSource> underFaults(std::unique_ptr<FrameSource> whole,
                                         std::shared_ptr<FaultCourse> course);

} // namespace camera::simulated
