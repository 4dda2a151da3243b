// What is to be seen behind the hands: the display with what it shows, and the table around it.
#pragma once

namespace camera::simulated {

struct Color {
    double red = 0.0; // 0 to 1
    double green = 0.0;
    double blue = 0.0;
};

constexpr Color blend(const Color& a, const Color& b, double share) {
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share};
}

// The colour at a point of the display's plane in millimetres of display space; `footprint` is the
// width of what a pixel sees there, over which edges are softened.
Color pictureAt(double x, double y, double footprint);

} // namespace camera::simulated
