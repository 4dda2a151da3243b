// Drawing with soft edges into a colour picture.
#pragma once

#include "common/Image.h"

#include <functional>
#include <string>
#include <vector>

namespace host {

struct Point {
    float x = 0;
    float y = 0;

    bool operator==(const Point&) const = default;
};

// Coordinates are pixels with (0, 0) at the outer corner of the upper left pixel. Everything is
// clipped to the picture; `opacity` is 0 to 1.
class Canvas {
  public:
    explicit Canvas(programs::ColorImage& image) : image_(image) {}

    void disc(Point center, float radius, programs::Color color, float opacity = 1);
    void ring(Point center, float radius, float thickness, programs::Color color,
              float opacity = 1);
    // A line through the points, back to the first one when `closed`.
    void line(const std::vector<Point>& points, bool closed, float thickness, programs::Color color,
              float opacity = 1);
    void roundedBox(Point upperLeft, Point lowerRight, float radius, programs::Color color,
                    float opacity = 1);
    // `height` is that of a digit. Characters that the stroke font lacks are left blank.
    void text(const std::string& text, Point upperLeft, float height, float thickness,
              programs::Color color);

    static float textWidth(const std::string& text, float height);

  private:
    // Blends into the pixels of a box as far as `distance` (below 0 inside the shape) tells.
    void shape(Point upperLeft, Point lowerRight, programs::Color color, float opacity,
               const std::function<float(Point)>& distance);

    programs::ColorImage& image_;
};

} // namespace host
