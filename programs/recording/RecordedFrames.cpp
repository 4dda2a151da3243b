#include "recording/RecordedFrames.h"

#include "recording/RecordingError.h"
#include "recording/fileNames.h"
#include "recording/frameLine.h"

#include <nlohmann/json.hpp>

namespace recording {

RecordedFrames::RecordedFrames(const std::filesystem::path& folder)
    : file_(folder / linesFile), lines_(file_, std::ios::binary) {
    std::ifstream stream(folder / descriptionFile, std::ios::binary);
    if (!stream || !lines_) {
        throw RecordingError("this folder is no recording: it has no " +
                             std::string(stream ? linesFile : descriptionFile));
    }
    description_ = describedTouches(nlohmann::ordered_json::parse(stream, nullptr, false));
    std::string line;
    while (std::getline(lines_, line)) {
        torn_ = lines_.eof();
        count_ += torn_ ? 0 : 1;
    }
    lines_.clear();
    lines_.seekg(0);
}

std::optional<FrameInfo> RecordedFrames::next() {
    if (read_ == count_) {
        return std::nullopt;
    }
    std::string line;
    std::getline(lines_, line);
    ++read_;
    std::optional<FrameInfo> frame = frameOf(line);
    if (!frame) {
        throw RecordingError("line " + std::to_string(read_) + " of " + linesFile +
                             " is not the line of a frame");
    }
    return frame;
}

} // namespace recording
