#include "evaluate/Scene.h"

#include "evaluate/EvaluationError.h"

#include <algorithm>

namespace evaluate {

namespace {

constexpr int tenMinutes = 10 * 60 * 60; // frames; fewer cannot tell 0.1 a minute from none

std::string withSensor(const Scene& scene, const std::string& keys, unsigned long long seed) {
    return "simulated:" + keys + (scene.sensor.empty() ? "" : "," + scene.sensor) +
           ",pace=off,seed=" + std::to_string(seed);
}

} // namespace

const std::vector<Scene>& allScenes() {
    static const std::vector<Scene> scenes = {
        {"resting", "scene=resting,fingers=3", "", 600, 60, "three fingers that lie still"},
        {"tapping", "scene=tapping,fingers=4", "", 1800, 60, "four fingers that tap"},
        {"tapping-30", "scene=tapping,fingers=4", "", 900, 30, "the same at 30 frames a second"},
        {"everywhere", "scene=everywhere", "", 2400, 60, "one finger taps all over the picture"},
        {"dragging-0.1", "scene=dragging,fingers=1,speed=0.1", "", 600, 60,
         "a finger drawn to and fro at 0.1 m/s"},
        {"dragging-0.5", "scene=dragging,fingers=1,speed=0.5", "", 600, 60, "at 0.5 m/s"},
        {"dragging-2", "scene=dragging,fingers=1,speed=2", "", 600, 60, "at 2 m/s"},
        {"dragging-0.5-30", "scene=dragging,fingers=1,speed=0.5", "", 300, 30,
         "at 0.5 m/s and 30 frames a second"},
        {"ten", "scene=ten", "", 600, 60, "ten fingers that lie still"},
        {"crossing", "scene=crossing,fingers=2", "", 1440, 60,
         "two fingers pass through each other"},
        {"flat-hand", "scene=flat,fingers=5", "", 600, 60, "two flat hands with five fingers out"},
        {"holes", "scene=tapping,fingers=4,holes=5", "", 1800, 60,
         "four fingers that tap, small holes in the depth picture"},
        {"tilted", "scene=tapping,fingers=4", "tilt=4", 1800, 60,
         "four fingers that tap on a surface that leans by 4 degrees"},
        {"bent", "scene=everywhere", "bend=25", 2400, 60,
         "one finger all over a picture that reads 25 mm too far in its corners at 200 mm"},
        {"empty", "scene=empty,noise=4,surface=300", "", tenMinutes, 60,
         "nothing but a surface 8 to 32 mm behind the touch volume, four times the noise", true},
    };
    return scenes;
}

std::vector<Scene> scenesNamed(const std::vector<std::string>& names) {
    const std::vector<Scene>& all = allScenes();
    std::string known;
    for (const Scene& scene : all) {
        known += (known.empty() ? "" : ", ") + scene.name;
    }
    for (const std::string& name : names) {
        const auto isNamed = [&](const Scene& scene) { return scene.name == name; };
        if (std::none_of(all.begin(), all.end(), isNamed)) {
            throw EvaluationError(exitBadOption,
                                  "there is no scene \"" + name + "\"; there are " + known);
        }
    }
    std::vector<Scene> chosen;
    for (const Scene& scene : all) {
        if (names.empty() || std::find(names.begin(), names.end(), scene.name) != names.end()) {
            chosen.push_back(scene);
        }
    }
    return chosen;
}

std::string cameraOf(const Scene& scene, unsigned long long seed) {
    return withSensor(scene, scene.keys, seed);
}

std::string calibrationCameraOf(const Scene& scene, unsigned long long seed) {
    return withSensor(scene, "scene=calibration", seed);
}

} // namespace evaluate
