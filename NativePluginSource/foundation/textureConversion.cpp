#include "foundation/textureConversion.h"

#include "foundation/textureForms.h"

#include <algorithm>

namespace QVR {

namespace {

void fillBlack(std::size_t first, std::size_t end, unsigned char* rgba) {
    for (std::size_t pixel = first; pixel < end; ++pixel) {
        unsigned char* out = rgba + 4 * pixel;
        out[0] = 0;
        out[1] = 0;
        out[2] = 0;
        out[3] = 255;
    }
}

} // namespace

void colorToRgba(std::span<const unsigned char> rgb, std::size_t pixels, unsigned char* rgba) {
    const std::size_t whole = std::min(pixels, rgb.size() / 3);
    activeTextureForm().colorToRgba(rgb.data(), whole, rgba);
    fillBlack(whole, pixels, rgba);
    if (whole < pixels) {
        // The samples may end within a pixel.
        std::copy(rgb.begin() + static_cast<std::ptrdiff_t>(3 * whole), rgb.end(),
                  rgba + 4 * whole);
    }
}

void depthToRgba(std::span<const unsigned short> depth, std::size_t pixels, unsigned char* rgba) {
    const std::size_t known = std::min(pixels, depth.size());
    activeTextureForm().depthToRgba(depth.data(), known, rgba);
    fillBlack(known, pixels, rgba);
}

void maskToRgba(std::span<const unsigned char> mask, std::size_t pixels, unsigned char* rgba) {
    const std::size_t known = std::min(pixels, mask.size());
    activeTextureForm().maskToRgba(mask.data(), known, rgba);
    fillBlack(known, pixels, rgba);
}

} // namespace QVR
