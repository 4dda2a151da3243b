// Grey pictures as PNG files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <png.h>

namespace support {

// One picture of `bits` (8 or 16) a pixel; `value` gives each pixel at (column, row).
inline void writeGreyPng(const std::string& path, unsigned width, unsigned height, int bits,
                         const std::function<std::uint16_t(unsigned, unsigned)>& value) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        throw std::runtime_error("cannot write " + path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, bits, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<std::uint8_t> line;
    for (unsigned row = 0; row < height; ++row) {
        line.clear();
        for (unsigned column = 0; column < width; ++column) {
            const std::uint16_t pixel = value(column, row);
            if (bits == 16)
                line.push_back(static_cast<std::uint8_t>(pixel >> 8));
            line.push_back(static_cast<std::uint8_t>(pixel & 0xff));
        }
        png_write_row(png, line.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

} // namespace support
