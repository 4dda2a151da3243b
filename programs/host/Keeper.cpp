#include "host/Keeper.h"

#include "host/TouchPlacer.h"

namespace host {

void Keeper::consider(const HostState& state, bool firstOfInstance) {
    if (state.connection != Connection::connected) {
        return;
    }
    if (firstOfInstance) {
        textures_.lend(plugin_);
    }
    if (best_ && state.touches.size() <= best_->touches.size()) {
        return;
    }
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
