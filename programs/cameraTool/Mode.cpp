#include "cameraTool/Mode.h"

#include "common/cameraCall.h"

#include <cstddef>

namespace cameraTool {

using programs::cameraCall;

namespace {

std::string sizeOf(const rs_stream_mode& mode) {
    return std::to_string(mode.width) + "x" + std::to_string(mode.height);
}

std::string fromTo(const std::string& least, const std::string& most) {
    return least == most ? least : least + " to " + most;
}

std::string sizes(const rs_mode_range& range) {
    return fromTo(sizeOf(range.least), sizeOf(range.most));
}

std::string rates(const rs_mode_range& range) {
    return fromTo(std::to_string(range.least.framerate), std::to_string(range.most.framerate));
}

} // namespace

std::vector<rs_mode_range> modesOf(const rs_device* device, rs_stream stream) {
    rs_mode_range* const none = nullptr;
    const int count = cameraCall(rs_get_stream_modes, device, stream, none, 0);
    std::vector<rs_mode_range> modes(static_cast<std::size_t>(count));
    cameraCall(rs_get_stream_modes, device, stream, modes.data(), count);
    return modes;
}

std::vector<std::string> textsOf(const std::vector<rs_mode_range>& modes) {
    std::vector<std::string> texts;
    std::string last;
    for (const rs_mode_range& range : modes) {
        if (!texts.empty() && sizes(range) == last) {
            texts.back() += ", " + rates(range);
        } else {
            texts.push_back(sizes(range) + " at " + rates(range));
        }
        last = sizes(range);
    }
    return texts;
}

} // namespace cameraTool
