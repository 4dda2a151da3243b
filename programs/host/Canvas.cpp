#include "host/Canvas.h"

#include "host/strokeFont.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace host {

namespace {

constexpr float digitHeight = 6; // of the stroke font
constexpr float glyphGap = 1.6f;

float distanceToSegment(Point p, Point a, Point b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    const float length = dx * dx + dy * dy;
    const float along =
        length > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0f, 1.0f) : 0.0f;
    return std::hypot(p.x - a.x - along * dx, p.y - a.y - along * dy);
}

std::uint8_t mix(std::uint8_t below, std::uint8_t above, float share) {
    const float value = static_cast<float>(below) * (1 - share) + static_cast<float>(above) * share;
    return static_cast<std::uint8_t>(std::lround(value));
}

int firstPixel(float edge, int limit) {
    return static_cast<int>(std::clamp(std::floor(edge), 0.0f, static_cast<float>(limit)));
}

} // namespace

void Canvas::shape(Point upperLeft, Point lowerRight, programs::Color color, float opacity,
                   const std::function<float(Point)>& distance) {
    const int left = firstPixel(upperLeft.x, image_.width);
    const int top = firstPixel(upperLeft.y, image_.height);
    const int right = firstPixel(lowerRight.x + 1, image_.width);
    const int bottom = firstPixel(lowerRight.y + 1, image_.height);
    for (int row = top; row < bottom; ++row) {
        for (int column = left; column < right; ++column) {
            const Point middle = {static_cast<float>(column) + 0.5f,
                                  static_cast<float>(row) + 0.5f};
            const float cover = std::clamp(0.5f - distance(middle), 0.0f, 1.0f) * opacity;
            if (cover > 0) {
                programs::Color& pixel = image_.at(column, row);
                pixel = {mix(pixel.red, color.red, cover), mix(pixel.green, color.green, cover),
                         mix(pixel.blue, color.blue, cover)};
            }
        }
    }
}

void Canvas::disc(Point center, float radius, programs::Color color, float opacity) {
    const float reach = radius + 1;
    shape({center.x - reach, center.y - reach}, {center.x + reach, center.y + reach}, color,
          opacity, [&](Point p) { return std::hypot(p.x - center.x, p.y - center.y) - radius; });
}

void Canvas::ring(Point center, float radius, float thickness, programs::Color color,
                  float opacity) {
    const float reach = radius + thickness + 1;
    shape({center.x - reach, center.y - reach}, {center.x + reach, center.y + reach}, color,
          opacity, [&](Point p) {
              return std::fabs(std::hypot(p.x - center.x, p.y - center.y) - radius) - thickness / 2;
          });
}

void Canvas::line(const std::vector<Point>& points, bool closed, float thickness,
                  programs::Color color, float opacity) {
    if (points.size() < 2) {
        return;
    }
    const float reach = thickness / 2 + 1;
    const std::size_t segments = closed ? points.size() : points.size() - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const Point a = points[i];
        const Point b = points[(i + 1) % points.size()];
        shape({std::min(a.x, b.x) - reach, std::min(a.y, b.y) - reach},
              {std::max(a.x, b.x) + reach, std::max(a.y, b.y) + reach}, color, opacity,
              [&](Point p) { return distanceToSegment(p, a, b) - thickness / 2; });
    }
}

void Canvas::roundedBox(Point upperLeft, Point lowerRight, float radius, programs::Color color,
                        float opacity) {
    const Point middle = {(upperLeft.x + lowerRight.x) / 2, (upperLeft.y + lowerRight.y) / 2};
    const Point half = {(lowerRight.x - upperLeft.x) / 2 - radius,
                        (lowerRight.y - upperLeft.y) / 2 - radius};
    shape(upperLeft, lowerRight, color, opacity, [&](Point p) {
        const float dx = std::max(0.0f, std::fabs(p.x - middle.x) - half.x);
        const float dy = std::max(0.0f, std::fabs(p.y - middle.y) - half.y);
        return std::hypot(dx, dy) - radius;
    });
}

void Canvas::text(const std::string& text, Point upperLeft, float height, float thickness,
                  programs::Color color) {
    const float scale = height / digitHeight;
    float left = upperLeft.x;
    for (const char character : text) {
        const Glyph& glyph = glyphOf(character);
        for (const std::vector<Point>& stroke : glyph.strokes) {
            std::vector<Point> points;
            for (const Point& point : stroke) {
                points.push_back({left + point.x * scale, upperLeft.y + point.y * scale});
            }
            line(points, false, thickness, color);
        }
        left += (glyph.width + glyphGap) * scale;
    }
}

float Canvas::textWidth(const std::string& text, float height) {
    float width = 0;
    for (const char character : text) {
        width += glyphOf(character).width + glyphGap;
    }
    return text.empty() ? 0 : (width - glyphGap) * height / digitHeight;
}

} // namespace host
