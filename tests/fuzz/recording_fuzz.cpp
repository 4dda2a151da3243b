// The texts of a recording, as the camera library and qvr-replay read them.
//
// Input: the length of recording.json in two bytes, then recording.json, then frames.jsonl.
#include "fuzzing.h"
#include "images/recording.h"
#include "recording/RecordedFrames.h"
#include "support/TemporaryFolder.h"

#include <exception>
#include <optional>

namespace {

// How many frames there are; nothing when the reading says why it refuses.
template <typename Read>
std::optional<std::size_t> framesOf(Read&& read) {
    try {
        return read();
    } catch (const std::exception& problem) {
        fuzzing::require(problem.what()[0] != '\0', "a refusal says why");
        return std::nullopt;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const support::TemporaryFolder folder;
    fuzzing::Input input(data, size);
    folder.write("recording.json", input.text(input.number<std::uint16_t>()));
    folder.write("frames.jsonl", input.text(input.left()));
    const auto played =
        framesOf([&] { return camera::readRecording(folder.path())->frames.size(); });
    const auto verified = framesOf([&] {
        recording::RecordedFrames frames(folder.path());
        std::size_t count = 0;
        while (frames.next()) {
            ++count;
        }
        return count;
    });
    fuzzing::require(!played || !verified || *played == *verified,
                     "pictures and touches are of the same frames");
    return 0;
}
