// The 512-bit form: a whole block of 32 pixels at a time, with AVX-512 (F, BW, VL).
//
// The source is built for these instructions and used only after the processor was asked for
// them, so nothing in it may be shared with other sources (see vectorBlocks.h).
#include "detection/vectorCenters.h"
#include "detection/vectorFlatness.h"
#include "detection/vectorRuns.h"

#include <immintrin.h>

namespace QVR {

namespace {

struct Avx512 {
    using Vector = __m512i;
    using Lanes = __mmask32;

    static constexpr std::uint32_t lanes = 32;

    struct Interval {
        Interval(Vector low, Vector end) : high(end), span(_mm512_sub_epi16(end, low)) {}

        Vector high;
        Vector span;
    };

    static Vector load(const std::uint16_t* from) { return _mm512_loadu_si512(from); }
    static void store(Vector value, std::uint16_t* to) { _mm512_storeu_si512(to, value); }
    static Vector all(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }

    static Vector add(Vector a, Vector b) { return _mm512_add_epi16(a, b); }
    static Vector addHeld(Vector a, Vector b) { return _mm512_adds_epu16(a, b); }
    static Vector subtractHeld(Vector a, Vector b) { return _mm512_subs_epu16(a, b); }
    static Vector moveDown(Vector a) { return _mm512_xor_si512(a, all(0x8000)); }
    static Vector least(Vector a, Vector b) { return _mm512_min_epu16(a, b); }

    static Lanes outside(const Interval& interval, Vector value) {
        return _mm512_cmpgt_epu16_mask(_mm512_sub_epi16(interval.high, value), interval.span);
    }
    static Lanes lessThan(Vector small, Vector limit) {
        return _mm512_cmplt_epu16_mask(small, limit);
    }
    static Lanes both(Lanes a, Lanes b) { return a & b; }
    static bool everyLane(const Lanes (&where)[1]) { return where[0] == 0xffffffff; }
    static Vector oneLessWhere(Vector a, Lanes where) {
        return _mm512_mask_add_epi16(a, where, a, all(-1));
    }
    static Vector clearWhere(Vector a, Lanes where) {
        return _mm512_mask_mov_epi16(a, where, all(0));
    }
    static Vector fillWhere(Vector a, Lanes where) {
        return _mm512_mask_mov_epi16(a, where, all(-1));
    }

    static Vector multiplyPairs(Vector a, Vector b) { return _mm512_madd_epi16(a, b); }
    static Vector addWide(Vector a, Vector b) { return _mm512_add_epi32(a, b); }
    static std::int64_t sumWide(Vector a) { return _mm512_reduce_add_epi32(a); }

    static void storeMarks(const Vector (&counts)[1], std::uint8_t* marks) {
        storeBytes(_mm512_cvtepi16_epi8(counts[0]), marks);
    }
    static void storeNoMarks(std::uint8_t* marks) { storeBytes(_mm256_setzero_si256(), marks); }
    static void clearMarks(const Lanes (&where)[1], std::uint8_t* marks) {
        const __m256i zero = _mm256_setzero_si256();
        storeBytes(_mm256_mask_mov_epi8(loadBytes(marks), where[0], zero), marks);
    }
    static std::uint64_t markBits(const std::uint8_t* marks) {
        const Vector bytes = _mm512_loadu_si512(marks);
        return _mm512_test_epi8_mask(bytes, bytes);
    }

  private:
    static __m256i loadBytes(const std::uint8_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    static void storeBytes(__m256i value, std::uint8_t* to) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
    }
};

} // namespace

extern const DetectionKernels avx512Kernels;
const DetectionKernels avx512Kernels{"avx512", findNearestInBlocks<Avx512>, markBlocksUpTo<Avx512>,
                                     findRunsInBits<Avx512>, addChunksToCenter<Avx512>};

} // namespace QVR
