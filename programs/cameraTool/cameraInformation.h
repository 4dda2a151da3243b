// The camera information that hosts get, of any camera.
#pragma once

#include "cameraTool/OpenCamera.h"

#include <string>

namespace cameraTool {

// Intrinsics and poses of both streams as JSON: to the letter as the pipeline writes it, or laid
// out to be read. Throws ServerError for a camera without colour.
std::string cameraInformation(const OpenCamera& camera, bool raw);

} // namespace cameraTool
