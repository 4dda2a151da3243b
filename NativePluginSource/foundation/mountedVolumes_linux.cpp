#include "foundation/mountedVolumes.h"

#include <cstdlib>

#include <mntent.h>

#include "foundation/utils.h"

namespace QVR {

std::vector<std::string> mountedVolumes() {
    std::vector<std::string> volumes;
    if (const char* extra = std::getenv("QVR_VOLUMES")) {
        volumes = utils::split(extra, ':');
    }
    volumes.emplace_back("/");
    return volumes;
}

} // namespace QVR
