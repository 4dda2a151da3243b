// What to do when a camera cannot be used.
#pragma once

#include "cameraTool/usbCameras.h"

#include <filesystem>
#include <string>
#include <vector>

namespace cameraTool {

// Where to look for reasons.
struct Surroundings {
    std::vector<UsbCamera> plugged; // cameras that the system sees
    std::filesystem::path rules;    // the rule for udev that comes with the program
};

// Of this machine.
Surroundings surroundings();

// Why no camera was found. `libraryProblem` is what the camera library says when it is asked for
// one, or "".
std::string adviceWithoutCamera(const Surroundings& here, const std::string& libraryProblem);

// What to do about a failure of the camera library, or "" when nobody knows. `problem` is its
// message.
std::string adviceOn(const std::string& problem, const Surroundings& here);

} // namespace cameraTool
