// The macOS volume list on this machine's real volumes, as GNUstep's workspace finds them.
#include "foundation/mountedVolumes.h"

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mntent.h>

namespace {

std::set<std::string> everyMountPoint() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(setmntent("/proc/self/mounts", "r"),
                                                                endmntent);
    std::set<std::string> points;
    while (const mntent* entry = getmntent(table.get())) {
        points.insert(entry->mnt_dir);
    }
    return points;
}

} // namespace

TEST(MountedVolumesOfMacos, AreMountPointsOfThisMachine) {
    const std::vector<std::string> volumes = QVR::mountedVolumes();
    EXPECT_THAT(volumes, testing::Contains("/"));
    EXPECT_THAT(everyMountPoint(), testing::IsSupersetOf(volumes));
}
