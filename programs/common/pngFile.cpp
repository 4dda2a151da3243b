#include "common/pngFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <png.h>

namespace programs {

namespace {

// libpng's simplified interface reports through the image record instead of jumping out of C++.
std::string write(const std::string& path, int width, int height, png_uint_32 format,
                  const void* pixels) {
    if (width <= 0 || height <= 0) {
        return "cannot write " + path + ": the picture is empty";
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return "cannot write " + path + ": " + std::strerror(errno);
    }
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = format;
    const bool written = png_image_write_to_stdio(&image, file, 0, pixels, 0, nullptr) != 0;
    const int writeError = errno;
    const bool closed = std::fclose(file) == 0;
    std::string problem;
    if (!written) {
        problem = "cannot write " + path + ": " + image.message;
    } else if (!closed) {
        problem = "cannot write " + path + ": " + std::strerror(writeError);
    }
    png_image_free(&image);
    if (!problem.empty()) {
        std::remove(path.c_str());
    }
    return problem;
}

} // namespace

static_assert(sizeof(Color) == 3, "colour pixels are written as they lie in memory");

std::string writePng(const std::string& path, const ColorImage& image) {
    return write(path, image.width, image.height, PNG_FORMAT_RGB, image.values.data());
}

std::string writePng(const std::string& path, const GrayImage& image) {
    return write(path, image.width, image.height, PNG_FORMAT_GRAY, image.values.data());
}

} // namespace programs
