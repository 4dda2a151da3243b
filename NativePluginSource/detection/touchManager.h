// Tracks blobs from frame to frame as up to ten touches and hands them out.
#pragma once

#include "detection/cImageBlob.h"
#include "detection/cTouch.h"
#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <serverClient/frameProtocol.h>

namespace json11 {
class Json;
}

namespace QVR {

// A touch's identity is its slot, 0 to 9. A slot is free (confidence -1), tentative or, from
// confidenceThreshold on, reported. Positions are pixel columns, pixel rows and depth units, or
// whatever the calibration makes of them. One thread at a time; nothing allocates after
// construction but the texts.
class QVR_API touchManager {
  public:
    touchManager();

    // Gives each valid blob, in order, the nearest slot that has none yet, however far it is.
    // Once a frame.
    void update(std::array<cImageBlob, 10>& blobs);

    // Moves a slot to a blob's centre and raises its confidence; null logs an error.
    void setBlobToTouch(cTouch* slot, float x, float y, float z);

    // Whether the smoothed position lies within the border clip, the bounds included.
    bool clipTest(cTouch& touch);

    // Fills `touchData` from the slots and starts its reading over.
    void prepareTouchCollection();

    // The next number of the prepared touches: x, y, z of each slot in turn, -1 three times for
    // a slot that is not reported; -9999 once all 30 are read.
    double getTouchData();

    // Points `*out` to ten records, one per slot; they belong to this object and change with the
    // next call. A slot that is not reported has active 0 and x = y = z = -1.
    void getTouches(const NetworkTouch** out);

    // Mean smoothed position of all confident touches, neither clipped nor calibrated; NaN
    // without any.
    void getAveragePos(Vector3& out);

    // Takes confidence threshold and border margins from the calibration document; a missing key
    // keeps the field and logs a warning. The right and bottom fields are then taken from the
    // image size in pixels, found or not: the document holds margins, the fields hold bounds.
    void loadSettings(json11::Json& calibration, int xRes, int yRes);

    // The settings as text, one line each.
    std::string getVariableReadout();

    bool outputCalibratedTouches = true;
    int borderClipLeft = 0;
    int borderClipRight = 640;
    int borderClipTop = 0;
    int borderClipBottom = 480;
    int confidenceThreshold = 2;
    std::array<cTouch, 10> touchSlots;
    std::uint32_t touchDataIndex = 0;
    std::array<double, 30> touchData;
    std::unique_ptr<NetworkTouch[]> networkTouches; // ten records

  private:
    cTouch* nearestUnmatchedSlot(float x, float y, float z);
    cTouch* leastConfidentUnmatchedSlot();
    bool reportedPosition(cTouch& touch, Vector3& position);
};

} // namespace QVR
