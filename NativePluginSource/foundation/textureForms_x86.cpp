// The vector forms for 64-bit x86. Each function names the instructions it may use and calls
// nothing but intrinsics and functions of the same kind, so that no other code of the library can
// end up with instructions that a processor lacks.
//
// Images that are no whole number of steps end in a step that overlaps the one before: it writes
// the same texels once more. Images smaller than a step are left to the plain form.
#include "foundation/textureForms.h"

#include <cstdint>

#include <immintrin.h>

namespace QVR {

namespace {

#define QVR_SSSE3 __attribute__((target("ssse3")))
#define QVR_AVX2 __attribute__((target("avx2,prfchw")))

// Four pixels of three bytes into four words; the fourth byte of each becomes 0.
QVR_SSSE3 inline __m128i spreadColor(__m128i rgb) {
    const __m128i order = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    return _mm_shuffle_epi8(rgb, order);
}

QVR_SSSE3 inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

QVR_SSSE3 inline void store(unsigned char* to, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
}

QVR_AVX2 inline void store(unsigned char* to, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}

constexpr std::size_t step = 16; // pixels

// How many pixels lie before the texture's first whole cache line, fewer than a step. A store that
// touches two lines costs twice.
inline std::size_t pixelsToLine(const unsigned char* rgba) {
    constexpr std::uintptr_t line = 64;
    return ((line - reinterpret_cast<std::uintptr_t>(rgba) % line) % line) / 4;
}

QVR_SSSE3 inline void colorStep(const unsigned char* rgb, unsigned char* rgba) {
    const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000U));
    const __m128i a = load(rgb);
    const __m128i b = load(rgb + 16);
    const __m128i c = load(rgb + 32);
    store(rgba, _mm_or_si128(spreadColor(a), opaque));
    store(rgba + 16, _mm_or_si128(spreadColor(_mm_alignr_epi8(b, a, 12)), opaque));
    store(rgba + 32, _mm_or_si128(spreadColor(_mm_alignr_epi8(c, b, 8)), opaque));
    store(rgba + 48, _mm_or_si128(spreadColor(_mm_srli_si128(c, 4)), opaque));
}

QVR_SSSE3 void colorSsse3(const unsigned char* rgb, std::size_t pixels, unsigned char* rgba) {
    if (pixels < step) {
        plainTextureForm.colorToRgba(rgb, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - step;
    colorStep(rgb, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += step) {
        colorStep(rgb + 3 * pixel, rgba + 4 * pixel);
    }
    colorStep(rgb + 3 * last, rgba + 4 * last);
}

QVR_SSSE3 inline void depthStep(const unsigned short* depth, unsigned char* rgba) {
    const __m128i blueAndAlpha = _mm_set1_epi16(static_cast<short>(0xFF00));
    const __m128i a = load(depth);
    const __m128i b = load(depth + 8);
    store(rgba, _mm_unpacklo_epi16(a, blueAndAlpha));
    store(rgba + 16, _mm_unpackhi_epi16(a, blueAndAlpha));
    store(rgba + 32, _mm_unpacklo_epi16(b, blueAndAlpha));
    store(rgba + 48, _mm_unpackhi_epi16(b, blueAndAlpha));
}

QVR_SSSE3 void depthSsse3(const unsigned short* depth, std::size_t pixels, unsigned char* rgba) {
    if (pixels < step) {
        plainTextureForm.depthToRgba(depth, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - step;
    depthStep(depth, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += step) {
        depthStep(depth + pixel, rgba + 4 * pixel);
    }
    depthStep(depth + last, rgba + 4 * last);
}

QVR_SSSE3 inline void maskStep(const unsigned char* mask, unsigned char* rgba) {
    const __m128i grey = load(mask);
    const __m128i alpha = _mm_set1_epi8(-1);
    const __m128i firstTwo = _mm_unpacklo_epi8(grey, grey);
    const __m128i firstEnds = _mm_unpacklo_epi8(grey, alpha);
    const __m128i lastTwo = _mm_unpackhi_epi8(grey, grey);
    const __m128i lastEnds = _mm_unpackhi_epi8(grey, alpha);
    store(rgba, _mm_unpacklo_epi16(firstTwo, firstEnds));
    store(rgba + 16, _mm_unpackhi_epi16(firstTwo, firstEnds));
    store(rgba + 32, _mm_unpacklo_epi16(lastTwo, lastEnds));
    store(rgba + 48, _mm_unpackhi_epi16(lastTwo, lastEnds));
}

QVR_SSSE3 void maskSsse3(const unsigned char* mask, std::size_t pixels, unsigned char* rgba) {
    if (pixels < step) {
        plainTextureForm.maskToRgba(mask, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - step;
    maskStep(mask, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += step) {
        maskStep(mask + pixel, rgba + 4 * pixel);
    }
    maskStep(mask + last, rgba + 4 * last);
}

// Eight pixels from exactly their 24 bytes: the upper half is read 4 bytes early.
QVR_AVX2 inline __m256i spreadEight(const unsigned char* rgb) {
    const __m256i order =
        _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, //
                         4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1);
    const __m256i lower =
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb)));
    const __m256i both = _mm256_inserti128_si256(
        lower, _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb + 8)), 1);
    return _mm256_or_si256(_mm256_shuffle_epi8(both, order),
                           _mm256_set1_epi32(static_cast<int>(0xFF000000U)));
}

constexpr std::size_t wideStep = 32;

// Asks for the two cache lines that the step at `pixel` + 1 KiB of texture will write, or the last
// step: a line that arrives only when it is written is waited for, and it takes longer to arrive
// than to convert. For writing, so that no other processor's copy of it is in the way then.
// Processors that know only the reading kind take the instruction for none at all.
QVR_AVX2 inline void fetchAhead(const unsigned char* rgba, std::size_t pixel, std::size_t last) {
    constexpr std::size_t ahead = 256;
    const unsigned char* const lines = rgba + 4 * (last - pixel > ahead ? pixel + ahead : last);
    __builtin_prefetch(lines, 1);
    __builtin_prefetch(lines + 64, 1);
}

QVR_AVX2 inline void colorWideStep(const unsigned char* rgb, unsigned char* rgba) {
    const __m256i a = spreadEight(rgb);
    const __m256i b = spreadEight(rgb + 24);
    const __m256i c = spreadEight(rgb + 48);
    const __m256i d = spreadEight(rgb + 72);
    store(rgba, a);
    store(rgba + 32, b);
    store(rgba + 64, c);
    store(rgba + 96, d);
}

QVR_AVX2 void colorAvx2(const unsigned char* rgb, std::size_t pixels, unsigned char* rgba) {
    if (pixels < wideStep) {
        colorSsse3(rgb, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - wideStep;
    colorWideStep(rgb, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += wideStep) {
        fetchAhead(rgba, pixel, last);
        colorWideStep(rgb + 3 * pixel, rgba + 4 * pixel);
    }
    colorWideStep(rgb + 3 * last, rgba + 4 * last);
}

QVR_AVX2 inline __m256i widenEight(const unsigned short* depth) {
    return _mm256_or_si256(
        _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(depth))),
        _mm256_set1_epi32(static_cast<int>(0xFF000000U)));
}

QVR_AVX2 inline void depthWideStep(const unsigned short* depth, unsigned char* rgba) {
    store(rgba, widenEight(depth));
    store(rgba + 32, widenEight(depth + 8));
    store(rgba + 64, widenEight(depth + 16));
    store(rgba + 96, widenEight(depth + 24));
}

QVR_AVX2 void depthAvx2(const unsigned short* depth, std::size_t pixels, unsigned char* rgba) {
    if (pixels < wideStep) {
        depthSsse3(depth, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - wideStep;
    depthWideStep(depth, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += wideStep) {
        fetchAhead(rgba, pixel, last);
        depthWideStep(depth + pixel, rgba + 4 * pixel);
    }
    depthWideStep(depth + last, rgba + 4 * last);
}

QVR_AVX2 inline void maskSixteen(const unsigned char* mask, unsigned char* rgba) {
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    const __m256i firstOrder =
        _mm256_setr_epi8(0, 0, 0, -1, 1, 1, 1, -1, 2, 2, 2, -1, 3, 3, 3, -1, //
                         4, 4, 4, -1, 5, 5, 5, -1, 6, 6, 6, -1, 7, 7, 7, -1);
    const __m256i lastOrder =
        _mm256_setr_epi8(8, 8, 8, -1, 9, 9, 9, -1, 10, 10, 10, -1, 11, 11, 11, -1, //
                         12, 12, 12, -1, 13, 13, 13, -1, 14, 14, 14, -1, 15, 15, 15, -1);
    const __m256i grey =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(mask)));
    store(rgba, _mm256_or_si256(_mm256_shuffle_epi8(grey, firstOrder), opaque));
    store(rgba + 32, _mm256_or_si256(_mm256_shuffle_epi8(grey, lastOrder), opaque));
}

QVR_AVX2 inline void maskWideStep(const unsigned char* mask, unsigned char* rgba) {
    maskSixteen(mask, rgba);
    maskSixteen(mask + 16, rgba + 64);
}

QVR_AVX2 void maskAvx2(const unsigned char* mask, std::size_t pixels, unsigned char* rgba) {
    if (pixels < wideStep) {
        maskSsse3(mask, pixels, rgba);
        return;
    }
    const std::size_t last = pixels - wideStep;
    maskWideStep(mask, rgba);
    for (std::size_t pixel = pixelsToLine(rgba); pixel < last; pixel += wideStep) {
        fetchAhead(rgba, pixel, last);
        maskWideStep(mask + pixel, rgba + 4 * pixel);
    }
    maskWideStep(mask + last, rgba + 4 * last);
}

#undef QVR_SSSE3
#undef QVR_AVX2

constexpr TextureForm ssse3Form{"ssse3", colorSsse3, depthSsse3, maskSsse3};
constexpr TextureForm avx2Form{"avx2", colorAvx2, depthAvx2, maskAvx2};

} // namespace

std::span<const VectorTextureForm> vectorTextureForms() {
    // The compiler's query also asks whether the system saves the wide registers.
    static const VectorTextureForm forms[] = {
        {&ssse3Form, __builtin_cpu_supports("ssse3") != 0},
        {&avx2Form, __builtin_cpu_supports("avx2") != 0},
    };
    return forms;
}

} // namespace QVR
