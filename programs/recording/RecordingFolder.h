// A recording while it is written.
#pragma once

#include "recording/Description.h"
#include "recording/Frame.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace recording {

// At any moment the folder is a recording that can be read, whatever ends the program: a picture
// gets its name when it is whole, and a frame its line when its pictures are there. One thread at
// a time.
class RecordingFolder {
  public:
    // Makes the folder, and those that lead to it, or takes an empty one. Throws RecordingError
    // with what to do, for one that holds anything: recordings are not replaced.
    explicit RecordingFolder(const std::filesystem::path& folder);
    ~RecordingFolder();
    RecordingFolder(const RecordingFolder&) = delete;
    RecordingFolder& operator=(const RecordingFolder&) = delete;

    // To be called once, before the first frame. `settings` are the settings documents by the path
    // at which they are looked for on a volume; an empty one keeps its place, so that the folder
    // can stand for the volume.
    void begin(const Description& description, const std::map<std::string, std::string>& settings);

    // Writes a frame whose pictures have the described sizes. Throws RecordingError, after which
    // the recording ends with the frame before.
    void write(const FrameInfo& frame, const PictureView& pictures);

    const std::filesystem::path& path() const { return folder_; }
    std::uint32_t frameCount() const { return frames_; }

  private:
    template <typename Bytes>
    void writeWhole(const std::string& name, const Bytes& bytes);
    void appendLine(const std::string& line);
    [[noreturn]] void fail(int error) const;

    std::filesystem::path folder_;
    rs_intrinsics depth_{};
    rs_intrinsics color_{};
    int lines_ = -1;             // descriptor
    std::int64_t lineBytes_ = 0; // of whole lines
    std::uint32_t frames_ = 0;
    std::vector<std::uint8_t> encoded_;
};

} // namespace recording
