// Sizes and rate in which a camera is to stream, and those that there are, in words.
#pragma once

#include <string>
#include <vector>

#include <librealsense/camera_source.h>

namespace cameraTool {

// What is 0 is left to the camera.
struct Mode {
    int depthWidth = 0;
    int depthHeight = 0;
    int colorWidth = 0;
    int colorHeight = 0;
    int fps = 0;

    bool isOpen() const {
        return depthWidth == 0 && depthHeight == 0 && colorWidth == 0 && colorHeight == 0 &&
               fps == 0;
    }
};

// What a device lists for depth or colour. Throws rs::error.
std::vector<rs_mode_range> modesOf(const rs_device* device, rs_stream stream);

// One text for each size, such as "640x480 at 15, 30, 60" or "16x16 to 1920x1080 at 1 to 240".
std::vector<std::string> textsOf(const std::vector<rs_mode_range>& modes);

} // namespace cameraTool
