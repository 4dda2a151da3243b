// Camera URIs: from the text that a user writes to the source that it chooses.
#pragma once

#include "device.h"
#include "frame_source.h"
#include "source_options.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace camera {

// Splits "scheme", "scheme:key=value,..." or "scheme:positional,key=value,...". The positional
// text ends before the first item of the form key=value, so that a path may contain commas.
// Throws std::runtime_error for an item without a key behind it.
SourceOptions parseSourceUri(std::string_view uri);

// Opens the source that `uri` chooses. Making it or opening throws std::runtime_error, which says
// what is accepted.
SourceOpener sourceOpener(const std::string& uri);
// The first one that it opens.
std::unique_ptr<FrameSource> makeSource(const std::string& uri);

// What a context enumerates when the program has chosen nothing: the source in the environment
// variable QVR_CAMERA, else every camera that is plugged in. Without RealSense SDK 2 none can be
// reached, so that there is no device then.
std::vector<std::unique_ptr<Device>> defaultDevices();

} // namespace camera
