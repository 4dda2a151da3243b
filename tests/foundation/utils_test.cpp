#include "foundation/utils.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <filesystem>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using QVR::utils;
using support::LogCapture;
using support::TemporaryFolder;
using testing::ElementsAre;

namespace {

constexpr float nanFloat = std::numeric_limits<float>::quiet_NaN();

// A file that no volume carries.
const std::string nowhere = "QVR_calibration/nowhere-8f21c7.json";

} // namespace

TEST(CalibrationFiles, HaveTheNamesThatDevicesCarry) {
    EXPECT_EQ(utils::distortionMapFileName, "touch.json");
    EXPECT_EQ(utils::projectionMapFileName, "touch_projectionMap.json");
    EXPECT_EQ(utils::clientSettingsFileName, "touch_client.json");
    EXPECT_EQ(utils::calibrationFileDir, "QVR_calibration");
    EXPECT_EQ(utils::distortionMapFilePath, "QVR_calibration/touch.json");
    EXPECT_EQ(utils::projectionMapFilePath, "QVR_calibration/touch_projectionMap.json");
    EXPECT_EQ(utils::clientSettingsFilePath, "QVR_calibration/touch_client.json");
}

TEST(FindFilePath, PutsASlashBehindEvenTheRootVolume) {
    const TemporaryFolder folder;
    const std::string file = folder.write("touch.json", "{}");
    EXPECT_EQ(utils::findFilePath(file.substr(1)), "/" + file);
}

TEST(FindFilePath, ReturnsItsArgumentWhenNoVolumeHasACopy) {
    const LogCapture log;
    EXPECT_EQ(utils::findFilePath(nowhere), nowhere);
    EXPECT_EQ(utils::findFilePath("no/../such//path"), "no/../such//path");
    EXPECT_TRUE(LogCapture::messages().empty());
}

TEST(ReadFileContent, ReadsEveryByte) {
    const TemporaryFolder folder;
    std::string content = "first line\nsecond\r\n\n";
    content += '\0';
    content += "\xFF last line without an end";
    EXPECT_EQ(utils::readFileContent(folder.write("file", content)), content);
    EXPECT_EQ(utils::readFileContent(folder.write("empty", "")), "");
}

TEST(ReadFileContent, ReadsFilesLargerThanItsBuffer) {
    const TemporaryFolder folder;
    for (const std::size_t size : {65535u, 65536u, 65537u, 300000u}) {
        std::string content(size, 'x');
        content.front() = 'a';
        content.back() = 'z';
        EXPECT_EQ(utils::readFileContent(folder.write("file", content)), content);
    }
}

TEST(ReadFileContent, IsEmptyWithoutAMessageForAMissingFile) {
    const LogCapture log;
    EXPECT_EQ(utils::readFileContent(nowhere), "");
    EXPECT_EQ(utils::readFileContent(""), "");
    EXPECT_TRUE(LogCapture::messages().empty());
}

TEST(ReadFileContent, IsEmptyForADanglingLink) {
    const TemporaryFolder folder;
    const std::string link = folder.path() + "/link";
    std::filesystem::create_symlink(folder.path() + "/gone", link);
    EXPECT_EQ(utils::readFileContent(link), "");
}

TEST(ReadFileContent, IsEmptyForAFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(utils::readFileContent(folder.path()), "");
}

// Anybody can put one in the place of a document on a volume of theirs.
TEST(ReadFileContent, IsEmptyForAPipeOrDevice) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(utils::readFileContent(pipe), "");
    const std::string endless = folder.path() + "/endless";
    std::filesystem::create_symlink("/dev/zero", endless);
    EXPECT_EQ(utils::readFileContent(endless), "");
}

TEST(ReadFileContent, IsEmptyForAFileThatNoDocumentIsAsLargeAs) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "{}");
    constexpr std::size_t largest = 64 << 20;
    std::filesystem::resize_file(file, largest);
    EXPECT_EQ(utils::readFileContent(file).size(), largest);
    std::filesystem::resize_file(file, largest + 1);
    EXPECT_EQ(utils::readFileContent(file), "");
}

TEST(ReadFileContent, IsEmptyForAFileWithoutReadPermission) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read every file";
    }
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "secret");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_EQ(utils::readFileContent(file), "");
}

TEST(Split, GivesThePiecesBetweenDelimiters) {
    EXPECT_THAT(utils::split("a,b", ','), ElementsAre("a", "b"));
    EXPECT_THAT(utils::split("a;b,c", ';'), ElementsAre("a", "b,c"));
    EXPECT_THAT(utils::split("abc", ','), ElementsAre("abc"));
}

TEST(Split, KeepsEmptyPieces) {
    EXPECT_THAT(utils::split("a,,b", ','), ElementsAre("a", "", "b"));
    EXPECT_THAT(utils::split("a,", ','), ElementsAre("a", ""));
    EXPECT_THAT(utils::split(",a", ','), ElementsAre("", "a"));
    EXPECT_THAT(utils::split(",", ','), ElementsAre("", ""));
}

TEST(Split, GivesOneEmptyPieceForAnEmptyText) {
    EXPECT_THAT(utils::split("", ','), ElementsAre(""));
}

TEST(Split, StopsAtTheEndWhenTheDelimiterIsNul) {
    EXPECT_THAT(utils::split("a,b", '\0'), ElementsAre("a,b"));
}

TEST(InverseLerp, GivesThePlaceBetweenBothEnds) {
    EXPECT_EQ(utils::inverseLerp(0, 10, 5), 0.5);
    EXPECT_EQ(utils::inverseLerp(10, 0, 2.5), 0.75);
    EXPECT_EQ(utils::inverseLerp(-2, 2, -2), 0.0);
}

TEST(InverseLerp, IsNotClamped) {
    EXPECT_EQ(utils::inverseLerp(0, 10, 15), 1.5);
    EXPECT_EQ(utils::inverseLerp(0, 10, -5), -0.5);
}

TEST(InverseLerp, IsZeroForAnEmptyRange) {
    EXPECT_EQ(utils::inverseLerp(2, 2, 5), 0.0);
}

TEST(Clip, BoundsTheValue) {
    EXPECT_EQ(utils::clip(5, 0, 1), 1.0f);
    EXPECT_EQ(utils::clip(-1, 0, 1), 0.0f);
    EXPECT_EQ(utils::clip(0.25f, 0, 1), 0.25f);
}

TEST(Clip, LetsTheUpperBoundWinOverTheLower) {
    EXPECT_EQ(utils::clip(0.5f, 1, 0), 0.0f);
    EXPECT_EQ(utils::clip(-5, 1, 0), 0.0f);
    EXPECT_EQ(utils::clip(5, 1, 0), 0.0f);
}

TEST(Clip, LetsNaNThrough) {
    EXPECT_TRUE(std::isnan(utils::clip(nanFloat, 0, 1)));
    EXPECT_EQ(utils::clip(0.5f, nanFloat, 1), 0.5f);
    EXPECT_EQ(utils::clip(0.5f, 0, nanFloat), 0.5f);
}

TEST(Clamp01, BoundsTheValue) {
    EXPECT_EQ(utils::clamp01(-0.1), 0.0);
    EXPECT_EQ(utils::clamp01(1.7), 1.0);
    EXPECT_EQ(utils::clamp01(0.3), 0.3);
    EXPECT_EQ(utils::clamp01(0.0), 0.0);
    EXPECT_EQ(utils::clamp01(1.0), 1.0);
}

TEST(Clamp01, LetsNaNThrough) {
    EXPECT_TRUE(std::isnan(utils::clamp01(std::numeric_limits<double>::quiet_NaN())));
}
