// What a recording says of its frames, read one after the other; the camera library plays their
// pictures.
#pragma once

#include "recording/Description.h"
#include "recording/Frame.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace recording {

class RecordedFrames {
  public:
    // Throws RecordingError when `folder` holds no recording, or one of another version.
    explicit RecordedFrames(const std::filesystem::path& folder);

    // As far as it tells of touches.
    const Description& description() const { return description_; }

    std::size_t count() const { return count_; }
    // Whether something follows the last whole line: whoever recorded was interrupted.
    bool torn() const { return torn_; }

    // The next frame; nothing after the last. Throws RecordingError for a line that is no frame.
    std::optional<FrameInfo> next();

  private:
    std::filesystem::path file_;
    Description description_;
    std::size_t count_ = 0;
    bool torn_ = false;
    std::ifstream lines_;
    std::size_t read_ = 0;
};

} // namespace recording
