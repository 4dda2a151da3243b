// Any bytes as each of the settings documents, explained for both roles.
#include "client/plugin.h"
#include "fuzzing.h"
#include "support/TemporaryVolume.h"

#include <cctype>
#include <string_view>

namespace {

int toMend = 0;
std::string last;

void hear(const char* text) {
    const std::string_view line = text;
    for (const char letter : line) {
        fuzzing::require(std::iscntrl(static_cast<unsigned char>(letter)) == 0,
                         "a line holds nothing that a terminal would obey");
    }
    toMend += line.find(": found ") != std::string_view::npos ? 1 : 0;
    last = line;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    fuzzing::swallowMessages();
    const std::string document(reinterpret_cast<const char*>(data), size);
    for (const char* file :
         {"QVR_calibration/touch_client.json", "QVR_calibration/touch.json",
          "QVR_calibration/touch_projectionMap.json", "touch_projectionMap.json"}) {
        volume.write(file, document);
    }
    for (const bool asServer : {false, true}) {
        toMend = 0;
        const int count = checkSettings(volume.path(".").c_str(), asServer, &hear);
        fuzzing::require(count >= 0 && count <= toMend, "what is to mend is reported");
        fuzzing::require(last.find(count == 0 ? ": nothing to mend" : " to mend") !=
                             std::string::npos,
                         "the last line sums up");
    }
    return 0;
}
