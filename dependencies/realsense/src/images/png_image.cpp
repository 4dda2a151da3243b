#include "images/png_image.h"

#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <png.h>

namespace camera {
namespace {

constexpr png_uint_32 longestSide = 16384;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& problem) {
    throw std::runtime_error("image " + file.string() + ": " + problem);
}

File open(const std::filesystem::path& file) {
    File opened(std::fopen(file.c_str(), "rb"), &std::fclose);
    if (!opened) {
        fail(file, "cannot be opened");
    }
    return opened;
}

std::string sizeText(ImageSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

// A PNG being read. The library leaves a failed read with longjmp, so the functions that call it
// hold nothing that needs a destructor and tell of failure by their result.
class PngReader {
  public:
    explicit PngReader(std::FILE* file)
        : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &PngReader::onError,
                                      &PngReader::onWarning)),
          info_(png_ ? png_create_info_struct(png_) : nullptr), file_(file) {}
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    bool readHeader() {
        if (!info_) {
            return false;
        }
        if (setjmp(png_jmpbuf(png_))) {
            return false;
        }
        png_set_user_limits(png_, longestSide, longestSide);
        png_init_io(png_, file_);
        png_read_info(png_, info_);
        return true;
    }

    ImageSize size() const {
        return {static_cast<int>(png_get_image_width(png_, info_)),
                static_cast<int>(png_get_image_height(png_, info_))};
    }
    int bitDepth() const { return png_get_bit_depth(png_, info_); }
    bool grey() const { return png_get_color_type(png_, info_) == PNG_COLOR_TYPE_GRAY; }

    // 16-bit samples in the processor's byte order. `rows` point to buffers of the image's width.
    bool readSamples(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_))) {
            return false;
        }
        if constexpr (std::endian::native == std::endian::little) {
            png_set_swap(png_);
        }
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        png_read_image(png_, rows);
        png_read_end(png_, nullptr);
        return true;
    }

    const std::string& problem() const { return problem_; }

  private:
    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        static_cast<PngReader*>(png_get_error_ptr(png))->problem_ = text;
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}

    png_structp png_;
    png_infop info_;
    std::FILE* file_;
    std::string problem_ = "out of memory";
};

void openDepth(const std::filesystem::path& file, PngReader& png) {
    if (!png.readHeader()) {
        fail(file, "not a readable PNG (" + png.problem() + ")");
    }
    if (!png.grey() || png.bitDepth() != 16) {
        fail(file, "a depth image must be a 16-bit grey PNG, this one has " +
                       std::to_string(png.bitDepth()) + " bits" +
                       (png.grey() ? "" : " and is not grey"));
    }
}

} // namespace

ImageSize depthPngSize(const std::filesystem::path& file) {
    const File opened = open(file);
    PngReader png(opened.get());
    openDepth(file, png);
    return png.size();
}

std::vector<std::uint16_t> readDepthPng(const std::filesystem::path& file, ImageSize size) {
    const File opened = open(file);
    PngReader png(opened.get());
    openDepth(file, png);
    if (png.size() != size) {
        fail(file, "is " + sizeText(png.size()) + " now and was " + sizeText(size));
    }
    const auto width = static_cast<std::size_t>(size.width);
    std::vector<std::uint16_t> samples(width * static_cast<std::size_t>(size.height));
    std::vector<png_bytep> rows;
    for (std::size_t start = 0; start < samples.size(); start += width) {
        rows.push_back(reinterpret_cast<png_bytep>(samples.data() + start));
    }
    if (!png.readSamples(rows.data())) {
        fail(file, "broken PNG (" + png.problem() + ")");
    }
    return samples;
}

ImageSize colorPngSize(const std::filesystem::path& file) {
    const File opened = open(file);
    PngReader png(opened.get());
    if (!png.readHeader()) {
        fail(file, "not a readable PNG (" + png.problem() + ")");
    }
    return png.size();
}

std::vector<std::uint8_t> readColorPng(const std::filesystem::path& file, ImageSize size) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, void (*)(png_image*)> guard(&image, &png_image_free);
    if (!png_image_begin_read_from_file(&image, file.c_str())) {
        fail(file, std::string("not a readable PNG (") + image.message + ")");
    }
    const ImageSize found{static_cast<int>(image.width), static_cast<int>(image.height)};
    if (found != size) {
        fail(file, "is " + sizeText(found) + " now and was " + sizeText(size));
    }
    image.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
    const png_color black{0, 0, 0};
    if (!png_image_finish_read(&image, &black, pixels.data(), 0, nullptr)) {
        fail(file, std::string("broken PNG (") + image.message + ")");
    }
    return pixels;
}

} // namespace camera
