#include "depthPng.h"

#include <csetjmp>
#include <cstdio>
#include <memory>

#include <png.h>

namespace literal {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Reads what the header announces, then the rows; the vector is sized in between by the caller,
// so that no object with a destructor is made where libpng may jump out.
bool readHeader(png_structp png, png_infop info, std::FILE* file) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_init_io(png, file);
    png_read_info(png, info);
    png_set_swap(png);
    png_read_update_info(png, info);
    return png_get_bit_depth(png, info) == 16 &&
           png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY &&
           png_get_interlace_type(png, info) == PNG_INTERLACE_NONE;
}

bool readRows(png_structp png, std::uint16_t* pixels, std::uint32_t width, std::uint32_t height) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        png_read_row(png, reinterpret_cast<png_bytep>(pixels + std::size_t{y} * width), nullptr);
    }
    return true;
}

} // namespace

std::optional<Image> readDepthPng(const std::string& path) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) {
        return std::nullopt;
    }
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    std::optional<Image> image;
    if (info != nullptr && readHeader(png, info, file.get())) {
        image.emplace(png_get_image_width(png, info), png_get_image_height(png, info));
        if (!readRows(png, image->pixels.data(), image->width, image->height)) {
            image.reset();
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return image;
}

} // namespace literal
