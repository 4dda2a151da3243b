#include "foundation/mountedVolumes_linux.h"

#include "foundation/mountedVolumes.h"
#include "foundation/utils.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include <mntent.h>

namespace QVR {

namespace {

// Network and pseudo file systems name a host, a share or themselves as their source. A file
// system in user space may name anything, and may hang like a network mount; only those on a block
// device ("fuseblk") are trusted.
bool isOnLocalBlockDevice(const mntent& entry) {
    const std::string_view source = entry.mnt_fsname;
    const std::string_view type = entry.mnt_type;
    return source.starts_with("/dev/") && type != "fuse" && !type.starts_with("fuse.");
}

} // namespace

std::vector<std::string> localMountPoints(const char* tablePath) {
    std::vector<std::string> points{"/"};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(setmntent(tablePath, "r"),
                                                                endmntent);
    if (table == nullptr) {
        return points;
    }
    mntent entry{};
    std::array<char, 8192> line;
    while (getmntent_r(table.get(), &entry, line.data(), static_cast<int>(line.size())) !=
           nullptr) {
        const std::string point = entry.mnt_dir;
        if (point == points.front()) {
            continue;
        }
        // A later mount on the same point hides the earlier one.
        std::erase(points, point);
        if (isOnLocalBlockDevice(entry)) {
            points.push_back(point);
        }
    }
    return points;
}

std::vector<std::string> mountedVolumes() {
    std::vector<std::string> volumes;
    if (const char* roots = std::getenv("QVR_VOLUMES")) {
        volumes = utils::split(roots, ':');
        std::erase(volumes, "");
    }
    for (std::string& point : localMountPoints("/proc/self/mounts")) {
        volumes.push_back(std::move(point));
    }
    return volumes;
}

} // namespace QVR
