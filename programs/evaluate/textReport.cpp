#include "common/ErrorFigures.h"
#include "evaluate/TextTable.h"
#include "evaluate/report.h"

#include <algorithm>

namespace evaluate {

namespace {

std::string frames(const std::vector<double>& values, bool largest) {
    if (values.empty()) {
        return "-";
    }
    return largest ? decimal(*std::max_element(values.begin(), values.end()), 0)
                   : decimal(programs::figuresOf(values).mean, 2);
}

std::vector<std::string> findingRow(const std::string& name, const Tally& tally) {
    const bool any = tally.touchDowns > 0;
    return {name,
            std::to_string(tally.frames),
            std::to_string(tally.touchDowns),
            any ? decimal(100.0 * tally.detectionRate(), 1) : "-",
            std::to_string(tally.touchDowns - tally.detected),
            std::to_string(tally.broken),
            std::to_string(tally.splits),
            std::to_string(tally.switches),
            decimal(tally.falsePerMinute(), 2),
            frames(tally.reportedOn, false),
            frames(tally.reportedOn, true),
            frames(tally.reportedOnSinceSeen, false)};
}

std::vector<std::string> errorCells(const std::vector<double>& errors) {
    if (errors.empty()) {
        return {"-", "-"};
    }
    const programs::ErrorFigures figures = programs::figuresOf(errors);
    return {decimal(figures.mean, 2), decimal(figures.p95, 2)};
}

std::vector<std::string> positionRow(const std::string& name, const Tally& tally,
                                     const std::optional<LagFigures>& lag, int framesPerSecond) {
    std::vector<std::string> row = {name};
    for (const std::vector<double>* errors :
         {&tally.errorBefore, &tally.errorAfter, &tally.errorOffPath}) {
        const std::vector<std::string> cells = errorCells(*errors);
        row.insert(row.end(), cells.begin(), cells.end());
    }
    row.push_back(decimal(tally.jitter(), 3));
    row.push_back(lag ? decimal(lag->frames, 2) : "-");
    row.push_back(lag ? decimal(1000.0 * lag->frames / framesPerSecond, 1) : "-");
    row.push_back(lag ? decimal(lag->millimeters, 1) : "-");
    return row;
}

std::string goalText(const Goal& goal) {
    std::string text = goal.name + (goal.atLeast ? " >= " : " <= ") + decimal(goal.limit, 1) + " " +
                       goal.unit + ": ";
    if (!goal.figure) {
        return text + "not measured\n";
    }
    text += decimal(*goal.figure, 2) + " " + goal.unit + (goal.met() ? ", met" : ", NOT met");
    std::string scenes;
    for (const std::string& name : goal.missing) {
        scenes += (scenes.empty() ? "" : ", ") + name;
    }
    return text + (scenes.empty() ? "" : " (not by: " + scenes + ")") + "\n";
}

} // namespace

std::string textOf(const Report& report) {
    const Tally total = totalOf(report.results);
    TextTable finding;
    finding.row({"", "", "touch-", "detected", "", "", "", "id", "false", "first report on frame",
                 "", "since"});
    finding.row({"scene", "frames", "downs", "%", "missed", "broken", "split", "switches",
                 "a minute", "mean", "latest", "seen"});
    TextTable position;
    position.row({"", "before", "mm", "after", "mm", "off path", "mm", "jitter", "lag", "", ""});
    position.row(
        {"scene", "mean", "p95", "mean", "p95", "mean", "p95", "mm", "frames", "ms", "mm"});
    for (const SceneResult& result : report.results) {
        finding.row(findingRow(result.scene.name, result.tally));
        position.row(
            positionRow(result.scene.name, result.tally, result.lag, result.scene.framesPerSecond));
    }
    finding.row(findingRow("total", total));
    position.row(positionRow("total", total, std::nullopt, 1));
    std::string text = finding.text() + "\n" + position.text() + "\n";
    for (const Goal& goal : goalsOf(report.results, total)) {
        text += goalText(goal);
    }
    return text + "\nsettings " + report.settings + ", seed " + std::to_string(report.seed) + ", " +
           std::to_string(total.frames) + " frames in " + decimal(report.seconds, 1) + " s\n";
}

} // namespace evaluate
