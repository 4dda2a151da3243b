#include "images/recording.h"
#include "recording/RecordingError.h"
#include "recording/RecordingFolder.h"
#include "source_uri.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

using recording::Description;
using recording::FrameInfo;
using recording::RecordingError;
using recording::RecordingFolder;
namespace fs = std::filesystem;

namespace {

constexpr int width = 33;
constexpr int height = 21;

Description someCamera() {
    Description description;
    description.recorder = "a test";
    description.uri = "simulated";
    description.fps = 30;
    description.depthScale = 0.000125F;
    description.depth = {width,
                         height,
                         312.1331F,
                         245.4561F,
                         475.7311F,
                         476.01F,
                         RS_DISTORTION_INVERSE_BROWN_CONRADY,
                         {0.1F, 0.2F, 0.3F, 0.0F, 1.0F}};
    description.color = {width * 2, height, 1.1F, 0.7F, 616.12F, 617.5F, RS_DISTORTION_NONE, {}};
    description.depthToColor = {{1, 0, 0, 0, 0, 1, 0, -1, 0}, {0.0255F, -0.1F, 0.7F}};
    description.detectionForm = "plain";
    return description;
}

// Every value that a sample can have, over some frames.
std::vector<std::uint16_t> depthOf(int frame) {
    std::vector<std::uint16_t> samples(width * height);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] =
            static_cast<std::uint16_t>(i * 97 + static_cast<std::size_t>(frame) * 7919 + 1);
    return samples;
}

std::vector<std::uint8_t> colorOf(int frame) {
    std::vector<std::uint8_t> bytes(width * 2 * height * 3);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 31 + static_cast<std::size_t>(frame) * 59 + 1);
    return bytes;
}

std::string content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string problemOf(const std::string& path) {
    try {
        const RecordingFolder folder{path};
        return "";
    } catch (const RecordingError& error) {
        return error.what();
    }
}

class RecordingFolderTest : public testing::Test {
  protected:
    std::string path() const { return folder.file("a/recording"); }
    static void write(RecordingFolder& recording, int frame) {
        FrameInfo info;
        info.number = static_cast<std::uint64_t>(frame + 100);
        info.seconds = 0.25 * frame;
        recording.write(info, {depthOf(frame), colorOf(frame)});
    }

    support::TemporaryFolder folder;
};

// Files of this process may be no larger while this lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int);
};

} // namespace

TEST_F(RecordingFolderTest, IsWhatTheCameraLibraryPlays) {
    const Description description = someCamera();
    {
        RecordingFolder recording{path()};
        recording.begin(description, {});
        for (int frame = 0; frame < 3; ++frame)
            write(recording, frame);
        EXPECT_EQ(recording.frameCount(), 3U);
    }
    const auto camera = camera::makeSource("images:" + path());
    const auto geometry = camera->configure({}, {});
    EXPECT_EQ(std::memcmp(&geometry.depth, &description.depth, sizeof geometry.depth), 0);
    EXPECT_EQ(std::memcmp(&geometry.color, &description.color, sizeof geometry.color), 0);
    EXPECT_EQ(std::memcmp(&geometry.depthToColor, &description.depthToColor,
                          sizeof geometry.depthToColor),
              0);
    EXPECT_EQ(geometry.depthScale, description.depthScale);
    EXPECT_EQ(geometry.framerate, 30);
    for (int frame = 0; frame < 3; ++frame) {
        std::vector<std::uint16_t> depth(width * height);
        std::vector<std::uint8_t> color(width * 2 * height * 3);
        camera->render(static_cast<std::uint64_t>(frame), depth, color);
        EXPECT_EQ(depth, depthOf(frame));
        EXPECT_EQ(color, colorOf(frame));
        EXPECT_EQ(camera->truth(static_cast<std::uint64_t>(frame)).frame,
                  static_cast<unsigned>(frame) + 100);
        EXPECT_EQ(camera->truth(static_cast<std::uint64_t>(frame)).seconds, 0.25 * frame);
    }
}

TEST_F(RecordingFolderTest, IsOneAfterEveryFrame) {
    RecordingFolder recording{path()};
    EXPECT_FALSE(camera::readRecording(path())) << "before it has begun";
    recording.begin(someCamera(), {});
    for (std::size_t frame = 0; frame < 4; ++frame) {
        write(recording, static_cast<int>(frame));
        EXPECT_EQ(camera::readRecording(path())->frames.size(), frame + 1);
    }
}

TEST_F(RecordingFolderTest, KeepsTheSettingsWhereTheyAreLookedForOnAVolume) {
    RecordingFolder recording{path()};
    recording.begin(someCamera(), {{"QVR_calibration/touch.json", "{\"a\": 1}\n"},
                                   {"QVR_calibration/touch_projectionMap.json", ""}});
    EXPECT_EQ(content(path() + "/QVR_calibration/touch.json"), "{\"a\": 1}\n");
    EXPECT_TRUE(fs::exists(path() + "/QVR_calibration/touch_projectionMap.json"))
        << "else that of another volume would be found";
}

TEST_F(RecordingFolderTest, IsReadableForItsOwnerOnly) {
    RecordingFolder recording{path()};
    recording.begin(someCamera(), {});
    write(recording, 0);
    const fs::perms others = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(path()).permissions() & others, fs::perms::none);
    EXPECT_EQ(fs::status(path() + "/color_00000000.png").permissions() & others, fs::perms::none);
}

TEST_F(RecordingFolderTest, TakesNoFolderThatHoldsAnything) {
    const std::string expected =
        ": it exists and is not empty. Recordings are not replaced: name a new folder, or remove "
        "this one";
    folder.write("a/recording/notes.txt", "mine");
    EXPECT_EQ(problemOf(path()), "cannot record to " + path() + expected);
    EXPECT_EQ(content(path() + "/notes.txt"), "mine");
    const std::string file = folder.write("file", "");
    EXPECT_EQ(problemOf(file), "cannot record to " + file + expected);
    fs::remove(path() + "/notes.txt");
    EXPECT_EQ(problemOf(path()), "") << "an empty folder is as good as none";
}

TEST_F(RecordingFolderTest, SaysWhyItCannotBeMade) {
    const std::string file = folder.write("file", "");
    EXPECT_EQ(problemOf(file + "/recording"),
              "cannot record to " + file + "/recording: Not a directory");
}

TEST_F(RecordingFolderTest, StaysReadableWhenAPictureDoesNotFitOnTheDisk) {
    RecordingFolder recording{path()};
    recording.begin(someCamera(), {});
    write(recording, 0);
    {
        const FileSizeLimit limit(64);
        try {
            write(recording, 1);
            FAIL() << "written";
        } catch (const RecordingError& error) {
            EXPECT_EQ(std::string(error.what()), "cannot write to " + path() + ": File too large");
        }
    }
    EXPECT_EQ(recording.frameCount(), 1U);
    EXPECT_EQ(camera::readRecording(path())->frames.size(), 1U);
    for (const auto& entry : fs::directory_iterator(path()))
        EXPECT_NE(entry.path().extension(), ".part");
}

TEST_F(RecordingFolderTest, TakesAPieceOfALineBackThatDidNotFitOnTheDisk) {
    const std::string file = path() + "/frames.jsonl";
    Description description = someCamera();
    // Pictures so small that the lines are what grows.
    description.depth.width = description.depth.height = 1;
    description.color.width = description.color.height = 1;
    RecordingFolder recording{path()};
    recording.begin(description, {});
    const std::vector<std::uint16_t> depth{1};
    const std::vector<std::uint8_t> color{1, 2, 3};
    std::size_t frames = 0;
    std::string lines;
    {
        const FileSizeLimit limit(500);
        try {
            while (true) {
                recording.write({}, {depth, color});
                ++frames;
                lines = content(file);
            }
        } catch (const RecordingError&) {
            EXPECT_GT(frames, 3U);
        }
    }
    EXPECT_EQ(content(file), lines);
    EXPECT_EQ(camera::readRecording(path())->frames.size(), frames);
}

TEST_F(RecordingFolderTest, RefusesPicturesOfAnotherSize) {
    RecordingFolder recording{path()};
    recording.begin(someCamera(), {});
    const std::vector<std::uint16_t> depth(5);
    EXPECT_THROW(recording.write({}, {depth, colorOf(0)}), RecordingError);
    EXPECT_EQ(recording.frameCount(), 0U);
}
