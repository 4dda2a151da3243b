// A folder of its own for a test, and PNG files to put into it.
#pragma once

#include "support/TemporaryFolder.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <png.h>

namespace camera_test {

class PictureFolder : public support::TemporaryFolder {
  public:
    // `samples` are the image's bytes in file order, rows without gaps.
    void writePng(const std::string& name, int width, int height, int bits, int colorType,
                  const std::vector<std::uint8_t>& samples,
                  int interlace = PNG_INTERLACE_NONE) const {
        std::FILE* stream = std::fopen(file(name).c_str(), "wb");
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_init_io(png, stream);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
                     bits, colorType, interlace, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        png_write_info(png, info);
        const std::size_t rowBytes = png_get_rowbytes(png, info);
        std::vector<png_bytep> rows;
        for (int row = 0; row < height; ++row) {
            rows.push_back(const_cast<png_bytep>(samples.data()) +
                           static_cast<std::size_t>(row) * rowBytes);
        }
        png_write_image(png, rows.data());
        png_write_end(png, nullptr);
        png_destroy_write_struct(&png, &info);
        std::fclose(stream);
    }

    void writeDepth(const std::string& name, int width, int height,
                    const std::vector<std::uint16_t>& samples,
                    int interlace = PNG_INTERLACE_NONE) const {
        std::vector<std::uint8_t> bytes;
        for (const unsigned sample : samples) {
            bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
            bytes.push_back(static_cast<std::uint8_t>(sample & 0xff));
        }
        writePng(name, width, height, 16, PNG_COLOR_TYPE_GRAY, bytes, interlace);
    }

    void writeColor(const std::string& name, int width, int height,
                    const std::vector<std::uint8_t>& rgb) const {
        writePng(name, width, height, 8, PNG_COLOR_TYPE_RGB, rgb);
    }
};

} // namespace camera_test
