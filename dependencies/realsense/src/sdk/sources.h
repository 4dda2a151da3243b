// What RealSense SDK 2 adds to the camera sources. A library that is built without it has the
// same functions, which say so (without_sdk.cpp).
#pragma once

#include "frame_source.h"
#include "source_options.h"

#include <functional>
#include <memory>
#include <vector>

namespace camera {

// realsense or realsense:SERIAL, a camera that is plugged in; null while there is none.
std::unique_ptr<FrameSource> openRealsense(const SourceOptions& options);
// bag:FILE, a recording of one.
std::unique_ptr<FrameSource> openBag(const SourceOptions& options);

// Every camera that is plugged in; none without the SDK.
std::vector<std::unique_ptr<FrameSource>> connectedSources();

} // namespace camera
