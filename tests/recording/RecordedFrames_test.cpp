#include "images/recording.h"
#include "recording/RecordedFrames.h"
#include "recording/RecordingError.h"
#include "recording/RecordingFolder.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using recording::FrameInfo;
using recording::RecordedFrames;
using recording::RecordingError;

namespace {

class RecordedFramesTest : public testing::Test {
  protected:
    RecordedFramesTest() {
        recording::Description description;
        description.fps = 30;
        description.depthScale = 0.001F;
        description.depth = {1, 1, 0, 0, 1, 1, RS_DISTORTION_NONE, {}};
        description.color = description.depth;
        description.depthToColor = {};
        recording::RecordingFolder recording{path};
        recording.begin(description, {});
        const std::vector<std::uint16_t> depth{9};
        const std::vector<std::uint8_t> color{1, 2, 3};
        for (std::uint64_t number = 5; number < 9; ++number) {
            FrameInfo frame;
            frame.number = number;
            frame.touches[3] = {1, 0.5, 1.5, 2.5};
            recording.write(frame, {depth, color});
        }
        std::ostringstream text;
        text << std::ifstream(path + "/frames.jsonl", std::ios::binary).rdbuf();
        lines = text.str();
    }
    void writeLines(const std::string& text) const {
        std::ofstream(path + "/frames.jsonl", std::ios::binary) << text;
    }
    std::string problem() const {
        try {
            RecordedFrames frames(path);
            while (frames.next()) {
            }
            return "";
        } catch (const RecordingError& error) {
            return error.what();
        }
    }

    support::TemporaryFolder folder;
    std::string path = folder.file("recording");
    std::string lines;
};

} // namespace

TEST_F(RecordedFramesTest, AreReadOneAfterTheOther) {
    RecordedFrames frames(path);
    EXPECT_EQ(frames.count(), 4U);
    EXPECT_FALSE(frames.torn());
    EXPECT_TRUE(frames.description().calibrated);
    for (std::uint64_t number = 5; number < 9; ++number) {
        const auto frame = frames.next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->number, number);
        EXPECT_EQ(double{frame->touches[3].z}, 2.5);
    }
    EXPECT_FALSE(frames.next());
    EXPECT_FALSE(frames.next());
}

// Else pictures of one frame would meet touches of another.
TEST_F(RecordedFramesTest, AreAsManyAsTheCameraLibraryPlaysWhereverTheLinesEnd) {
    for (std::size_t length = lines.find('\n') + 1; length <= lines.size(); ++length) {
        writeLines(lines.substr(0, length));
        RecordedFrames frames(path);
        ASSERT_EQ(frames.count(), camera::readRecording(path)->frames.size()) << length;
        EXPECT_EQ(frames.torn(), lines[length - 1] != '\n') << length;
        std::size_t read = 0;
        while (frames.next())
            ++read;
        EXPECT_EQ(read, frames.count());
    }
}

TEST_F(RecordedFramesTest, NameTheLineThatIsNoFrame) {
    writeLines(lines + "{\"picture\":1}\n");
    EXPECT_EQ(problem(), "line 5 of frames.jsonl is not the line of a frame");
}

TEST_F(RecordedFramesTest, NeedARecording) {
    std::filesystem::remove(path + "/frames.jsonl");
    EXPECT_EQ(problem(), "this folder is no recording: it has no frames.jsonl");
    std::filesystem::remove(path + "/recording.json");
    EXPECT_EQ(problem(), "this folder is no recording: it has no recording.json");
}
