// The camera of the latency measurement: the simulated scene, recorded once and played back at 60
// frames a second, because a real camera does not take the processor to draw its pictures.
#pragma once

#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <vector>

namespace bench {

// The recording repeats after this time.
constexpr std::chrono::nanoseconds framePeriod{16'666'667};
constexpr int recordedFrames = 48;

// The values that a host reads of one frame: x, y, z of ten slots. A moving or noisy finger makes
// them different in every frame, which is how the frame is known again at the other end.
using TouchValues = std::array<float, 30>;

// When the camera's wait returned, and what the pipeline then made of that frame.
struct CameraFrame {
    std::chrono::steady_clock::time_point waitReturned;
    TouchValues values;
};

// Finds a frame by its values. Not those that look like another one of the last half second,
// such as two without a touch, and not those older than that.
class FrameMatcher {
  public:
    using Time = std::chrono::steady_clock::time_point;

    explicit FrameMatcher(const std::vector<CameraFrame>& frames);

    // When the wait for the frame with these values returned, for a host that read them at `read`.
    std::optional<Time> startOf(const TouchValues& values, Time read) const;

  private:
    std::map<TouchValues, std::vector<Time>> starts_;
};

// The frames since the last call. Only while no camera thread runs.
std::vector<CameraFrame> takeCameraFrames();

} // namespace bench
