// The client's settings file, up to the first tries to connect to whatever server it names.
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "fuzzing.h"
#include "scriptedNetwork.h"
#include "support/TemporaryVolume.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    fuzzing::swallowMessages();
    volume.write("QVR_calibration/touch_client.json",
                 std::string(reinterpret_cast<const char*>(data), size));
    fuzzing::network() = {};
    fuzzing::network().reachable = false;
    printDebug(true);

    init();
    fuzzing::require(update() == -2, "there is no connection");
    shutDown();
    return 0;
}
