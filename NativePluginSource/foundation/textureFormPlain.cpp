// A texel is written as one 32-bit word, which takes half the stores of three or four bytes and
// leaves the compiler a loop that it can vectorise.
#include "foundation/textureForms.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace QVR {

namespace {

static_assert(std::endian::native == std::endian::little, "the word's low byte is red");

constexpr std::uint32_t opaque = 0xFF000000U;

void writeWord(unsigned char* texel, std::uint32_t word) {
    std::memcpy(texel, &word, sizeof word);
}

void colorToRgba(const unsigned char* rgb, std::size_t pixels, unsigned char* rgba) {
    if (pixels == 0) {
        return;
    }
    // A word of four bytes holds the pixel and the next one's red, which opaque covers. Only the
    // last pixel has no byte behind it.
    const std::size_t last = pixels - 1;
    for (std::size_t pixel = 0; pixel < last; ++pixel) {
        std::uint32_t word = 0;
        std::memcpy(&word, rgb + 3 * pixel, sizeof word);
        writeWord(rgba + 4 * pixel, word | opaque);
    }
    std::uint32_t word = opaque;
    std::memcpy(&word, rgb + 3 * last, 3);
    writeWord(rgba + 4 * last, word);
}

void depthToRgba(const unsigned short* depth, std::size_t pixels, unsigned char* rgba) {
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        writeWord(rgba + 4 * pixel, depth[pixel] | opaque);
    }
}

void maskToRgba(const unsigned char* mask, std::size_t pixels, unsigned char* rgba) {
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        // Shifts, for the smallest vector units multiply no 32-bit words.
        const std::uint32_t grey = mask[pixel];
        writeWord(rgba + 4 * pixel, grey | grey << 8U | grey << 16U | opaque);
    }
}

} // namespace

const TextureForm plainTextureForm{"plain", colorToRgba, depthToRgba, maskToRgba};

} // namespace QVR
