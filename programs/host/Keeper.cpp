#include "host/Keeper.h"

#include "host/TouchPlacer.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace host {

namespace {

// Display units (millimetres or pixels) between two frames that a resting finger stays below.
constexpr float restlessness = 1.0f;

} // namespace

Keeper::Rank Keeper::rank(const std::vector<Touch>& touches) const {
    Rank result;
    for (const Touch& touch : touches) {
        const auto before =
            std::find_if(previous_.begin(), previous_.end(),
                         [&](const Touch& other) { return other.slot == touch.slot; });
        const float moved = before == previous_.end()
                                ? restlessness
                                : std::hypot(touch.x - before->x, touch.y - before->y);
        ++(moved < restlessness ? result.resting : result.others);
        result.movement += moved;
    }
    return result;
}

bool Keeper::isBetter(const Rank& one, const Rank& other) {
    // More at rest, but fewer of the others and less movement.
    return std::make_tuple(one.resting, -one.others, -one.movement) >
           std::make_tuple(other.resting, -other.others, -other.movement);
}

void Keeper::consider(const HostState& state, bool firstOfConnection) {
    if (state.connection != Connection::connected) {
        return;
    }
    if (firstOfConnection) {
        textures_.lend(plugin_);
    }
    const Rank rank = this->rank(state.touches);
    previous_ = state.touches;
    // Before any touch has come to rest, more of them are better.
    const bool first = !best_ || (bestRank_.resting == 0 && rank.others > bestRank_.others);
    if (!first && !isBetter(rank, bestRank_)) {
        return;
    }
    bestRank_ = rank;
    Snapshot snapshot = textures_.take(plugin_);
    snapshot.touches = TouchPlacer::place(
        state.touches, TouchPlacer::samples(snapshot), [this](const DepthSample& sample) {
            plugin_.applyCalibrationToCoord(sample.column, sample.row, sample.depth);
            return std::array<float, 3>{plugin_.getCalibratedX(), plugin_.getCalibratedY(),
                                        plugin_.getCalibratedZ()};
        });
    best_ = std::move(snapshot);
}

} // namespace host
