// Hook for a pointing wand beside the fingers: the camera manager calls it at start, once a frame
// and at the end. There is no wand yet, so the hooks do nothing.
#pragma once

#include "foundation/qvrApi.h"

namespace QVR {

class QVR_API cWandManager {
  public:
    static void init();
    static void update();
    static void shutdown();
};

} // namespace QVR
