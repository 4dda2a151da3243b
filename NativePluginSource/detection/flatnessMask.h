// Marking of the pixels of near, flat surfaces: the first two passes over a depth image.
#pragma once

#include <cstddef>
#include <cstdint>

namespace QVR {

// A row-major depth image that someone else owns; both sizes are at least 1.
struct DepthView {
    const unsigned short* pixels;
    std::uint32_t width;
    std::uint32_t height;
};

struct FlatnessSettings {
    std::uint16_t nearLimit; // depths at or below are ignored
    std::uint16_t farLimit;  // depths at or above are ignored
    std::uint32_t radius;    // neighbour distance in pixels; neighbours are held at the border
    std::uint16_t threshold; // a smaller depth difference counts as the same surface
};

constexpr int flatMark = 11;                 // marks from here on make a pixel flat
constexpr std::uint32_t noFlatPixel = 64000; // the nearest depth when no flat pixel is nearer

struct FlatnessResult {
    bool anyInRange = false;
    std::uint32_t nearest = noFlatPixel; // least depth of a flat pixel
};

// How many of the eight neighbours at distance `radius` of pixel (x, y), which lies inside the
// image, differ from it by less than `threshold`.
int countSameNeighbours(const DepthView& image, std::uint32_t x, std::uint32_t y,
                        std::uint32_t radius, std::uint16_t threshold);

// Writes one mark per pixel: 0 out of range, else the number of same neighbours at distance
// `radius` and at twice that distance, 0 to 16.
FlatnessResult markFlatPixels(const DepthView& image, const FlatnessSettings& settings,
                              std::uint8_t* mask);

// Clears the mark of every pixel that is farther than `cut`.
void clearBeyondCut(const unsigned short* depth, std::size_t pixelCount, std::uint16_t cut,
                    std::uint8_t* mask);

} // namespace QVR
