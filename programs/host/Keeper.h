// Keeps the pictures of the best frame of a run.
#pragma once

#include "host/HostState.h"
#include "host/Plugin.h"
#include "host/Snapshot.h"
#include "host/Textures.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace host {

// The best frame is the first with the most touches at rest: a moving touch is drawn where the
// smoothed position is, behind its finger. Pictures are converted for such frames only.
class Keeper {
  public:
    explicit Keeper(const PluginFunctions& plugin) : plugin_(plugin) {}

    // For every state of the loop, on its thread.
    void consider(const HostState& state, bool firstOfConnection);
    // Nothing before the first frame.
    const std::optional<Snapshot>& best() const { return best_; }

  private:
    // Frames compare by touches at rest, then by fewer others, then by less movement.
    struct Rank {
        int resting = 0;
        int others = 0;
        float movement = 0;
    };
    Rank rank(const std::vector<Touch>& touches) const;
    static bool isBetter(const Rank& one, const Rank& other);

    const PluginFunctions& plugin_;
    Textures textures_;
    std::vector<Touch> previous_;
    Rank bestRank_;
    std::optional<Snapshot> best_;
};

} // namespace host
