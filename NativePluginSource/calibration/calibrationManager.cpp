#include "calibration/calibrationManager.h"

namespace QVR {

bool calibrationManager::importProjectionMap(const std::string& jsonText, int mapNumber) {
    return projectionMap.set(jsonText, mapNumber);
}

void calibrationManager::calibrateVector(Vector3& point) const {
    if (useDistortionMap) {
        distortionMap.calibrateVector(point);
    }
    if (useProjectionMap) {
        projectionMap.normalizePoint(point);
        projectionMap.transformPoint(point);
    }
}

} // namespace QVR
