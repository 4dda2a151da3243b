// The outlines of marked regions.
#pragma once

#include "common/Image.h"
#include "host/Canvas.h"

#include <vector>

namespace host {

// Follows the edges between marked (not 0) and unmarked pixels; beyond the picture nothing is
// marked. Each outline is a closed loop of pixel corners, clockwise on the screen around marked
// pixels and counter-clockwise around holes, with corners only where it turns. Regions that touch
// at a corner only have outlines of their own.
std::vector<std::vector<Point>> findOutlines(const programs::GrayImage& mask);

// The area in pixels that a closed loop surrounds; below 0 for a hole.
float enclosedArea(const std::vector<Point>& loop);

// The loop with its corners cut, so that pixel steps become curves.
std::vector<Point> smoothed(const std::vector<Point>& loop, int rounds);

} // namespace host
