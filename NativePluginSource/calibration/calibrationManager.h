// Both maps of a device and their use on a touch: from measured to corrected camera space through
// the distortion map, from there to display space through the projection map.
#pragma once

#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"

#include <string>

namespace QVR {

// One thread at a time: an import replaces what calibrateVector reads.
class QVR_API calibrationManager {
  public:
    // Takes map `mapNumber` of a projection map document; see calibrationCell::set. False keeps
    // the earlier map.
    bool importProjectionMap(const std::string& jsonText, int mapNumber);

    // Maps a position in place through the maps that are switched on. Until a projection map is
    // imported the projection makes every point (0, 0, 0). A point that the distortion map marks
    // as unusable, (-1, -1, -1), is projected like any other. Allocates nothing.
    void calibrateVector(Vector3& point) const;

    calibrationBlock distortionMap;
    bool useDistortionMap = true;
    bool useProjectionMap = true;
    calibrationCell projectionMap;
};

} // namespace QVR
