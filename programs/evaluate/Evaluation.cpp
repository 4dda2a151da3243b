#include "evaluate/Evaluation.h"

#include "evaluate/EvaluationError.h"
#include "evaluate/Pipeline.h"
#include "evaluate/SceneJudge.h"

#include <set>

namespace evaluate {

namespace {

constexpr std::size_t framesOfAGrid = 900;

// At first nothing is reported by rule.
constexpr int firstJudgedPicture = 10;

} // namespace

std::size_t Evaluation::calibrationFrames(const std::vector<Scene>& scenes) {
    std::set<std::string> sensors;
    for (const Scene& scene : scenes) {
        sensors.insert(scene.sensor);
    }
    return sensors.size() * framesOfAGrid;
}

Grid Evaluation::fitGrid(const Scene& scene) {
    Pipeline pipeline(calibrationCameraOf(scene, seed_), settings_.forScene(60, nullptr));
    CalibrationFit fit(settings_.volume(pipeline.unitsPerMeter()));
    for (std::size_t i = 0; i < framesOfAGrid; ++i) {
        const FrameRecord frame = pipeline.next();
        const bool clear =
            frame.blobs.size() == 1 && frame.fingers.size() == 1 && frame.fingers.front().touching;
        if (clear) {
            fit.add(frame.blobs.front().measured, frame.fingers.front().display);
        }
        progress_();
    }
    if (fit.samples() < CalibrationFit::fewest) {
        throw EvaluationError(exitBadSettings,
                              "with the settings " + settings_.path() + " the detection finds " +
                                  std::to_string(fit.samples()) + " of " +
                                  std::to_string(framesOfAGrid) +
                                  " fingers; that is too few for a calibration grid");
    }
    return fit.fit();
}

const Grid& Evaluation::gridFor(const Scene& scene) {
    const auto known = grids_.find(scene.sensor);
    return known != grids_.end() ? known->second
                                 : grids_.emplace(scene.sensor, fitGrid(scene)).first->second;
}

SceneResult Evaluation::run(const Scene& scene) {
    const Grid& grid = gridFor(scene);
    Pipeline pipeline(cameraOf(scene, seed_), settings_.forScene(scene.framesPerSecond, &grid));
    SceneJudge judge(pipeline.pinhole(), scene.framesPerSecond);
    SceneResult result;
    std::size_t mostWrong = 0;
    for (int i = 0; i < scene.frames; ++i) {
        const FrameRecord frame = pipeline.next();
        const std::size_t wrong = judge.frame(frame);
        const bool worse = i >= firstJudgedPicture && wrong > mostWrong;
        if (worse || result.worst.depth.empty()) {
            result.worst = pipeline.snapshot(frame);
            mostWrong = worse ? wrong : 0;
        }
        progress_();
    }
    result.scene = scene;
    result.tally = judge.finish();
    if (scene.keys.find("speed=") != std::string::npos) {
        result.lag = judge.lag();
    }
    result.gridSamples = grid.samples;
    result.gridResidual = grid.residual;
    return result;
}

} // namespace evaluate
