// Every form of the detection's inner functions that must equal the literal algorithm. A new form
// is one more entry: all comparisons then run on it.
#pragma once

#include "detection/blobRuns.h"
#include "detection/centerSums.h"
#include "detection/flatnessMask.h"

#include <vector>

namespace literal {

struct DetectionVariant {
    const char* name;
    decltype(&QVR::markFlatPixels) markFlatPixels;
    decltype(&QVR::clearBeyondCut) clearBeyondCut;
    decltype(&QVR::findRuns) findRuns;
    decltype(&QVR::addRowToCenter) addRowToCenter;
};

inline std::vector<DetectionVariant> detectionVariants() {
    return {{"plain", &QVR::markFlatPixels, &QVR::clearBeyondCut, &QVR::findRuns,
             &QVR::addRowToCenter}};
}

} // namespace literal
