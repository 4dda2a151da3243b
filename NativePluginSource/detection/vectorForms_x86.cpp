#include "detection/vectorForms.h"

namespace QVR {

extern const DetectionKernels sseKernels;
extern const DetectionKernels avx2Kernels;
extern const DetectionKernels avx512Kernels;

std::span<const VectorForm> vectorForms() {
    // 64-bit x86 always has the 128-bit form's instructions. The compiler's query also asks
    // whether the system saves the wide registers.
    static const VectorForm forms[] = {
        {&sseKernels, true},
        {&avx2Kernels, __builtin_cpu_supports("avx2") != 0},
        {&avx512Kernels, __builtin_cpu_supports("avx512f") != 0 &&
                             __builtin_cpu_supports("avx512bw") != 0 &&
                             __builtin_cpu_supports("avx512vl") != 0},
    };
    return forms;
}

} // namespace QVR
