// Finds the pixel of the camera's depth picture that a touch belongs to.
#pragma once

#include "host/Snapshot.h"

#include <array>
#include <functional>
#include <vector>

namespace host {

// A pixel of the camera's depth picture with its measured depth.
struct DepthSample {
    float column = 0;
    float row = 0;
    float depth = 0; // depth units
};

// Where `pixel, depth` lies in the coordinates of the touches.
using Calibration = std::function<std::array<float, 3>(const DepthSample&)>;

class TouchPlacer {
  public:
    // The marked pixels of the snapshot (the mask where it is sent, else every pixel with a
    // depth), in pixels of the camera's depth picture.
    static std::vector<DepthSample> samples(const Snapshot& snapshot);

    // The interface has no way back from touches to pixels, so every sample is calibrated and the
    // touch drawn at the one that comes nearest. Where that makes no sense, because no calibration
    // is loaded or the server sends touches as they are seen, x and y are taken as depth pixels.
    static std::vector<PlacedTouch> place(const std::vector<Touch>& touches,
                                          const std::vector<DepthSample>& samples,
                                          const Calibration& calibration);
};

} // namespace host
