#include "evaluate/Goals.h"

#include "common/ErrorFigures.h"

#include <functional>

namespace evaluate {

namespace {

using Figure = std::function<std::optional<double>(const Tally&)>;

std::optional<double> touchDowns(const Tally& tally) {
    if (tally.touchDowns == 0) {
        return std::nullopt;
    }
    return 100.0 * tally.detectionRate();
}

std::optional<double> p95(const std::vector<double>& values) {
    if (values.empty()) {
        return std::nullopt;
    }
    return programs::figuresOf(values).p95;
}

std::optional<double> meanError(const Tally& tally) {
    if (tally.errorAfter.empty()) {
        return std::nullopt;
    }
    return programs::figuresOf(tally.errorAfter).mean;
}

Goal goalOver(const std::vector<SceneResult>& results, const Tally& total, Goal goal,
              const Figure& figure) {
    goal.figure = figure(total);
    for (const SceneResult& result : results) {
        Goal alone = goal;
        alone.figure = figure(result.tally);
        if (alone.figure && !alone.met()) {
            goal.missing.push_back(result.scene.name);
        }
    }
    return goal;
}

} // namespace

Tally totalOf(const std::vector<SceneResult>& results) {
    Tally total;
    for (const SceneResult& result : results) {
        total.add(result.tally);
    }
    return total;
}

std::vector<Goal> goalsOf(const std::vector<SceneResult>& results, const Tally& total) {
    Tally empty;
    for (const SceneResult& result : results) {
        if (result.scene.emptySurface) {
            empty.add(result.tally);
        }
    }
    const auto falseTouches = [](const Tally& tally) -> std::optional<double> {
        if (tally.frames == 0) {
            return std::nullopt;
        }
        return tally.falsePerMinute();
    };
    return {
        goalOver(results, total, {"touch-downs detected", 99.2, true, "%", {}, {}}, touchDowns),
        goalOver({}, empty, {"false touches on the empty surface", 0.1, false, "/min", {}, {}},
                 falseTouches),
        goalOver(results, total, {"mean position error", 3.0, false, "mm", {}, {}}, meanError),
        goalOver(results, total, {"position error of 95 in 100", 6.0, false, "mm", {}, {}},
                 [](const Tally& tally) { return p95(tally.errorAfter); }),
        goalOver(results, total,
                 {"first report of 95 in 100 touch-downs", 2.0, false, "frames", {}, {}},
                 [](const Tally& tally) { return p95(tally.reportedOn); }),
        goalOver(results, total,
                 {"the same since the finger is seen", 2.0, false, "frames", {}, {}},
                 [](const Tally& tally) { return p95(tally.reportedOnSinceSeen); }),
    };
}

} // namespace evaluate
