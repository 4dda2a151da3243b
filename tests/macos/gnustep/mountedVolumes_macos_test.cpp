// The macOS volume list, compiled for GNUstep's AppKit and fed with volumes of the test's choice.
#include "foundation/mountedVolumes.h"
#include "foundation/utils.h"
#include "macos/gnustep/FixedVolumes.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using gnustep::fixedVolumeLookups;
using gnustep::setFixedVolumes;
using QVR::mountedVolumes;
using QVR::utils;
using support::TemporaryFolder;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const std::string document = "QVR_calibration/touch.json";

} // namespace

TEST(MountedVolumesOfMacos, KeepTheOrderOfTheWorkspace) {
    setFixedVolumes({"/", "/Volumes/b", "/Volumes/a"});
    EXPECT_THAT(mountedVolumes(), ElementsAre("/", "/Volumes/b", "/Volumes/a"));
}

TEST(MountedVolumesOfMacos, MayBeNone) {
    setFixedVolumes({});
    EXPECT_THAT(mountedVolumes(), IsEmpty());
}

TEST(MountedVolumesOfMacos, KeepBlanksInNames) {
    setFixedVolumes({"/Volumes/MY TOUCH DISPLAY", "/Volumes/ two  blanks "});
    EXPECT_THAT(mountedVolumes(),
                ElementsAre("/Volumes/MY TOUCH DISPLAY", "/Volumes/ two  blanks "));
}

TEST(MountedVolumesOfMacos, AreUtf8) {
    const std::vector<std::string> names = {
        "/Volumes/\u00C9cran tactile", // composed
        "/Volumes/E\u0301cran",        // decomposed, as disks carry it
        "/Volumes/\u753B\u9762",       // three bytes a letter
        "/Volumes/\U0001F446",         // beyond 16 bits
    };
    setFixedVolumes(names);
    EXPECT_THAT(mountedVolumes(), ElementsAreArray(names));
}

// The system hands out arrays in batches of sixteen.
TEST(MountedVolumesOfMacos, MayBeMoreThanOneBatch) {
    std::vector<std::string> many;
    for (int number = 0; number < 50; ++number) {
        many.push_back("/Volumes/" + std::to_string(number));
    }
    setFixedVolumes(many);
    EXPECT_THAT(mountedVolumes(), ElementsAreArray(many));
}

TEST(MountedVolumesOfMacos, AreAskedForAnewEachTime) {
    setFixedVolumes({"/Volumes/before"});
    EXPECT_THAT(mountedVolumes(), ElementsAre("/Volumes/before"));
    setFixedVolumes({"/Volumes/after"});
    EXPECT_THAT(mountedVolumes(), ElementsAre("/Volumes/after"));
}

// A host's thread may have no pool, and a host that looks again for days must not grow.
TEST(MountedVolumesOfMacos, LeaveNothingInAThreadWithoutAPool) {
    setFixedVolumes({"/"});
    std::thread([] {
        const gnustep::Lookups before = fixedVolumeLookups();
        mountedVolumes();
        EXPECT_EQ(fixedVolumeLookups().made, before.made + 1);
        EXPECT_EQ(fixedVolumeLookups().released, before.released + 1);
    }).join();
}

TEST(FindFilePathOnMacos, TakesTheCopyOnTheVolumeListedFirst) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    first.write(document, "first");
    second.write(document, "second");
    setFixedVolumes({first.path(), second.path()});
    EXPECT_EQ(utils::findFilePath(document), first.path() + "/" + document);
    setFixedVolumes({second.path(), first.path()});
    EXPECT_EQ(utils::findFilePath(document), second.path() + "/" + document);
}

TEST(FindFilePathOnMacos, PassesOverAVolumeWhoseCopyCannotBeRead) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    std::filesystem::create_directory(first.file("QVR_calibration"));
    std::filesystem::create_symlink(first.file("gone"), first.file(document));
    second.write(document, "second");
    setFixedVolumes({first.path(), second.path()});
    EXPECT_EQ(utils::findFilePath(document), second.path() + "/" + document);
}

TEST(FindFilePathOnMacos, ReturnsItsArgumentWhenNoVolumeHasAReadableCopy) {
    const TemporaryFolder empty;
    setFixedVolumes({empty.path(), "/Volumes/not there"});
    EXPECT_EQ(utils::findFilePath(document), document);
    setFixedVolumes({});
    EXPECT_EQ(utils::findFilePath(document), document);
}

TEST(FindFilePathOnMacos, FindsTheCopyOnADisplayWithABlankAndAnAccentInItsName) {
    const TemporaryFolder folder;
    const std::string display = folder.file("\u00C9cran QVR");
    const std::string copy = folder.write("\u00C9cran QVR/" + document, "content");
    setFixedVolumes({"/Volumes/other", display});
    EXPECT_EQ(utils::findFilePath(document), copy);
    EXPECT_EQ(utils::readFileContent(utils::findFilePath(document)), "content");
}
