// What libpng adds to the camera sources. A library that is built without it has the same function,
// which says so (without_png.cpp).
#pragma once

#include "frame_source.h"
#include "source_options.h"

#include <memory>

namespace camera {

// images:DIR, a recording or a folder of depth images.
std::unique_ptr<FrameSource> openImages(const SourceOptions& options);

} // namespace camera
