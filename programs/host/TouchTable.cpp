#include "host/TouchTable.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

float distance(const Touch& a, const Touch& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

void extendTrail(LiveTouch& live) {
    live.trail.push_back({live.touch.x, live.touch.y});
    if (live.trail.size() > TouchTable::trailLength) {
        live.trail.erase(live.trail.begin());
    }
}

} // namespace

std::vector<TouchChange> TouchTable::update(const std::vector<Touch>& touches, double now) {
    std::vector<TouchChange> changes;
    std::vector<TouchChange> arrivals;
    std::vector<LiveTouch> live;
    std::vector<Touch> told;

    std::vector<Touch> ordered = touches;
    std::sort(ordered.begin(), ordered.end(),
              [](const Touch& a, const Touch& b) { return a.slot < b.slot; });
    for (const Touch& touch : ordered) {
        const auto known = std::find_if(live_.begin(), live_.end(), [&](const LiveTouch& each) {
            return each.touch.slot == touch.slot;
        });
        if (known == live_.end()) {
            live.push_back({touch, now, {}});
            told.push_back(touch);
            arrivals.push_back({TouchChange::Kind::down, touch});
            ++downCount_;
        } else {
            live.push_back(std::move(*known));
            live.back().touch = touch;
            told.push_back(told_[static_cast<std::size_t>(known - live_.begin())]);
            if (distance(told.back(), touch) >= moveDistance_) {
                told.back() = touch;
                arrivals.push_back({TouchChange::Kind::move, touch});
            }
            known->touch.slot = -1; // taken over; what keeps its number is gone
        }
        extendTrail(live.back());
    }
    for (const LiveTouch& each : live_) {
        if (each.touch.slot >= 0) {
            changes.push_back({TouchChange::Kind::up, each.touch});
        }
    }
    changes.insert(changes.end(), arrivals.begin(), arrivals.end());
    live_ = std::move(live);
    told_ = std::move(told);
    return changes;
}

} // namespace host
