// What cameras and sources there are, for people and for programs.
#pragma once

#include "cameraTool/advice.h"

#include <string>
#include <vector>

#include <librealsense/camera_source.h>

namespace cameraTool {

struct ListedCamera {
    std::string uri; // what --camera chooses it with
    std::string name;
    std::string serial;
    std::string firmware;
    std::vector<rs_mode_range> depth;
    std::vector<rs_mode_range> color;
};

struct CameraList {
    std::vector<ListedCamera> cameras;
    std::string problem;        // why there is none, and what to do; "" when there is one
    std::string libraryProblem; // why the camera library reaches no connected cameras; "" if it can
};

// The cameras of the selected source, or every connected one when `source` is "". Throws rs::error
// and ServerError.
CameraList listCameras(const std::string& source);

std::string textOf(const CameraList& list);
std::string jsonOf(const CameraList& list);

} // namespace cameraTool
