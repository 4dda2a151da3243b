// Keeps the pictures of the best frame of a run.
#pragma once

#include "host/HostState.h"
#include "host/Plugin.h"
#include "host/Snapshot.h"
#include "host/Textures.h"

#include <cstddef>
#include <optional>

namespace host {

// The best frame is the first with the most touches. Pictures are converted for such frames only.
class Keeper {
  public:
    explicit Keeper(const PluginFunctions& plugin) : plugin_(plugin) {}

    // For every state of the loop, on its thread.
    void consider(const HostState& state, bool firstOfInstance);
    // Nothing before the first frame.
    const std::optional<Snapshot>& best() const { return best_; }

  private:
    const PluginFunctions& plugin_;
    Textures textures_;
    std::optional<Snapshot> best_;
};

} // namespace host
