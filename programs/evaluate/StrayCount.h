// Touches that should not be there.
#pragma once

#include "evaluate/Matcher.h"
#include "evaluate/Tally.h"

#include <set>

namespace evaluate {

// Counts a touch that stays for many frames once.
class StrayCount {
  public:
    explicit StrayCount(Tally& tally) : tally_(tally) {}

    void frame(const JudgedFrame& frame);

  private:
    Tally& tally_;
    std::set<int> splitSlots_; // in the last frame
    std::set<int> straySlots_;
};

} // namespace evaluate
