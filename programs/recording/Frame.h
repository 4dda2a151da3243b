// One frame of a recording: the camera's pictures, what was sent for them, and, where frames are
// missing before it, what the tracking knew.
#pragma once

#include "detection/cTouch.h"
#include "serverClient/frameProtocol.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace recording {

constexpr std::size_t touchSlots = 10;

// All that a frame's touches depend on beside its pictures and the settings. A new pipeline has
// the default values.
struct Tracking {
    std::uint16_t cutoff = 0; // the detection's cut, depth units
    std::array<QVR::cTouch, touchSlots> slots;
};

// What is written of a frame beside its pictures.
struct FrameInfo {
    std::uint64_t number = 0;                          // the camera's own, where it has one
    double seconds = 0.0;                              // when it came, since the camera was started
    std::array<QVR::NetworkTouch, touchSlots> touches; // as sent
    std::array<QVR::TouchPosition, touchSlots> tracked; // the positions behind them
    std::uint64_t dropped = 0; // frames before this one that the recording misses
    // Before this frame; given where it does not follow from the frame written before.
    std::optional<Tracking> tracking;
};

// The camera's native pictures: depth units and RGB bytes, row by row.
struct PictureView {
    std::span<const std::uint16_t> depth;
    std::span<const std::uint8_t> color;
};

} // namespace recording
