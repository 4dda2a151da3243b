// The calibration document as a client takes it: from a volume when it connects, from the host
// afterwards.
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "fuzzing.h"
#include "scriptedNetwork.h"
#include "support/TemporaryVolume.h"
#include "support/streamBytes.h"

#include <limits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    fuzzing::swallowMessages();
    const std::string document(reinterpret_cast<const char*>(data), size);
    volume.write("QVR_calibration/touch.json", document);
    fuzzing::network() = {};
    fuzzing::network().bytes = support::bytesOf(support::touchesOnlyHeader());

    initClientWithCustomServer("camera", 27016);
    setCalibration(document.c_str());
    setCalibrationAsString(document);
    constexpr float huge = std::numeric_limits<float>::max();
    for (const float place : {-1.0F, 0.0F, 0.5F, 100.0F, 640.0F, huge}) {
        applyCalibrationToCoord(place, place, place);
        applyCalibrationToCoord(place, 3.0F, 500.0F);
    }
    shutDown();
    return 0;
}
