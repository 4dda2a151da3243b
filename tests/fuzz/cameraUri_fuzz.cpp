// The text that chooses a camera source.
#include "fuzzing.h"
#include "source_uri.h"

#include <exception>

namespace {

// A folder or file named by the fuzzer is somebody's; the target imageFolder has one of its own.
bool namesAFile(const camera::SourceOptions& options) {
    return (options.scheme() == "images" || options.scheme() == "bag") &&
           !options.positional().empty();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string uri(reinterpret_cast<const char*>(data), size);
    try {
        if (namesAFile(camera::parseSourceUri(uri))) {
            return 0;
        }
        const auto source = camera::makeSource(uri);
        if (!source) {
            return 0; // a connected camera, and none is
        }
        const camera::CameraGeometry geometry = source->configure({}, {});
        fuzzing::require(geometry.depth.width > 0 && geometry.depth.height > 0 &&
                             geometry.framerate > 0,
                         "a camera that can be chosen has pictures");
    } catch (const std::exception& problem) {
        fuzzing::require(problem.what()[0] != '\0', "a refusal says why");
    }
    return 0;
}
