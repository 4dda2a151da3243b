// The pictures of one frame.
#include "cameraTool/CameraFixture.h"
#include "cameraTool/snapshot.h"
#include "images/png_image.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace cameraTool;
using testing::StartsWith;
namespace fs = std::filesystem;

class SnapshotTest : public camera_tool_test::CameraFixture {
  protected:
    support::TemporaryFolder folder;
    std::string out = folder.file("a/b");
};

TEST_F(SnapshotTest, KeepsTheFourPicturesOfTheFrameAskedFor) {
    OpenCamera camera({});
    EXPECT_EQ(takeSnapshot(camera, 2, out),
              out + "/depth.png: 8x6, depth, one unit is 1 mm\n" + out +
                  "/color.png: 16x10, colour\n" + out +
                  "/depth_aligned_to_color.png: 16x10, depth, one unit is 1 mm\n" + out +
                  "/color_aligned_to_depth.png: 8x6, colour\n");
    const auto equal = [](const auto& picture, const auto& expected) {
        return std::equal(picture.begin(), picture.end(), expected.begin(), expected.end());
    };
    const camera::ImageSize small{8, 6};
    const camera::ImageSize large{16, 10};
    const auto depth = camera::readDepthPng(out + "/depth.png", small);
    EXPECT_TRUE(equal(depth, camera.depth(RS_STREAM_DEPTH)));
    EXPECT_EQ(depth.at(0), 600);
    EXPECT_TRUE(
        equal(camera::readColorPng(out + "/color.png", large), camera.color(RS_STREAM_COLOR)));
    EXPECT_TRUE(equal(camera::readDepthPng(out + "/depth_aligned_to_color.png", large),
                      camera.depth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR)));
    EXPECT_TRUE(equal(camera::readColorPng(out + "/color_aligned_to_depth.png", small),
                      camera.color(RS_STREAM_COLOR_ALIGNED_TO_DEPTH)));
}

TEST_F(SnapshotTest, IsForItsOwnerOnly) {
    OpenCamera camera({});
    takeSnapshot(camera, 0, out);
    for (const char* name : {"/depth.png", "/color.png"}) {
        EXPECT_EQ(fs::status(out + name).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write);
    }
}

TEST_F(SnapshotTest, ReplacesThePicturesOfTheOneBefore) {
    for (int round = 0; round < 2; ++round) {
        OpenCamera camera({});
        takeSnapshot(camera, 0, out);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(out), fs::directory_iterator()), 4);
}

TEST_F(SnapshotTest, SaysWhatCannotBeWritten) {
    OpenCamera camera({});
    folder.write("a", "no folder");
    auto [code, text] = failure([&] { takeSnapshot(camera, 0, out); });
    EXPECT_EQ(code, server::exitUnexpected);
    EXPECT_THAT(text, StartsWith("cannot make the folder " + out + ": "));
    fs::create_directories(folder.file("c/depth.png"));
    std::tie(code, text) = failure([&] { takeSnapshot(camera, 0, folder.file("c")); });
    EXPECT_EQ(code, server::exitUnexpected);
    EXPECT_THAT(text, StartsWith("cannot write " + folder.file("c/depth.png") + ": "));
}

} // namespace
