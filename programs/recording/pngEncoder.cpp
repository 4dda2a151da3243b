#include "recording/pngEncoder.h"

#include "recording/RecordingError.h"

#include <bit>
#include <csetjmp>
#include <cstddef>
#include <new>
#include <string>

#include <png.h>
#include <zlib.h>

namespace recording {

namespace {

struct Picture {
    const std::uint8_t* bytes;
    std::size_t size;
    int width;
    int height;
    int bits;
    int colorType;
    int filter; // which row filter leaves the longest runs
};

// A PNG being written. The library leaves a failed write with longjmp, so the function that calls
// it holds nothing that needs a destructor and tells of failure by its result.
class PngWriter {
  public:
    explicit PngWriter(std::vector<std::uint8_t>& file)
        : file_(file), png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, this,
                                                    &PngWriter::onError, &PngWriter::onWarning)),
          info_(png_ != nullptr ? png_create_info_struct(png_) : nullptr) {}
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    bool write(const Picture& picture) {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_))) {
            return false;
        }
        png_set_write_fn(png_, &file_, &PngWriter::append, &PngWriter::flush);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(picture.width),
                     static_cast<png_uint_32>(picture.height), picture.bits, picture.colorType,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        // Pictures of a sensor are noise on surfaces: after the filter, runs are all that is worth
        // looking for.
        png_set_compression_level(png_, 1);
        png_set_compression_strategy(png_, Z_RLE);
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, picture.filter);
        png_write_info(png_, info_);
        if constexpr (std::endian::native == std::endian::little) {
            if (picture.bits == 16) {
                png_set_swap(png_);
            }
        }
        const std::size_t rowBytes = picture.size / static_cast<std::size_t>(picture.height);
        for (std::size_t row = 0; row < picture.size; row += rowBytes) {
            png_write_row(png_, picture.bytes + row);
        }
        png_write_end(png_, nullptr);
        return true;
    }

    const std::string& problem() const { return problem_; }

  private:
    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        static_cast<PngWriter*>(png_get_error_ptr(png))->problem_ = text;
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}

    // No exception passes through the library.
    static void append(png_structp png, png_bytep bytes, std::size_t count) {
        auto& file = *static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
        bool fits = true;
        try {
            file.insert(file.end(), bytes, bytes + count);
        } catch (const std::bad_alloc&) {
            fits = false;
        }
        if (!fits) {
            png_error(png, "out of memory");
        }
    }
    static void flush(png_structp) {}

    std::vector<std::uint8_t>& file_;
    std::string problem_ = "out of memory";
    png_structp png_;
    png_infop info_;
};

void encode(const Picture& picture, std::vector<std::uint8_t>& file) {
    const std::size_t bytesPerPixel = picture.colorType == PNG_COLOR_TYPE_RGB ? 3 : 2;
    if (picture.width <= 0 || picture.height <= 0 ||
        picture.size != static_cast<std::size_t>(picture.width) *
                            static_cast<std::size_t>(picture.height) * bytesPerPixel) {
        throw RecordingError("a picture is not of the camera's size");
    }
    file.clear();
    PngWriter writer(file);
    if (!writer.write(picture)) {
        throw RecordingError("a picture cannot be written (" + writer.problem() + ")");
    }
}

} // namespace

void encodeDepth(std::span<const std::uint16_t> samples, int width, int height,
                 std::vector<std::uint8_t>& file) {
    encode({reinterpret_cast<const std::uint8_t*>(samples.data()), samples.size_bytes(), width,
            height, 16, PNG_COLOR_TYPE_GRAY, PNG_FILTER_UP},
           file);
}

void encodeColor(std::span<const std::uint8_t> rgb, int width, int height,
                 std::vector<std::uint8_t>& file) {
    encode({rgb.data(), rgb.size(), width, height, 8, PNG_COLOR_TYPE_RGB, PNG_FILTER_SUB}, file);
}

} // namespace recording
