// The depth frames that detection is measured on.
#pragma once

#include "detection/blobManager.h"
#include "literalDetection.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Scene {
    std::string name; // such as "640x480/dense"
    literal::Settings settings;
    literal::Image image;
};

// Ten fingers before a display plane that is in range itself: every pixel is, but those of the
// plane are beyond the cut.
Scene denseScene(std::uint32_t width, std::uint32_t height);

// The same fingers with everything behind them out of range.
Scene sparseScene(std::uint32_t width, std::uint32_t height);

// A surface that fills the image within the cut: every pixel keeps its mark.
Scene surfaceScene(std::uint32_t width, std::uint32_t height);

// A real hand alone and with the room behind it; empty where the images are not at hand.
std::vector<Scene> realScenes();

std::vector<Scene> allScenes();

// Sets the blob manager up for the scene and runs it once. False when that frame differs from the
// literal algorithm: wrong results are not worth measuring.
bool prepare(QVR::blobManager& manager, const Scene& scene);

} // namespace bench
