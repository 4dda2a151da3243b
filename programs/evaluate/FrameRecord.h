// One frame: what the pipeline reported beside what is true.
#pragma once

#include <array>
#include <vector>

namespace evaluate {

using Point3 = std::array<double, 3>;

// Measured points are column, row and depth units; display points are millimetres right of and
// below the display's upper left corner, and in front of its plane.

struct SeenTouch {
    int slot = 0;
    Point3 measured{}; // the tracked position before calibration
    Point3 display{};  // as a host gets it
};

struct SeenBlob {
    Point3 measured{};
    int firstRow = 0;
    int lastRow = 0;
};

struct TrueFinger {
    int id = 0;
    bool touching = false;
    Point3 measured{};
    Point3 display{};
};

struct FrameRecord {
    std::vector<SeenTouch> touches;
    std::vector<SeenBlob> blobs;
    std::vector<TrueFinger> fingers;
};

} // namespace evaluate
