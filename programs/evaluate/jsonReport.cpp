#include "common/ErrorFigures.h"
#include "evaluate/report.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace evaluate {

namespace {

using nlohmann::ordered_json;

ordered_json errors(const std::vector<double>& values) {
    if (values.empty()) {
        return nullptr;
    }
    const programs::ErrorFigures figures = programs::figuresOf(values);
    return {{"mean", figures.mean}, {"p95", figures.p95}};
}

ordered_json frames(const std::vector<double>& values) {
    if (values.empty()) {
        return nullptr;
    }
    const programs::ErrorFigures figures = programs::figuresOf(values);
    return {{"mean", figures.mean},
            {"p95", figures.p95},
            {"latest", *std::max_element(values.begin(), values.end())}};
}

ordered_json figuresOf(const Tally& tally) {
    return {
        {"frames", tally.frames},
        {"seconds", tally.seconds},
        {"touchDowns", tally.touchDowns},
        {"detected", tally.detected},
        {"detectionRate",
         tally.touchDowns > 0 ? ordered_json(tally.detectionRate()) : ordered_json()},
        {"missed", tally.touchDowns - tally.detected},
        {"broken", tally.broken},
        {"splits", tally.splits},
        {"identitySwitches", tally.switches},
        {"falseTouches", tally.falseTouches},
        {"falseTouchesPerMinute", tally.falsePerMinute()},
        {"firstReportFrame", frames(tally.reportedOn)},
        {"firstReportFrameSinceSeen", frames(tally.reportedOnSinceSeen)},
        {"errorBeforeCalibrationMm", errors(tally.errorBefore)},
        {"errorMm", errors(tally.errorAfter)},
        {"errorOffPathMm", errors(tally.errorOffPath)},
        {"jitterMm", tally.jitterCount > 0 ? ordered_json(tally.jitter()) : ordered_json()},
    };
}

ordered_json lagOf(const SceneResult& result) {
    if (!result.lag) {
        return nullptr;
    }
    return {{"frames", result.lag->frames},
            {"ms", 1000.0 * result.lag->frames / result.scene.framesPerSecond},
            {"mm", result.lag->millimeters}};
}

ordered_json goalOf(const Goal& goal) {
    return {{"name", goal.name},
            {goal.atLeast ? "atLeast" : "atMost", goal.limit},
            {"unit", goal.unit},
            {"figure", goal.figure ? ordered_json(*goal.figure) : ordered_json()},
            {"met", goal.figure ? ordered_json(goal.met()) : ordered_json()},
            {"notMetBy", goal.missing}};
}

} // namespace

std::string jsonOf(const Report& report) {
    const Tally total = totalOf(report.results);
    ordered_json document = {{"settings", report.settings}, {"seed", report.seed},
                             {"seconds", report.seconds},   {"scenes", ordered_json::array()},
                             {"total", figuresOf(total)},   {"goals", ordered_json::array()}};
    for (const SceneResult& result : report.results) {
        ordered_json scene = {{"name", result.scene.name},
                              {"about", result.scene.about},
                              {"framesPerSecond", result.scene.framesPerSecond}};
        scene.update(figuresOf(result.tally));
        scene["lag"] = lagOf(result);
        scene["grid"] = {{"samples", result.gridSamples}, {"residualMm", result.gridResidual}};
        document["scenes"].push_back(scene);
    }
    for (const Goal& goal : goalsOf(report.results, total)) {
        document["goals"].push_back(goalOf(goal));
    }
    return document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace evaluate
