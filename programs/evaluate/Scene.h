// The scenes that touches are judged by.
#pragma once

#include <string>
#include <vector>

namespace evaluate {

struct Scene {
    std::string name;
    std::string keys;   // of the simulated camera: what happens
    std::string sensor; // of the simulated camera: what a calibration grid depends on
    int frames = 0;
    int framesPerSecond = 60;
    std::string about;
    bool emptySurface = false;
};

const std::vector<Scene>& allScenes();

// The scenes of these names in the order of allScenes(), all of them without a name. Throws
// EvaluationError (exitBadOption) for a name that none has.
std::vector<Scene> scenesNamed(const std::vector<std::string>& names);

// The camera URI of a scene, and of the one its calibration grid is fitted to.
std::string cameraOf(const Scene& scene, unsigned long long seed);
std::string calibrationCameraOf(const Scene& scene, unsigned long long seed);

} // namespace evaluate
