// The vector forms that the build has for its kind of processor.
#pragma once

#include "detection/detectionKernels.h"

#include <span>

namespace QVR {

struct VectorForm {
    const DetectionKernels* kernels;
    bool supported; // by the processor and the system this runs on
};

// From the narrowest to the widest, which is the order from slow to fast.
std::span<const VectorForm> vectorForms();

} // namespace QVR
