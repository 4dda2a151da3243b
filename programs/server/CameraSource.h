// Where cameras come from, beyond connected ones, and what such a source knows about its scene.
#pragma once

#include "Options.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace server {

// Where one finger truly is; see rs_scene_finger.
struct SceneFinger {
    int id = 0;
    bool touching = false;
    std::array<float, 2> pixel{};   // column, row
    float depth = 0.0F;             // depth units
    std::array<float, 3> display{}; // millimetres
};

using SceneTruth = std::vector<SceneFinger>;

// Which of the camera's frames one is, and when it came, in seconds since the camera's start.
struct FrameStamp {
    std::uint64_t number = 0;
    double seconds = 0.0;
};

// The source asked for with --camera, else with the variable QVR_CAMERA; "" for connected cameras.
std::string cameraSource(const Options& options);

// Has later cameras come from cameraSource(). To be called once, before the first camera opens.
// Throws ServerError: exitBadCameraSource with what the source says, exitBadOption when the camera
// library knows connected cameras only.
void selectCameraSource(const Options& options);

// The truth behind the pipeline's current frame, for a source that knows it.
std::optional<SceneTruth> currentSceneTruth();

// The stamp of the pipeline's current frame as far as the source has one, else that of `fallback`.
FrameStamp currentFrameStamp(const FrameStamp& fallback);

} // namespace server
