#include "evaluate/StrayCount.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace evaluate {

namespace {

std::size_t newcomers(const std::vector<SeenTouch>& touches, std::set<int>& slots) {
    std::size_t count = 0;
    std::set<int> now;
    for (const SeenTouch& touch : touches) {
        count += slots.count(touch.slot) == 0 ? 1 : 0;
        now.insert(touch.slot);
    }
    slots = std::move(now);
    return count;
}

} // namespace

void StrayCount::frame(const JudgedFrame& frame) {
    tally_.splits += newcomers(frame.splits, splitSlots_);
    tally_.falseTouches += newcomers(frame.strays, straySlots_);
}

} // namespace evaluate
