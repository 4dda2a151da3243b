// qvr-evaluate: how well fingers are found, in figures that anyone can reproduce.

#include "common/ProgressBar.h"
#include "common/executablePath.h"
#include "evaluate/Evaluation.h"
#include "evaluate/EvaluationError.h"
#include "evaluate/FolderRun.h"
#include "evaluate/Goals.h"
#include "evaluate/Options.h"
#include "evaluate/Scene.h"
#include "evaluate/Settings.h"
#include "evaluate/pictureFiles.h"
#include "evaluate/report.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <optional>
#include <string>

namespace {

using namespace evaluate;

void publish(const Options& options, const std::string& text, const std::string& json) {
    const bool jsonOnly = options.json == "-";
    std::fputs(text.c_str(), jsonOnly ? stderr : stdout);
    if (jsonOnly) {
        std::fputs(json.c_str(), stdout);
    } else if (!options.json.empty()) {
        std::ofstream file(options.json);
        file << json;
        file.close();
        if (!file) {
            throw EvaluationError(exitFailed, "cannot write " + options.json);
        }
    }
}

std::vector<Scene> chosenScenes(const Options& options) {
    std::vector<Scene> scenes = scenesNamed(options.scenes);
    for (Scene& scene : scenes) {
        scene.frames = options.frames > 0 ? options.frames : scene.frames;
    }
    return scenes;
}

int playScenes(const Options& options) {
    const std::vector<Scene> scenes = chosenScenes(options);
    const Settings settings(options.settings);
    std::size_t frames = Evaluation::calibrationFrames(scenes);
    for (const Scene& scene : scenes) {
        frames += static_cast<std::size_t>(scene.frames);
    }
    const auto start = std::chrono::steady_clock::now();
    Report report{settings.path(), options.seed, {}, 0.0};
    {
        programs::ProgressBar bar(programs::watchedTerminal(), frames);
        Evaluation evaluation(settings, options.seed, [&] { bar.step(); });
        for (const Scene& scene : scenes) {
            bar.label(scene.name);
            report.results.push_back(evaluation.run(scene));
            if (!options.pictures.empty()) {
                writePicture(report.results.back().worst, options.pictures, scene.name);
            }
        }
    }
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    publish(options, textOf(report), jsonOf(report));
    const std::vector<Goal> goals = goalsOf(report.results, totalOf(report.results));
    const bool allMet =
        std::all_of(goals.begin(), goals.end(), [](const Goal& goal) { return goal.met(); });
    return options.strict && !allMet ? exitGoalMissed : exitFine;
}

int playImages(const Options& options) {
    const Settings settings(options.settings);
    const auto results = playFolder(options.images, settings,
                                    static_cast<std::size_t>(options.frames), options.pictures);
    publish(options, textOf(results), jsonOf(results, options.images.string(), settings.path()));
    return exitFine;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    const auto programFolder = programs::executablePath().parent_path();
    if (const std::optional<int> code = parseOptions(argc, argv, programFolder, options)) {
        return *code;
    }
    try {
        return options.images.empty() ? playScenes(options) : playImages(options);
    } catch (const EvaluationError& error) {
        std::fprintf(stderr, "qvr-evaluate: %s\n", error.what());
        return error.code();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qvr-evaluate: %s\n", error.what());
        return exitFailed;
    }
}
