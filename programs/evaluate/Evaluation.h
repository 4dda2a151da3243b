// Plays scenes through the pipeline and judges what comes out.
#pragma once

#include "evaluate/CalibrationFit.h"
#include "evaluate/Lag.h"
#include "evaluate/Scene.h"
#include "evaluate/Settings.h"
#include "evaluate/Tally.h"
#include "host/Snapshot.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace evaluate {

struct SceneResult {
    Scene scene;
    Tally tally;
    std::optional<LagFigures> lag; // of scenes that drag at one speed
    std::size_t gridSamples = 0;
    double gridResidual = 0.0; // millimetres
    host::Snapshot worst;      // the first of the frames in which most was wrong
};

class Evaluation {
  public:
    // Called after every frame.
    using Progress = std::function<void()>;

    Evaluation(const Settings& settings, unsigned long long seed, Progress progress)
        : settings_(settings), seed_(seed), progress_(std::move(progress)) {}

    // Frames that fitting the grids for these scenes takes.
    static std::size_t calibrationFrames(const std::vector<Scene>& scenes);

    // Throws EvaluationError, exitBadSettings when the settings find too few fingers for a grid.
    SceneResult run(const Scene& scene);

  private:
    const Grid& gridFor(const Scene& scene);
    Grid fitGrid(const Scene& scene);

    const Settings& settings_;
    unsigned long long seed_;
    Progress progress_;
    std::map<std::string, Grid> grids_; // by sensor
};

} // namespace evaluate
