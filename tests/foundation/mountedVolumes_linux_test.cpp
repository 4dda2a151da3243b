#include "foundation/mountedVolumes.h"
#include "foundation/mountedVolumes_linux.h"
#include "foundation/utils.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using QVR::utils;
using support::ScopedEnvironment;
using support::TemporaryFolder;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

// A name that no real volume carries, so that only the test's own folders can answer.
const std::string onlyOurs = "QVR_calibration/only-here-8f21c7.json";

std::vector<std::string> pointsOf(const std::string& table) {
    const TemporaryFolder folder;
    return QVR::localMountPoints(folder.write("mounts", table).c_str());
}

} // namespace

TEST(LocalMountPoints, ListTheRootFirstWhereverItStands) {
    EXPECT_THAT(pointsOf("/dev/sdb1 /home ext4 rw 0 0\n"
                         "/dev/sda1 / ext4 rw 0 0\n"
                         "/dev/sdc1 /data xfs rw 0 0\n"),
                ElementsAre("/", "/home", "/data"));
    EXPECT_THAT(pointsOf("overlay / overlay rw,lowerdir=/a 0 0\n"), ElementsAre("/"));
}

TEST(LocalMountPoints, ListTheDisplaysVolumeAndOtherBlockDevices) {
    EXPECT_THAT(pointsOf("/dev/mapper/root / ext4 rw 0 0\n"
                         "/dev/sdb1 /media/user/DISPLAY vfat rw,uid=1000 0 0\n"
                         "/dev/sdc1 /media/user/NTFS fuseblk rw 0 0\n"
                         "/dev/sr0 /media/cdrom iso9660 ro 0 0\n"),
                ElementsAre("/", "/media/user/DISPLAY", "/media/user/NTFS", "/media/cdrom"));
}

TEST(LocalMountPoints, DecodeBlanksInNames) {
    EXPECT_THAT(pointsOf("/dev/sdb1 /media/user/MY\\040TOUCH\\040DISPLAY vfat rw 0 0\n"
                         "/dev/sdc1 /media/a\\011tab\\134slash vfat rw 0 0\n"),
                ElementsAre("/", "/media/user/MY TOUCH DISPLAY", "/media/a\ttab\\slash"));
}

TEST(LocalMountPoints, LeaveOutNetworkFileSystems) {
    EXPECT_THAT(pointsOf("server:/export /mnt/nfs nfs4 rw 0 0\n"
                         "//server/share /mnt/cifs cifs rw 0 0\n"
                         "user@host:/ /mnt/ssh fuse.sshfs rw 0 0\n"
                         "10.0.0.1:6789:/ /mnt/ceph ceph rw 0 0\n"),
                ElementsAre("/"));
}

TEST(LocalMountPoints, LeaveOutFileSystemsInUserSpaceThatNameADevice) {
    EXPECT_THAT(pointsOf("/dev/fuse /run/user/1000/doc fuse rw 0 0\n"
                         "/dev/sdb1 /mnt/remote fuse.sshfs rw 0 0\n"),
                ElementsAre("/"));
}

TEST(LocalMountPoints, LeaveOutPseudoFileSystems) {
    EXPECT_THAT(pointsOf("proc /proc proc rw 0 0\n"
                         "sysfs /sys sysfs rw 0 0\n"
                         "udev /dev devtmpfs rw 0 0\n"
                         "devpts /dev/pts devpts rw 0 0\n"
                         "tmpfs /run tmpfs rw 0 0\n"
                         "cgroup2 /sys/fs/cgroup cgroup2 rw 0 0\n"
                         "systemd-1 /efi autofs rw 0 0\n"),
                ElementsAre("/"));
}

TEST(LocalMountPoints, NameAPointOnceWhereItsLastMountStands) {
    EXPECT_THAT(pointsOf("/dev/sdb1 /mnt/a vfat rw 0 0\n"
                         "/dev/sdc1 /mnt/b vfat rw 0 0\n"
                         "/dev/sdd1 /mnt/a vfat rw 0 0\n"
                         "/dev/sda1 / ext4 rw 0 0\n"
                         "/dev/sda2 / ext4 rw 0 0\n"),
                ElementsAre("/", "/mnt/b", "/mnt/a"));
}

TEST(LocalMountPoints, LeaveOutAPointThatALaterNetworkMountHides) {
    EXPECT_THAT(pointsOf("/dev/sdb1 /mnt/a vfat rw 0 0\n"
                         "server:/export /mnt/a nfs rw 0 0\n"),
                ElementsAre("/"));
}

TEST(LocalMountPoints, ReadPastOptionsLongerThanAnyBuffer) {
    EXPECT_THAT(pointsOf("overlay / overlay lowerdir=" + std::string(20000, 'x') +
                         " 0 0\n"
                         "/dev/sdb1 /mnt/a vfat rw 0 0\n"),
                ElementsAre("/", "/mnt/a"));
}

TEST(LocalMountPoints, AreTheRootAloneWithoutATable) {
    const TemporaryFolder folder;
    EXPECT_THAT(QVR::localMountPoints((folder.path() + "/none").c_str()), ElementsAre("/"));
    EXPECT_THAT(pointsOf(""), ElementsAre("/"));
}

TEST(MountedVolumes, AreThisMachinesMountPoints) {
    const ScopedEnvironment none("QVR_VOLUMES", nullptr);
    const std::vector<std::string> volumes = QVR::mountedVolumes();
    EXPECT_EQ(volumes.front(), "/");
    EXPECT_EQ(std::count(volumes.begin(), volumes.end(), "/proc"), 0);
    EXPECT_THAT(volumes, ElementsAreArray(QVR::localMountPoints("/proc/self/mounts")));
}

TEST(MountedVolumes, HaveTheNamedRootsInFront) {
    const ScopedEnvironment roots("QVR_VOLUMES", "/some/folder:/another one");
    const std::vector<std::string> volumes = QVR::mountedVolumes();
    ASSERT_GE(volumes.size(), 3u);
    EXPECT_EQ(volumes[0], "/some/folder");
    EXPECT_EQ(volumes[1], "/another one");
    EXPECT_EQ(volumes[2], "/");
}

TEST(MountedVolumes, HaveNoEmptyRoots) {
    for (const char* value : {"", ":", "::"}) {
        const ScopedEnvironment roots("QVR_VOLUMES", value);
        EXPECT_EQ(QVR::mountedVolumes().front(), "/") << value;
    }
}

TEST(FindFilePath, TakesTheCopyOnTheVolumeListedFirst) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    first.write(onlyOurs, "first");
    second.write(onlyOurs, "second");
    {
        const ScopedEnvironment roots("QVR_VOLUMES", (first.path() + ":" + second.path()).c_str());
        EXPECT_EQ(utils::findFilePath(onlyOurs), first.path() + "/" + onlyOurs);
    }
    const ScopedEnvironment roots("QVR_VOLUMES", (second.path() + ":" + first.path()).c_str());
    EXPECT_EQ(utils::findFilePath(onlyOurs), second.path() + "/" + onlyOurs);
}

TEST(FindFilePath, PassesOverAVolumeWhoseCopyCannotBeRead) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    std::filesystem::create_directory(first.path() + "/QVR_calibration");
    std::filesystem::create_symlink(first.path() + "/gone", first.path() + "/" + onlyOurs);
    second.write(onlyOurs, "second");
    const ScopedEnvironment roots("QVR_VOLUMES", (first.path() + ":" + second.path()).c_str());
    EXPECT_EQ(utils::findFilePath(onlyOurs), second.path() + "/" + onlyOurs);
}

TEST(FindFilePath, NormalisesNothing) {
    const TemporaryFolder folder;
    folder.write(onlyOurs, "content");
    const std::string root = folder.path() + "/";
    const ScopedEnvironment roots("QVR_VOLUMES", root.c_str());
    EXPECT_EQ(utils::findFilePath("./" + onlyOurs), root + "/./" + onlyOurs);
}
