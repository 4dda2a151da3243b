#include "detection/miniDepth.h"

#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"

#include <cstdint>
#include <string>

namespace QVR {

namespace {

constexpr int smallest = 3;

// Hosts take no larger image than 256 MiB, and a pixel has two bytes.
constexpr std::int64_t mostPixels = std::int64_t{128} << 20;

constexpr const char* fullSize = "the full size";

} // namespace

std::optional<MiniDepth> readMiniDepth(const json11::Json& document) {
    const SettingsSection settings(document);
    const int miniX = settings.whole("downsampleDepthX", 0);
    const int miniY = settings.whole("downsampleDepthY", 0);
    if (miniX == 0 && miniY == 0) {
        return std::nullopt;
    }
    const int fullX = settings.whole("depthResX", 0);
    const int fullY = settings.whole("depthResY", 0);
    const std::string sizes = "sizes of " + std::to_string(miniX) + " x " + std::to_string(miniY);
    // The height may be anything that is not negative: a height of 0 makes a downsampler that
    // takes every row to 0.
    if (fullX < smallest || fullY < smallest || miniX < smallest || miniY < 0) {
        settings.tell("downsampleDepthX", sizes, fullSize);
        return std::nullopt;
    }
    settings.hasNumber("downsampleDepthY", "the full size in the server and 0 in hosts");
    if (miniX == fullX && miniY == fullY) {
        return std::nullopt;
    }
    if (std::int64_t{miniX} * miniY > mostPixels) {
        Logger::Log("WARNING: downsampleDepthX and downsampleDepthY make too large an image and "
                    "are ignored.");
        settings.tell("downsampleDepthX", sizes, fullSize);
        return std::nullopt;
    }
    return MiniDepth{static_cast<unsigned int>(fullX), static_cast<unsigned int>(fullY),
                     static_cast<unsigned int>(miniX), static_cast<unsigned int>(miniY)};
}

} // namespace QVR
