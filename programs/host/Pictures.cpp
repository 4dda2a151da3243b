#include "host/Pictures.h"

#include "common/pngFile.h"
#include "host/Canvas.h"
#include "host/depthColors.h"
#include "host/outlines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <limits>

namespace host {

namespace {

using programs::Color;
using programs::ColorImage;

constexpr float enlargement = 2;
constexpr float smallestOutline = 6; // pixels; less is noise
constexpr float circleRadius = 15;
constexpr float numberHeight = 14;
constexpr float labelHeight = 12;
constexpr float labelMargin = 10;

constexpr Color outlineColor = {120, 255, 214};
constexpr Color labelColor = {12, 16, 28};
constexpr Color textColor = {255, 255, 255};
// Told apart easily, and from the depth colours.
constexpr std::array<Color, 10> slotColors = {{{46, 196, 182},
                                               {66, 135, 245},
                                               {120, 190, 33},
                                               {214, 64, 159},
                                               {0, 150, 199},
                                               {149, 97, 226},
                                               {32, 160, 96},
                                               {222, 82, 82},
                                               {90, 110, 200},
                                               {160, 140, 20}}};

Color slotColor(int slot) {
    return slotColors[static_cast<std::size_t>(slot) % slotColors.size()];
}

// What the touches are drawn on, in the size of the camera's depth picture.
ColorImage ground(const Snapshot& snapshot) {
    if (!snapshot.depth.empty()) {
        return colorDepth(snapshot.depth, usualRange(snapshot.depth));
    }
    if (!snapshot.color.empty()) {
        return snapshot.color;
    }
    const programs::GrayImage gray = Pictures::readableMask(snapshot.processed);
    ColorImage colors(gray.width, gray.height);
    std::transform(gray.values.begin(), gray.values.end(), colors.values.begin(),
                   [](std::uint8_t value) {
                       return Color{value, value, value};
                   });
    return colors;
}

// The picture in another size, each pixel from the nearest one.
ColorImage resized(const ColorImage& image, int width, int height) {
    ColorImage result(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            result.at(column, row) =
                image.at(column * image.width / width, row * image.height / height);
        }
    }
    return result;
}

// Circles and outlines stand out from a ground that steps back a little.
void dim(ColorImage& image) {
    for (Color& pixel : image.values) {
        pixel = {static_cast<std::uint8_t>(pixel.red * 4 / 5),
                 static_cast<std::uint8_t>(pixel.green * 4 / 5),
                 static_cast<std::uint8_t>(pixel.blue * 4 / 5)};
    }
}

void drawOutlines(Canvas& canvas, const programs::GrayImage& mask) {
    for (const std::vector<Point>& loop : findOutlines(mask)) {
        if (std::fabs(enclosedArea(loop)) < smallestOutline) {
            continue;
        }
        std::vector<Point> points = smoothed(loop, 2);
        for (Point& point : points) {
            point = {point.x * enlargement, point.y * enlargement};
        }
        canvas.line(points, true, 2.0f, outlineColor);
    }
}

std::string positionText(const Touch& touch) {
    char text[96];
    std::snprintf(text, sizeof text, "%.1f, %.1f, %.1f", static_cast<double>(touch.x),
                  static_cast<double>(touch.y), static_cast<double>(touch.z));
    return text;
}

struct Box {
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;

    float overlapWith(const Box& other) const {
        const float across =
            std::min(left + width, other.left + other.width) - std::max(left, other.left);
        const float down =
            std::min(top + height, other.top + other.height) - std::max(top, other.top);
        return across > 0 && down > 0 ? across * down : 0;
    }
};

Box boxOfCircle(Point center) {
    const float reach = circleRadius + 3;
    return {center.x - reach, center.y - reach, 2 * reach, 2 * reach};
}

// Near the circle, inside the picture, where it hides least of what is there already; of equal
// places the first: right, left, below, above, then the corners.
Box boxOfLabel(Point center, float width, float height, const std::vector<Box>& taken,
               const ColorImage& image) {
    const float away = circleRadius + 7;
    const float right = center.x + away;
    const float left = center.x - away - width;
    const float level = center.y - height / 2;
    const float below = center.y + away;
    const float above = center.y - away - height;
    const float middle = center.x - width / 2;
    Box best;
    float leastHidden = std::numeric_limits<float>::max();
    for (const Point& corner :
         {Point{right, level}, Point{left, level}, Point{middle, below}, Point{middle, above},
          Point{right, below}, Point{right, above}, Point{left, below}, Point{left, above}}) {
        const Box box = {corner.x, corner.y, width, height};
        const Box picture = {0, 0, static_cast<float>(image.width),
                             static_cast<float>(image.height)};
        float hidden = width * height - box.overlapWith(picture);
        for (const Box& other : taken) {
            hidden += box.overlapWith(other);
        }
        if (hidden + 1 < leastHidden) { // less than a pixel is a rounding error
            leastHidden = hidden;
            best = box;
        }
    }
    return best;
}

void drawTouches(Canvas& canvas, const std::vector<PlacedTouch>& touches, const ColorImage& image) {
    const auto centerOf = [](const PlacedTouch& placed) {
        return Point{(placed.column + 0.5f) * enlargement, (placed.row + 0.5f) * enlargement};
    };
    std::vector<Box> taken;
    for (const PlacedTouch& placed : touches) {
        taken.push_back(boxOfCircle(centerOf(placed)));
    }
    for (const PlacedTouch& placed : touches) {
        const std::string text = positionText(placed.touch);
        const Box box =
            boxOfLabel(centerOf(placed), Canvas::textWidth(text, labelHeight) + 2 * labelMargin,
                       labelHeight + 14, taken, image);
        taken.push_back(box);
        canvas.roundedBox({box.left, box.top}, {box.left + box.width, box.top + box.height},
                          box.height / 2, labelColor, 0.78f);
        canvas.text(text, {box.left + labelMargin, box.top + 7}, labelHeight, 1.7f, textColor);
    }
    for (const PlacedTouch& placed : touches) {
        const Point center = centerOf(placed);
        canvas.disc(center, circleRadius, slotColor(placed.touch.slot), 0.9f);
        canvas.ring(center, circleRadius, 3, textColor);
        const std::string number = std::to_string(placed.touch.slot);
        canvas.text(
            number,
            {center.x - Canvas::textWidth(number, numberHeight) / 2, center.y - numberHeight / 2},
            numberHeight, 2.6f, textColor);
    }
}

std::string pathOf(const std::string& folder, const char* name) {
    return (std::filesystem::path(folder) / name).string();
}

} // namespace

programs::GrayImage Pictures::readableMask(const programs::GrayImage& mask) {
    programs::GrayImage readable = mask;
    for (std::uint8_t& value : readable.values) {
        value = value == 0 ? value : static_cast<std::uint8_t>(std::min(255, 95 + 10 * value));
    }
    return readable;
}

ColorImage Pictures::compose(const Snapshot& snapshot) {
    ColorImage image = ground(snapshot);
    if (image.empty()) {
        return image;
    }
    // Touches are placed in the camera's depth picture, whose full size the mask has.
    const int width = snapshot.processed.empty() ? image.width : snapshot.processed.width;
    const int height = snapshot.processed.empty() ? image.height : snapshot.processed.height;
    image = resized(image, width * static_cast<int>(enlargement),
                    height * static_cast<int>(enlargement));
    dim(image);
    Canvas canvas(image);
    drawOutlines(canvas, snapshot.processed);
    std::vector<PlacedTouch> placed;
    std::copy_if(snapshot.touches.begin(), snapshot.touches.end(), std::back_inserter(placed),
                 [](const PlacedTouch& touch) { return touch.placed; });
    drawTouches(canvas, placed, image);
    return image;
}

Pictures::Report Pictures::save(const Snapshot& snapshot, const std::string& folder) {
    Report report;
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        report.problem = "cannot make the folder " + folder + ": " + failure.message();
        return report;
    }
    const auto write = [&](const char* name, const char* stream, const auto& image) {
        if (!report.problem.empty()) {
            return;
        }
        if (image.empty()) {
            report.skipped.push_back(std::string(name) + ": " + stream);
            return;
        }
        const std::string path = pathOf(folder, name);
        report.problem = programs::writePng(path, image);
        if (report.problem.empty()) {
            report.written.push_back(path);
        }
    };
    write("color.png", "the server does not send the colour stream", snapshot.color);
    write("depth.png", "the server does not send the depth stream",
          colorDepth(snapshot.depth, usualRange(snapshot.depth)));
    write("processed.png", "the server does not send the processed stream",
          readableMask(snapshot.processed));
    write("touches.png", "the server sends no picture", compose(snapshot));
    return report;
}

} // namespace host
