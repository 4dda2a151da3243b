// In place of everything else here when RealSense SDK 2 was not there to build with.
#include "sdk/sources.h"

#include <stdexcept>

namespace camera {
namespace {

[[noreturn]] void refuse(const SourceOptions& options) {
    throw std::runtime_error(
        "camera source \"" + options.scheme() +
        "\" needs RealSense SDK 2, which this build is without. Install librealsense 2.13 or newer "
        "with its headers (or let ./dev sdk build one) and configure anew with "
        "-DQVR_REALSENSE2=ON -DCMAKE_PREFIX_PATH=where it is");
}

} // namespace

std::unique_ptr<FrameSource> openRealsense(const SourceOptions& options) {
    refuse(options);
}

std::unique_ptr<FrameSource> openBag(const SourceOptions& options) {
    refuse(options);
}

std::vector<std::unique_ptr<FrameSource>> connectedSources() {
    return {};
}

} // namespace camera
