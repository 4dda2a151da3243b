// A recording played through the pipeline that this program is built with.
#pragma once

#include "recording/Frame.h"
#include "recording/RecordedFrames.h"
#include "recording/touchDifference.h"
#include "server/CameraSession.h"
#include "server/Options.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace replay {

struct Result {
    std::size_t verified = 0;                             // frames whose touches are those recorded
    std::size_t gaps = 0;                                 // places where frames are missing
    std::uint64_t missing = 0;                            // frames in these
    std::optional<recording::TouchDifference> difference; // of the frame after the verified ones
    std::uint64_t frame = 0;                              // the number of that frame
};

// One at a time. The recording is the current folder.
class Verification {
  public:
    // Starts the pipeline on the recording's pictures with the recording's settings. Throws
    // server::ServerError and recording::RecordingError.
    explicit Verification(recording::RecordedFrames& frames);

    // The form of the detection that runs.
    std::string form() const;

    // Plays to the end or to the first difference; `step` is called after each frame. Throws
    // recording::RecordingError when a frame cannot be played.
    Result run(const std::function<void()>& step);

  private:
    recording::FrameInfo play(const recording::FrameInfo& recorded);

    recording::RecordedFrames& frames_;
    server::Options options_;
    server::CameraSession session_;
};

} // namespace replay
