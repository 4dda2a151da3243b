// The 256-bit form: sixteen pixels at a time, with AVX2.
//
// The source is built for these instructions and used only after the processor was asked for
// them, so nothing in it may be shared with other sources (see vectorBlocks.h).
#include "detection/vectorCenters.h"
#include "detection/vectorFlatness.h"
#include "detection/vectorRuns.h"

#include <immintrin.h>

namespace QVR {

namespace {

struct Avx2 {
    using Vector = __m256i;
    using Lanes = __m256i; // all bits of a chosen lane are set

    static constexpr std::uint32_t lanes = 16;

    // These instructions compare signed values only, so both sides are moved down by 32768.
    struct Interval {
        Interval(Vector low, Vector high)
            : movedHigh(moveDown(high)), movedSpan(moveDown(_mm256_sub_epi16(high, low))) {}

        Vector movedHigh;
        Vector movedSpan;
    };

    static Vector load(const std::uint16_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const Vector*>(from));
    }
    static void store(Vector value, std::uint16_t* to) {
        _mm256_storeu_si256(reinterpret_cast<Vector*>(to), value);
    }
    static Vector all(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }

    static Vector add(Vector a, Vector b) { return _mm256_add_epi16(a, b); }
    static Vector addHeld(Vector a, Vector b) { return _mm256_adds_epu16(a, b); }
    static Vector subtractHeld(Vector a, Vector b) { return _mm256_subs_epu16(a, b); }
    static Vector moveDown(Vector a) { return _mm256_xor_si256(a, all(0x8000)); }

    static Lanes outside(const Interval& interval, Vector value) {
        return _mm256_cmpgt_epi16(_mm256_sub_epi16(interval.movedHigh, value), interval.movedSpan);
    }
    static Lanes lessThan(Vector small, Vector limit) { return _mm256_cmpgt_epi16(limit, small); }
    static Vector oneLessWhere(Vector a, Lanes where) { return _mm256_add_epi16(a, where); }
    static Vector clearWhere(Vector a, Lanes where) { return _mm256_andnot_si256(where, a); }
    static Vector fillWhere(Vector a, Lanes where) { return _mm256_or_si256(where, a); }

    static Vector multiplyPairs(Vector a, Vector b) { return _mm256_madd_epi16(a, b); }
    static Vector addWide(Vector a, Vector b) { return _mm256_add_epi32(a, b); }

    static Vector least(Vector a, Vector b) { return _mm256_min_epu16(a, b); }

    static Lanes both(Lanes a, Lanes b) { return _mm256_and_si256(a, b); }
    static bool everyLane(const Lanes (&where)[2]) {
        return _mm256_movemask_epi8(_mm256_and_si256(where[0], where[1])) == -1;
    }

    static std::int64_t sumWide(Vector a) {
        const __m128i quarters =
            _mm_add_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
        const __m128i halves = _mm_add_epi32(quarters, _mm_shuffle_epi32(quarters, 0x4e));
        return _mm_cvtsi128_si32(_mm_add_epi32(halves, _mm_shuffle_epi32(halves, 0xb1)));
    }

    static void storeMarks(const Vector (&counts)[2], std::uint8_t* marks) {
        storeBytes(inOrder(_mm256_packus_epi16(counts[0], counts[1])), marks);
    }
    static void storeNoMarks(std::uint8_t* marks) { storeBytes(_mm256_setzero_si256(), marks); }
    static void clearMarks(const Lanes (&where)[2], std::uint8_t* marks) {
        storeBytes(clearWhere(loadBytes(marks), inOrder(_mm256_packs_epi16(where[0], where[1]))),
                   marks);
    }
    static std::uint64_t markBits(const std::uint8_t* marks) {
        const std::uint64_t low = unmarkedBits(marks);
        return ~(low | std::uint64_t{unmarkedBits(marks + 32)} << 32);
    }

  private:
    static Vector loadBytes(const std::uint8_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const Vector*>(from));
    }
    static void storeBytes(Vector value, std::uint8_t* to) {
        _mm256_storeu_si256(reinterpret_cast<Vector*>(to), value);
    }
    // Packing works within each half and leaves the middle quarters swapped.
    static Vector inOrder(Vector packed) { return _mm256_permute4x64_epi64(packed, 0xd8); }
    static std::uint32_t unmarkedBits(const std::uint8_t* marks) {
        const Lanes zero = _mm256_cmpeq_epi8(loadBytes(marks), _mm256_setzero_si256());
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(zero));
    }
};

} // namespace

extern const DetectionKernels avx2Kernels;
const DetectionKernels avx2Kernels{"avx2", findNearestInBlocks<Avx2>, markBlocksUpTo<Avx2>,
                                   findRunsInBits<Avx2>, addChunksToCenter<Avx2>};

} // namespace QVR
