// What the touch slots hold now, since when, and what changed with the last frame.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace host {

// One touch as a frame reports it. Units are those of the server's output: with a calibration,
// display coordinates; else depth pixels and depth units.
struct Touch {
    int slot = 0;
    float x = 0;
    float y = 0;
    float z = 0;

    bool operator==(const Touch&) const = default;
};

// A touch that is down.
struct LiveTouch {
    Touch touch;
    double since = 0;                        // seconds on the host's clock
    std::vector<std::array<float, 2>> trail; // where it was, oldest first, at most `trailLength`
};

struct TouchChange {
    enum class Kind { down, move, up };
    Kind kind = Kind::down;
    Touch touch; // for `up`, where it was last
};

class TouchTable {
  public:
    static constexpr std::size_t trailLength = 24;

    // A touch counts as moved when it is at least this far from where its last change was told.
    explicit TouchTable(float moveDistance) : moveDistance_(moveDistance) {}

    // Takes the touches of a frame, each slot at most once, and tells what changed: ups first,
    // then downs and moves in the order of the slots.
    std::vector<TouchChange> update(const std::vector<Touch>& touches, double now);
    // Nothing is known any more: every touch goes up.
    std::vector<TouchChange> liftAll() { return update({}, 0); }

    const std::vector<LiveTouch>& touches() const { return live_; } // in the order of the slots
    std::size_t downCount() const { return downCount_; }            // touches that ever went down

  private:
    float moveDistance_;
    std::vector<Touch> told_; // the positions last told, beside `live_`
    std::vector<LiveTouch> live_;
    std::size_t downCount_ = 0;
};

} // namespace host
