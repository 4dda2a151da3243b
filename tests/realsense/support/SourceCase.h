// A source that has to keep the contract of the C interface.
#pragma once

#include "realsense/support/PictureFolder.h"

#include <vector>

namespace camera_test {

struct SourceCase {
    const char* name;
    // Makes the next context hold a camera of this source; `folder` is the test's own.
    void (*select)(const PictureFolder& folder);
    int depthWidth, depthHeight;
    int colorWidth, colorHeight;
    // Whether the camera has colour control and the options of the F200 and SR300 family.
    bool hasOptions = true;
};

// The sources of RealSense SDK 2.
std::vector<SourceCase> sdkSources();

} // namespace camera_test
