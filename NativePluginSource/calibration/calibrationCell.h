// One box of space with a measured position at each of its eight corners. Points inside are
// mapped by trilinear interpolation, points outside by its extrapolation. The distortion map is a
// grid of such cells, the projection map is a single one.
#pragma once

#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"

#include <array>
#include <string>

namespace QVR {

// The bounds of a cell: x and y in depth-image pixels, z in depth units.
struct QVR_API aabbCellCoord {
    double zLower = 0.0;
    double zUpper = 0.0;
    double yLower = 0.0;
    double yUpper = 0.0;
    double xLower = 0.0;
    double xUpper = 0.0;
};

// The positions measured at a cell's corners. A capital letter is the upper side of that axis:
// 0 xyz, 1 Xyz, 2 XYz, 3 xYz, 4 xYZ, 5 XYZ, 6 XyZ, 7 xyZ.
struct QVR_API cellCoord {
    std::array<Vector3, 8> corners;
};

// One thread at a time: set() replaces what every other call reads.
class QVR_API calibrationCell {
  public:
    // Takes the bounds and derives the coefficients from the corners. Always true.
    bool set(const aabbCellCoord& cellBounds, const cellCoord& measured);

    // Takes the map "map<mapNumber>" from the text of a projection map document. False leaves the
    // cell as it was: the text is empty or no JSON (both logged), or the map is missing or one of
    // its values is no number (not logged). The corners "Xyz" and "XyZ" may be missing and count
    // as (0, 0, 0) then.
    bool set(const std::string& jsonText, int mapNumber);

    // Turns a position into one relative to the cell: 0 at the lower bound of an axis, 1 at the
    // upper, linear and unclamped; 0 along an axis without extent.
    void normalizePoint(Vector3& point) const;

    // Replaces a normalised point by the interpolated corner position.
    void transformPoint(Vector3& point) const;

    // Whether the position lies within the bounds, the bounds included.
    bool pointTest(Vector3 point) const;

    aabbCellCoord bounds;
    bool valid = false; // true once a set() has succeeded

    // Coefficients of 1, u, v, w, uv, vw, uw and uvw for a normalised point (u, v, w).
    Vector3 A;
    Vector3 B;
    Vector3 C;
    Vector3 D;
    Vector3 E;
    Vector3 F;
    Vector3 G;
    Vector3 H;
};

} // namespace QVR
