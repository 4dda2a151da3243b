// The 128-bit form: eight pixels at a time, with what every 64-bit x86 processor has.
//
// The source is built for these instructions and used only after the processor was asked for
// them, so nothing in it may be shared with other sources (see vectorBlocks.h).
#include "detection/vectorCenters.h"
#include "detection/vectorFlatness.h"
#include "detection/vectorRuns.h"

#include <immintrin.h>

namespace QVR {

namespace {

struct Sse {
    using Vector = __m128i;
    using Lanes = __m128i; // all bits of a chosen lane are set

    static constexpr std::uint32_t lanes = 8;

    // These instructions compare signed values only, so both sides are moved down by 32768.
    struct Interval {
        Interval(Vector low, Vector high)
            : movedHigh(moveDown(high)), movedSpan(moveDown(_mm_sub_epi16(high, low))) {}

        Vector movedHigh;
        Vector movedSpan;
    };

    static Vector load(const std::uint16_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const Vector*>(from));
    }
    static void store(Vector value, std::uint16_t* to) {
        _mm_storeu_si128(reinterpret_cast<Vector*>(to), value);
    }
    static Vector all(int value) { return _mm_set1_epi16(static_cast<short>(value)); }

    static Vector add(Vector a, Vector b) { return _mm_add_epi16(a, b); }
    static Vector addHeld(Vector a, Vector b) { return _mm_adds_epu16(a, b); }
    static Vector subtractHeld(Vector a, Vector b) { return _mm_subs_epu16(a, b); }
    static Vector moveDown(Vector a) { return _mm_xor_si128(a, all(0x8000)); }

    static Lanes outside(const Interval& interval, Vector value) {
        return _mm_cmpgt_epi16(_mm_sub_epi16(interval.movedHigh, value), interval.movedSpan);
    }
    static Lanes lessThan(Vector small, Vector limit) { return _mm_cmpgt_epi16(limit, small); }
    static Vector oneLessWhere(Vector a, Lanes where) { return _mm_add_epi16(a, where); }
    static Vector clearWhere(Vector a, Lanes where) { return _mm_andnot_si128(where, a); }
    static Vector fillWhere(Vector a, Lanes where) { return _mm_or_si128(where, a); }

    static Vector multiplyPairs(Vector a, Vector b) { return _mm_madd_epi16(a, b); }
    static Vector addWide(Vector a, Vector b) { return _mm_add_epi32(a, b); }

    // There is no unsigned minimum, but what is left of a - b where a is larger.
    static Vector least(Vector a, Vector b) { return _mm_sub_epi16(a, _mm_subs_epu16(a, b)); }

    static Lanes both(Lanes a, Lanes b) { return _mm_and_si128(a, b); }
    static bool everyLane(const Lanes (&where)[4]) {
        const Lanes all =
            _mm_and_si128(_mm_and_si128(where[0], where[1]), _mm_and_si128(where[2], where[3]));
        return _mm_movemask_epi8(all) == 0xffff;
    }

    static std::int64_t sumWide(Vector a) {
        const Vector halves = _mm_add_epi32(a, _mm_shuffle_epi32(a, 0x4e));
        return _mm_cvtsi128_si32(_mm_add_epi32(halves, _mm_shuffle_epi32(halves, 0xb1)));
    }

    static void storeMarks(const Vector (&counts)[4], std::uint8_t* marks) {
        storeBytes(_mm_packus_epi16(counts[0], counts[1]), marks);
        storeBytes(_mm_packus_epi16(counts[2], counts[3]), marks + 16);
    }
    static void storeNoMarks(std::uint8_t* marks) {
        storeBytes(_mm_setzero_si128(), marks);
        storeBytes(_mm_setzero_si128(), marks + 16);
    }
    static void clearMarks(const Lanes (&where)[4], std::uint8_t* marks) {
        storeBytes(clearWhere(loadBytes(marks), _mm_packs_epi16(where[0], where[1])), marks);
        storeBytes(clearWhere(loadBytes(marks + 16), _mm_packs_epi16(where[2], where[3])),
                   marks + 16);
    }
    static std::uint64_t markBits(const std::uint8_t* marks) {
        std::uint64_t unmarked = 0;
        for (int part = 0; part < 4; ++part) {
            const Lanes zero = _mm_cmpeq_epi8(loadBytes(marks + 16 * part), _mm_setzero_si128());
            unmarked |= std::uint64_t{static_cast<std::uint16_t>(_mm_movemask_epi8(zero))}
                        << (16 * part);
        }
        return ~unmarked;
    }

  private:
    static Vector loadBytes(const std::uint8_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const Vector*>(from));
    }
    static void storeBytes(Vector value, std::uint8_t* to) {
        _mm_storeu_si128(reinterpret_cast<Vector*>(to), value);
    }
};

} // namespace

extern const DetectionKernels sseKernels;
const DetectionKernels sseKernels{"sse", findNearestInBlocks<Sse>, markBlocksUpTo<Sse>,
                                  findRunsInBits<Sse>, addChunksToCenter<Sse>};

} // namespace QVR
