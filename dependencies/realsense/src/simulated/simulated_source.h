// The synthetic scene as a camera: what "simulated" in a camera URI stands for. The scene itself
// is described in scene_geometry.h, its stories in choreography.h.
#pragma once

#include "frame_source.h"
#include "source_options.h"

#include <memory>

namespace camera {

// Keys:
//   scene    demo (the default), resting, tapping, dragging, crossing, ten, flat, empty;
//            everywhere: one finger taps all over the picture; calibration: it is at another place
//            of the touch volume sixty times a second
//   fingers  how many, 0 to 10 (3); ten, empty, everywhere and calibration have their own number
//   seed     chooses the noise and the fingers' small differences (1)
//   speed    with scene=dragging: to and fro on a straight line, 0.01 to 5 metres a second
//   noise    strength of the depth noise, 0 to 16 (1); 0 also fills holes and shadows
//   holes    how many of 100 patches of 8 x 8 pixels have a hole in each frame (0)
//   bend     distances read this many millimetres too far in the picture's corners, stated for 200
//            millimetres, -50 to 50 (0)
//   tilt     degrees that the surface's right side leans away from the camera, and with it the
//            far side of the touch volume and where fingers rest, -15 to 15 (0)
//   surface  millimetres from the camera to the middle of the display, 285 to 1000 (430)
//   pace     off: frames come as fast as they are asked for
//   depth    the only depth size, such as 640x480; else any up to 1920x1080
//   color    the same for colour
//   fps      the only frame rate, 1 to 240; else any of these
//   fault    for tests and drills: KIND@FRAME, or several joined by +. When so many frames were
//            asked for in all,
//              vanish  the camera is disconnected; for a while none is found
//              stall   no frame comes for a while
//              shrink  it is disconnected; those found for a while have half the width and height
//              fail    every wait fails for a while
//   lasting  that while in seconds, 0 to 86400 (2)
// Throws std::runtime_error for anything else.
SourceOpener simulatedSourceOpener(const SourceOptions& options);
// The first one that it opens.
std::unique_ptr<FrameSource> makeSimulatedSource(const SourceOptions& options);

} // namespace camera
