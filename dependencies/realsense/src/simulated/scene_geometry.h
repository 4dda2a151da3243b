// What does not move in the simulated scene: two cameras, the projector, the display and the
// touch volume.
//
// The camera hangs above a display that lies on a table and looks down at it. Hands come in from
// the lower edge of the picture between the two; stretched fingers point up at the camera, so a
// fingertip is the part of a hand nearest to it. A finger touches while its tip is inside the
// touch volume, a slab of air between the near and the far clip distance that lies well in front
// of the display. Display space measures millimetres from the display's upper left corner: to the
// right along its upper edge, down along its left edge, and from its plane towards the camera.
// The display lies a little askew below the camera, as displays do, which is why touches need
// calibration.
#pragma once

#include "simulated/vector.h"

#include <array>

#include <librealsense/rs.h>

namespace camera::simulated {

inline constexpr float metersPerUnit = 0.000125f;
inline constexpr double unitsPerMillimeter = 8.0;

// The clip distances that belong to the scene, from the camera plane, in millimetres.
inline constexpr double nearClip = 200.0;
inline constexpr double farClip = 280.0;

// Where the tip of a finger that touches comes to rest.
inline constexpr double restDepth = 269.0;

// The projector of the depth camera stands to its right; what hides a point from the projector
// alone throws a shadow on its own left side.
inline constexpr double projectorBaseline = 26.0;

// Where the bending of a depth camera is stated, in millimetres.
inline constexpr double bendDistance = 200.0;

struct Display {
    Vector origin; // the upper left corner
    Vector right;  // unit vectors
    Vector down;
    Vector front;
    double width = 340.0;
    double height = 212.5;

    // A point of camera space in display space.
    Vector fromCamera(const Vector& point) const {
        const Vector offset = point - origin;
        return {dot(offset, right), dot(offset, down), dot(offset, front)};
    }
};

// A display whose middle is `distance` millimetres from the camera plane and whose right side leans
// away from the camera by `lean` degrees more than that of the usual one.
Display displayAt(double distance, double lean);

inline constexpr double usualDistance = 430.0;

// The usual one.
const Display& display();

// Intrinsics of both cameras for an image size. The depth camera scales its one picture; the
// colour camera crops its full high-definition picture to the shape asked for and scales that.
rs_intrinsics depthIntrinsics(int width, int height);
rs_intrinsics colorIntrinsics(int width, int height);

// From depth to colour camera space; translation in metres, as the camera library has it.
rs_extrinsics depthToColor();

// The same for a point in millimetres, and for a direction.
Vector pointInColorCamera(const Vector& point);
Vector directionInColorCamera(const Vector& direction);

// Where a point of a camera's own space appears in its image: column, row.
std::array<double, 2> project(const rs_intrinsics& intrinsics, const Vector& point);

} // namespace camera::simulated
