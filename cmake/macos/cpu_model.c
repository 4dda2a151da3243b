/* What __builtin_cpu_supports reads on 64-bit x86. It is part of the runtime library of Apple's and
 * LLVM's compilers, which the macOS build on other systems is without.
 *
 * Holds the features that our vector forms ask for; any other counts as absent. */
#include <cpuid.h>

struct {
    unsigned vendor;
    unsigned type;
    unsigned subtype;
    unsigned features[1];
} __cpu_model;

/* Positions in `features` as the compilers know them. */
enum { ssse3 = 6, avx2 = 10, avx512f = 15, avx512vl = 20, avx512bw = 21 };

static void add(unsigned reported, unsigned wanted, int feature) {
    if (reported & wanted) {
        __cpu_model.features[0] |= 1U << feature;
    }
}

static unsigned savedRegisters(void) {
    unsigned low = 0;
    unsigned high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

__attribute__((constructor(101))) static void readFeatures(void) {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d)) {
        return;
    }
    add(c, bit_SSSE3, ssse3);

    /* Wide registers are of use only where the system saves them: 2 is the 128-bit part, 4 the
     * 256-bit part. macOS begins to save the 512-bit part when it is used first, so that is not
     * to be asked for. */
    const unsigned wide = 2U | 4U;
    if (!(c & bit_OSXSAVE) || (savedRegisters() & wide) != wide ||
        !__get_cpuid_count(7, 0, &a, &b, &c, &d)) {
        return;
    }
    add(b, bit_AVX2, avx2);
    add(b, bit_AVX512F, avx512f);
    add(b, bit_AVX512VL, avx512vl);
    add(b, bit_AVX512BW, avx512bw);
}
