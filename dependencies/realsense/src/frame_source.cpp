#include "frame_source.h"

#include "enum_names.h"
#include "frame_pacer.h"

#include <stdexcept>

namespace camera {

bool FrameSource::supportsOption(rs_option option) const {
    return option <= RS_OPTION_F200_DYNAMIC_FPS;
}

void FrameSource::setOption(rs_option option, double) {
    if (!supportsOption(option)) {
        throw std::runtime_error("this camera has no option " + nameOf(option));
    }
}

std::string FrameSource::takeNotices() {
    return "";
}

std::unique_ptr<FrameArrivals> FrameSource::start(EnabledStreams, int framerate, Clock& clock) {
    return std::make_unique<FramePacer>(clock, framerate, paced());
}

} // namespace camera
