// Images as the four-channel textures that a host shows.
//
// Each function writes 4 bytes for each of `pixels` pixels to `rgba`, which must not overlap the
// samples, and never reads past the samples it is given: where they end early, the missing ones
// count as 0. The work is done by the texture form in use; see textureForms.h.
#pragma once

#include <cstddef>
#include <span>

namespace QVR {

// Three bytes a pixel: red, green, blue, 255.
void colorToRgba(std::span<const unsigned char> rgb, std::size_t pixels, unsigned char* rgba);

// One depth value a pixel: low byte, high byte, 0, 255.
void depthToRgba(std::span<const unsigned short> depth, std::size_t pixels, unsigned char* rgba);

// One byte a pixel: the byte three times, 255.
void maskToRgba(std::span<const unsigned char> mask, std::size_t pixels, unsigned char* rgba);

} // namespace QVR
