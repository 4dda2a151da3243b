#include "client/textureConversion.h"

#include <algorithm>

namespace QVR {

namespace {

constexpr unsigned char opaque = 255;

void fillBlack(std::size_t first, std::size_t end, unsigned char* rgba) {
    for (std::size_t pixel = first; pixel < end; ++pixel) {
        unsigned char* out = rgba + 4 * pixel;
        out[0] = 0;
        out[1] = 0;
        out[2] = 0;
        out[3] = opaque;
    }
}

} // namespace

void colorToRgba(std::span<const unsigned char> rgb, std::size_t pixels, unsigned char* rgba) {
    const std::size_t whole = std::min(pixels, rgb.size() / 3);
    for (std::size_t pixel = 0; pixel < whole; ++pixel) {
        const unsigned char* in = rgb.data() + 3 * pixel;
        unsigned char* out = rgba + 4 * pixel;
        out[0] = in[0];
        out[1] = in[1];
        out[2] = in[2];
        out[3] = opaque;
    }
    fillBlack(whole, pixels, rgba);
    if (whole < pixels) {
        // The samples may end within a pixel.
        std::copy(rgb.begin() + static_cast<std::ptrdiff_t>(3 * whole), rgb.end(),
                  rgba + 4 * whole);
    }
}

void depthToRgba(std::span<const unsigned short> depth, std::size_t pixels, unsigned char* rgba) {
    const std::size_t known = std::min(pixels, depth.size());
    for (std::size_t pixel = 0; pixel < known; ++pixel) {
        unsigned char* out = rgba + 4 * pixel;
        out[0] = static_cast<unsigned char>(depth[pixel] & 0xFF);
        out[1] = static_cast<unsigned char>(depth[pixel] >> 8);
        out[2] = 0;
        out[3] = opaque;
    }
    fillBlack(known, pixels, rgba);
}

void maskToRgba(std::span<const unsigned char> mask, std::size_t pixels, unsigned char* rgba) {
    const std::size_t known = std::min(pixels, mask.size());
    for (std::size_t pixel = 0; pixel < known; ++pixel) {
        unsigned char* out = rgba + 4 * pixel;
        out[0] = mask[pixel];
        out[1] = mask[pixel];
        out[2] = mask[pixel];
        out[3] = opaque;
    }
    fillBlack(known, pixels, rgba);
}

} // namespace QVR
