// Which touch belongs to which finger.
#pragma once

#include "evaluate/FrameRecord.h"

#include <cstddef>
#include <deque>
#include <map>
#include <vector>

namespace evaluate {

// A touch further from every finger than a finger is wide belongs to none.
inline constexpr double farthestMatch = 40.0;     // millimetres on the display
inline constexpr double farthestBlobMatch = 40.0; // pixels

struct TouchMatch {
    SeenTouch touch;
    TrueFinger finger;    // now; it may have left already
    double offPath = 0.0; // millimetres from where the finger is or was a moment ago
};

struct JudgedFrame {
    std::vector<TrueFinger> fingers;
    std::vector<TouchMatch> matches;
    std::vector<SeenTouch> splits; // more touches of a finger that has one already
    std::vector<SeenTouch> strays; // touches of no finger
    std::vector<int> withBlob;     // touching fingers that the detection sees
};

// Touches trail behind their fingers and outlive them by a frame or two. So a touch is held against
// the way on which a finger touched during the last frames.
class Matcher {
  public:
    static constexpr std::size_t memory = 6; // frames

    // Frames are to be given in their order.
    JudgedFrame judge(const FrameRecord& frame);

  private:
    struct Trail {
        TrueFinger finger;
        std::deque<std::pair<std::size_t, Point3>> places; // by frame, while it touched
    };

    void follow(const FrameRecord& frame);
    static double distanceTo(const Trail& trail, const Point3& point);

    std::map<int, Trail> trails_;
    std::size_t number_ = 0;
};

} // namespace evaluate
