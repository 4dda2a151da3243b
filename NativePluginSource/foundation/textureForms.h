// The forms that the texture conversion exists in, and which of them is in use.
//
// The plain form is the only one on processors without a vector form. The others convert many
// pixels at once and equal it byte for byte, so the choice shows in time only.
#pragma once

#include <cstddef>
#include <span>

namespace QVR {

// Each function reads the samples of exactly `pixels` pixels and writes 4 bytes a pixel. Nothing
// needs to be aligned. Samples and texture must not overlap.
struct TextureForm {
    const char* name;
    void (*colorToRgba)(const unsigned char* rgb, std::size_t pixels, unsigned char* rgba);
    void (*depthToRgba)(const unsigned short* depth, std::size_t pixels, unsigned char* rgba);
    void (*maskToRgba)(const unsigned char* mask, std::size_t pixels, unsigned char* rgba);
};

// Runs everywhere: 32-bit words, in loops that compilers make vectors of where they can.
extern const TextureForm plainTextureForm;

struct VectorTextureForm {
    const TextureForm* form;
    bool supported; // by the processor and the system this runs on
};

// The vector forms that the build has for its kind of processor, from slow to fast.
std::span<const VectorTextureForm> vectorTextureForms();

// The form with this name ("plain", "ssse3", "avx2"), null when it is unknown or this processor
// lacks it.
const TextureForm* findTextureForm(const char* name);

// The form in use: the fastest that this processor has, until another is forced. Any thread.
const TextureForm& activeTextureForm();

// Puts a form, which lives as long as the program, to use from the next conversion on; null brings
// back the fastest one. For tests and benchmarks.
void forceTextureForm(const TextureForm* form);

} // namespace QVR
