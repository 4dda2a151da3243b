// The pictures and touches of one frame, kept for saving.
#pragma once

#include "common/Image.h"
#include "host/TouchTable.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

// A touch and the pixel of the camera's depth picture that it belongs to, if that is known.
struct PlacedTouch {
    Touch touch;
    bool placed = false;
    float column = 0;
    float row = 0;
};

struct Snapshot {
    programs::ColorImage color;    // empty when the stream is not sent; likewise below
    programs::DepthImage depth;    // may be smaller than the camera's depth picture
    programs::GrayImage processed; // the detection mask in the size of the camera's depth picture
    std::vector<PlacedTouch> touches;
};

} // namespace host
