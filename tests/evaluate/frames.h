// Frames made by hand.
#pragma once

#include "evaluate/Matcher.h"

#include <vector>

namespace evaluate_tests {

using evaluate::FrameRecord;
using evaluate::SeenTouch;
using evaluate::TrueFinger;

// On the display a millimetre is as long as two pixels of the depth picture.
inline TrueFinger finger(int id, double x, double y, bool touching = true) {
    return {id, touching, {2 * x, 2 * y, 2000}, {x, y, 100}};
}

inline SeenTouch touch(int slot, double x, double y) {
    return {slot, {2 * x, 2 * y, 2000}, {x, y, 100}};
}

// Every touch is one blob.
inline FrameRecord frame(const std::vector<TrueFinger>& fingers,
                         const std::vector<SeenTouch>& touches) {
    FrameRecord record{touches, {}, fingers};
    for (const SeenTouch& each : touches) {
        record.blobs.push_back({each.measured, 0, 0});
    }
    return record;
}

} // namespace evaluate_tests
