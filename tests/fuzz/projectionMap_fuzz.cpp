// The projection map document, and points through whatever map it gives.
#include "calibration/calibrationManager.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::swallowMessages();
    const std::string document(reinterpret_cast<const char*>(data), size);
    QVR::calibrationManager calibration;
    for (const int number : {0, 1, -1}) {
        const bool before = calibration.projectionMap.valid;
        const bool taken = calibration.importProjectionMap(document, number);
        fuzzing::require(calibration.projectionMap.valid == (before || taken),
                         "a map is there once one has been taken");
        for (const double place : {-1.0, 0.0, 320.5, 1e300}) {
            QVR::Vector3 point{place, place, place};
            calibration.calibrateVector(point);
        }
    }
    return 0;
}
