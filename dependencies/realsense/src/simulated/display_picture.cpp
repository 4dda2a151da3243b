#include "simulated/display_picture.h"

#include "simulated/hash.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace camera::simulated {
namespace {

// Distance from the outline of a rectangle with rounded corners; negative inside.
double roundedBox(double x, double y, double centerX, double centerY, double halfWidth,
                  double halfHeight, double radius) {
    const double dx = std::fabs(x - centerX) - halfWidth + radius;
    const double dy = std::fabs(y - centerY) - halfHeight + radius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) -
           radius;
}

double ring(double x, double y, double centerX, double centerY, double radius, double halfLine) {
    return std::fabs(std::hypot(x - centerX, y - centerY) - radius) - halfLine;
}

// A distance field painted over a colour.
class Brush {
  public:
    explicit Brush(double footprint) : soft_(std::max(footprint, 0.05)) {}

    Color operator()(const Color& under, const Color& paint, double distance,
                     double opacity = 1.0) const {
        return blend(under, paint,
                     opacity * (1.0 - smoothStep(-soft_ / 2.0, soft_ / 2.0, distance)));
    }

  private:
    double soft_;
};

struct Card {
    double x;
    double y;
    double halfWidth;
    double halfHeight;
    Color top;
    Color bottom;
};

constexpr std::array<Card, 5> cards{{
    {52.0, 74.0, 34.0, 36.0, {0.99, 0.62, 0.30}, {0.91, 0.28, 0.38}},
    {134.0, 58.0, 38.0, 20.0, {0.33, 0.78, 0.98}, {0.20, 0.45, 0.92}},
    {134.0, 97.5, 38.0, 12.5, {0.50, 0.90, 0.62}, {0.13, 0.66, 0.56}},
    {288.0, 74.0, 34.0, 36.0, {0.76, 0.56, 0.99}, {0.45, 0.28, 0.86}},
    {209.0, 74.0, 27.0, 36.0, {0.98, 0.90, 0.55}, {0.94, 0.66, 0.22}},
}};

// Hills under an evening sky, a row of cards, a player bar.
Color shown(double x, double y, double width, double height, const Brush& brush) {
    const double down = y / height;
    Color color = blend({0.07, 0.10, 0.25}, {0.32, 0.20, 0.44}, down);
    const double sun = std::hypot(x - width * 0.76, y - height * 0.62);
    color = blend(color, {0.98, 0.55, 0.42}, 0.75 * std::exp(-sun / 55.0));
    const double far = height * 0.70 - 9.0 * std::sin(x * 0.021 + 0.6) - 4.0 * std::sin(x * 0.057);
    const double near = height * 0.80 + 8.0 * std::sin(x * 0.017 + 2.1) + 3.0 * std::sin(x * 0.049);
    color = brush(color, {0.20, 0.16, 0.36}, far - y);
    color = brush(color, {0.10, 0.09, 0.24}, near - y);

    // Title bar with a line of text, as bars, and a clock ring.
    color = brush(color, {1.0, 1.0, 1.0}, y - 15.0, 0.10);
    color = brush(color, {0.93, 0.95, 1.0}, roundedBox(x, y, 36.0, 7.5, 24.0, 1.8, 1.8), 0.85);
    color = brush(color, {0.93, 0.95, 1.0}, roundedBox(x, y, 82.0, 7.5, 14.0, 1.8, 1.8), 0.35);
    color = brush(color, {0.93, 0.95, 1.0}, ring(x, y, width - 14.0, 7.5, 3.6, 0.6), 0.85);

    for (const Card& card : cards) {
        const double distance =
            roundedBox(x, y, card.x, card.y, card.halfWidth, card.halfHeight, 6.0);
        color = blend(color, {0.02, 0.02, 0.08}, 0.35 * std::exp(-std::max(distance, 0.0) / 4.0));
        const double share = (y - card.y + card.halfHeight) / (2.0 * card.halfHeight);
        color = brush(color, blend(card.top, card.bottom, std::clamp(share, 0.0, 1.0)), distance);
        color = brush(color, {1.0, 1.0, 1.0},
                      roundedBox(x, y, card.x, card.y + card.halfHeight - 8.0, card.halfWidth - 8.0,
                                 1.6, 1.6),
                      0.75);
        color = brush(color, {1.0, 1.0, 1.0},
                      ring(x, y, card.x, card.y - 4.0, card.halfHeight * 0.38, 1.1), 0.6);
    }

    // Player bar: track, played part, knob, and two more controls.
    const double bar = height - 22.0;
    color = brush(color, {0.04, 0.05, 0.12}, roundedBox(x, y, width / 2.0, bar, 140.0, 12.0, 12.0),
                  0.72);
    color = brush(color, {0.45, 0.50, 0.66}, roundedBox(x, y, width / 2.0, bar, 96.0, 1.5, 1.5));
    color =
        brush(color, {0.40, 0.86, 0.99}, roundedBox(x, y, width / 2.0 - 36.0, bar, 60.0, 1.5, 1.5));
    color = brush(color, {1.0, 1.0, 1.0}, ring(x, y, width / 2.0 + 24.0, bar, 0.0, 5.0));
    color = brush(color, {0.40, 0.86, 0.99}, ring(x, y, width / 2.0 - 118.0, bar, 5.0, 1.0));
    color = brush(color, {0.98, 0.55, 0.42}, ring(x, y, width / 2.0 + 118.0, bar, 5.0, 1.0));
    return color;
}

// Planks of dark wood that catch the light of the display.
Color table(double x, double y, double fromDisplay) {
    const double plank = std::floor((y + 1000.0) / 62.0);
    const double tone =
        static_cast<double>(hash(static_cast<std::uint64_t>(plank)) >> 40) / 16777216.0;
    const double grain = std::sin(y * 0.9 + 5.0 * std::sin(x * 0.012 + tone * 9.0) + tone * 40.0) +
                         0.5 * std::sin(y * 2.3 + 3.0 * std::sin(x * 0.021 + tone * 5.0));
    const double light = 0.82 + 0.16 * tone + 0.035 * grain;
    const double along = (y + 1000.0) - plank * 62.0;
    const double seam = 1.0 - 0.5 * std::exp(-std::min(along, 62.0 - along) / 0.8);
    const Color wood{0.34 * light * seam, 0.255 * light * seam, 0.20 * light * seam};
    return blend(wood, {0.36, 0.38, 0.62}, 0.30 * std::exp(-fromDisplay / 28.0));
}

} // namespace

Color pictureAt(double x, double y, double footprint) {
    const double width = display().width;
    const double height = display().height;
    const Brush brush(footprint);
    const double screen =
        roundedBox(x, y, width / 2.0, height / 2.0, width / 2.0, height / 2.0, 3.0);
    const double frame =
        roundedBox(x, y, width / 2.0, height / 2.0, width / 2.0 + 9.0, height / 2.0 + 9.0, 11.0);
    Color color = table(x, y, std::max(frame, 0.0));
    color = brush(color, {0.045, 0.047, 0.055}, frame);
    color = brush(color, {0.20, 0.21, 0.24}, std::fabs(frame + 0.7) - 0.5);
    if (screen < footprint)
        color = brush(color, shown(x, y, width, height, brush), screen);
    return color;
}

} // namespace camera::simulated
