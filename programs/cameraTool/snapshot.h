// One picture of everything that a camera shows.
#pragma once

#include "cameraTool/OpenCamera.h"

#include <cstdint>
#include <string>

namespace cameraTool {

// Starts the camera, lets `passed` frames pass, and writes the next one's pictures to `folder`,
// which is made if need be: depth.png and depth_aligned_to_color.png, 16-bit grey in depth units,
// color.png and color_aligned_to_depth.png. Of a camera without colour, depth.png alone. Returns
// what was written, a line for each file. Throws ServerError.
std::string takeSnapshot(OpenCamera& camera, std::uint64_t passed, const std::string& folder);

} // namespace cameraTool
