// Everything that is found out about one scene, frame by frame.
#pragma once

#include "evaluate/ContactCount.h"
#include "evaluate/Jitter.h"
#include "evaluate/Lag.h"
#include "evaluate/Matcher.h"
#include "evaluate/Pinhole.h"
#include "evaluate/StrayCount.h"
#include "evaluate/Tally.h"

#include <cstddef>
#include <optional>

namespace evaluate {

class SceneJudge {
  public:
    SceneJudge(const Pinhole& pinhole, double framesPerSecond)
        : pinhole_(pinhole), rate_(framesPerSecond), jitter_(tally_, framesPerSecond) {}
    SceneJudge(const SceneJudge&) = delete;
    SceneJudge& operator=(const SceneJudge&) = delete;

    // Returns how much is wrong: fingers without touch and touches without finger.
    std::size_t frame(const FrameRecord& frame);

    // After the last frame.
    const Tally& finish();
    std::optional<LagFigures> lag() const { return lag_.figures(); }

  private:
    void measureErrors(const JudgedFrame& frame);

    Pinhole pinhole_;
    double rate_;
    Tally tally_;
    Matcher matcher_;
    ContactCount contacts_{tally_};
    StrayCount strays_{tally_};
    Jitter jitter_;
    Lag lag_;
};

} // namespace evaluate
