// The synthetic scene as a camera: what "simulated" in a camera URI stands for. The scene itself
// is described in scene_geometry.h, its stories in choreography.h.
#pragma once

#include "frame_source.h"
#include "source_options.h"

#include <memory>

namespace camera {

// Keys:
//   scene    demo (the default), resting, tapping, dragging, crossing, ten, flat, empty
//   fingers  how many, 0 to 10 (3); the scenes ten and empty have their own number
//   seed     chooses the noise and the fingers' small differences (1)
//   noise    strength of the depth noise, 0 to 16 (1); 0 also fills holes and shadows
//   pace     off: frames come as fast as they are asked for
//   depth    the only depth size, such as 640x480; else any up to 1920x1080
//   color    the same for colour
//   fps      the only frame rate, 1 to 240; else any of these
// Throws std::runtime_error for anything else.
std::unique_ptr<FrameSource> makeSimulatedSource(const SourceOptions& options);

} // namespace camera
