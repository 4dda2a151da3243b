// Pictures in memory as the programs pass them around, row by row from the upper left.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace programs {

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Color&) const = default;
};

// `values` holds width x height pixels; an image without pixels is "not there".
template <typename Pixel>
struct Image {
    int width = 0;
    int height = 0;
    std::vector<Pixel> values;

    Image() = default;
    Image(int columns, int rows, Pixel fill = {})
        : width(columns), height(rows),
          values(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), fill) {}

    bool empty() const { return values.empty(); }
    bool contains(int column, int row) const {
        return column >= 0 && row >= 0 && column < width && row < height;
    }
    // The pixel must lie inside the image.
    Pixel& at(int column, int row) { return values[index(column, row)]; }
    const Pixel& at(int column, int row) const { return values[index(column, row)]; }

  private:
    std::size_t index(int column, int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(column);
    }
};

using ColorImage = Image<Color>;
using GrayImage = Image<std::uint8_t>;
using DepthImage = Image<std::uint16_t>; // depth units; 0 is no measurement

} // namespace programs
