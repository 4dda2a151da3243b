// The story of a scene: where every fingertip is at a time.
//
// Finger 0, 2, 4, ... belong to the right hand, 1, 3, 5, ... to the left one. A finger moves with
// its hand and besides that is lowered out of the touch volume and raised into it again.
#pragma once

#include "simulated/vector.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace camera::simulated {

enum class Scene {
    Demo,
    Resting,
    Tapping,
    Dragging,
    Crossing,
    Ten,
    Flat,
    Empty,
    Everywhere,
    Calibration
};

inline constexpr std::array<std::string_view, 10> sceneNames{
    "demo", "resting", "tapping", "dragging",   "crossing",
    "ten",  "flat",    "empty",   "everywhere", "calibration"};

// The scene of that name.
std::optional<Scene> sceneNamed(std::string_view name);

struct FingerPose {
    int hand = 0; // 0 is the right one, 1 the left one
    int slot = 0; // 0 to 3 are the fingers from the inner side on, 4 is the thumb
    Vector tip;   // the point nearest to the camera plane
};

struct HandPose {
    bool present = false;
    Vector position; // what its fingers are placed around
    bool lyingFlat = false;
};

struct ScenePose {
    std::array<HandPose, 2> hands;
    std::vector<FingerPose> fingers; // by id
};

struct Story {
    Scene scene = Scene::Demo;
    int fingers = 3;
    // Gives each finger its own small differences in depth and timing.
    std::uint64_t seed = 1;
    // How fast dragging hands move to and fro, in metres a second; 0 is the story's own way.
    double speed = 0.0;
    // How much farther fingers come to rest for each millimetre to the right of the camera.
    double lean = 0.0;
};

// The pose `seconds` after the start of the story.
ScenePose poseAt(const Story& story, double seconds);

} // namespace camera::simulated
