#include "common/pngFile.h"
#include "host/Keeper.h"
#include "host/Pictures.h"
#include "host/Plugin.h"
#include "support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>
#include <png.h>

namespace {

using host::Pictures;
using host::Snapshot;
using programs::Color;
using programs::ColorImage;
using support::TemporaryFolder;

ColorImage readPng(const std::string& path) {
    png_image file = {};
    file.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&file, path.c_str()) == 0) {
        return {};
    }
    file.format = PNG_FORMAT_RGB;
    ColorImage image(static_cast<int>(file.width), static_cast<int>(file.height));
    png_image_finish_read(&file, nullptr, image.values.data(), 0, nullptr);
    return image;
}

Snapshot allStreams() {
    Snapshot snapshot;
    snapshot.color = ColorImage(30, 20, {1, 2, 3});
    snapshot.depth = programs::DepthImage(40, 30, 4000);
    snapshot.processed = programs::GrayImage(40, 30);
    snapshot.processed.at(20, 10) = 12;
    snapshot.touches = {{{4, 10, 20, 30}, true, 20, 15}};
    return snapshot;
}

TEST(PngFile, KeepsPixels) {
    const TemporaryFolder folder;
    ColorImage image(3, 2);
    image.at(2, 1) = {9, 8, 7};
    ASSERT_EQ(programs::writePng(folder.file("a.png"), image), "");
    EXPECT_EQ(readPng(folder.file("a.png")).values, image.values);
}

TEST(PngFile, SaysWhyItCannotBeWritten) {
    EXPECT_EQ(programs::writePng("/nowhere/a.png", ColorImage(1, 1)),
              "cannot write /nowhere/a.png: No such file or directory");
    EXPECT_EQ(programs::writePng("a.png", ColorImage()),
              "cannot write a.png: the picture is empty");
}

TEST(Pictures, SavesEveryStreamAndTheTouches) {
    const TemporaryFolder folder;
    const auto report = Pictures::save(allStreams(), folder.file("new/inner"));
    EXPECT_EQ(report.problem, "");
    EXPECT_TRUE(report.skipped.empty());
    ASSERT_EQ(report.written.size(), 4u);
    EXPECT_EQ(report.written[3], folder.file("new/inner/touches.png"));
    EXPECT_EQ(readPng(folder.file("new/inner/color.png")).at(7, 7), (Color{1, 2, 3}));
    EXPECT_EQ(readPng(folder.file("new/inner/depth.png")).width, 40);
    EXPECT_EQ(readPng(folder.file("new/inner/processed.png")).at(20, 10), (Color{215, 215, 215}));
    EXPECT_EQ(readPng(folder.file("new/inner/processed.png")).at(0, 0), Color());
}

TEST(Pictures, SaysWhichStreamsAreNotSent) {
    const TemporaryFolder folder;
    Snapshot snapshot = allStreams();
    snapshot.color = {};
    snapshot.processed = {};
    const auto report = Pictures::save(snapshot, folder.file("x"));
    EXPECT_EQ(report.skipped, (std::vector<std::string>{
                                  "color.png: the server does not send the colour stream",
                                  "processed.png: the server does not send the processed stream"}));
    EXPECT_EQ(report.written.size(), 2u);
}

TEST(Pictures, SaysWhyTheFolderCannotBeMade) {
    const auto report = Pictures::save(allStreams(), "/proc/nowhere");
    EXPECT_EQ(report.problem.find("cannot make the folder /proc/nowhere: "), 0u) << report.problem;
    EXPECT_TRUE(report.written.empty());
}

TEST(Pictures, ShowsMarksAsGreysThatAnEyeTellsApart) {
    programs::GrayImage mask(4, 1);
    mask.values = {0, 1, 16, 255};
    EXPECT_EQ(Pictures::readableMask(mask).values, (std::vector<std::uint8_t>{0, 105, 255, 255}));
}

TEST(Pictures, DrawsTheTouchWhereItIsPlaced) {
    Snapshot snapshot;
    snapshot.depth = programs::DepthImage(160, 120, 4000);
    snapshot.touches = {{{4, 10, 20, 30}, true, 20, 15}};
    const ColorImage with = Pictures::compose(snapshot);
    ASSERT_EQ(with.width, 320);
    ASSERT_EQ(with.height, 240);
    snapshot.touches[0].placed = false;
    const ColorImage without = Pictures::compose(snapshot);
    EXPECT_NE(with.at(41 + 9, 31), without.at(41 + 9, 31)); // inside the circle, beside its number
    EXPECT_EQ(with.at(2, 200), without.at(2, 200));
}

TEST(Pictures, DrawsTheOutlinesOfMarkedRegions) {
    Snapshot snapshot = allStreams();
    snapshot.touches.clear();
    const ColorImage plain = Pictures::compose(snapshot); // one marked pixel is noise
    for (int row = 8; row < 14; ++row) {
        for (int column = 18; column < 24; ++column) {
            snapshot.processed.at(column, row) = 16;
        }
    }
    const ColorImage outlined = Pictures::compose(snapshot);
    EXPECT_NE(plain.at(36, 22), outlined.at(36, 22)); // on the left edge
    EXPECT_EQ(plain.at(42, 22), outlined.at(42, 22)); // in the middle
    EXPECT_EQ(plain.at(10, 10), outlined.at(10, 10));
}

TEST(Pictures, EnlargesASmallDepthPictureToTheMasksSize) {
    Snapshot snapshot = allStreams();
    snapshot.depth = programs::DepthImage(20, 15, 4000);
    EXPECT_EQ(Pictures::compose(snapshot).width, 80);
}

TEST(Pictures, DrawsOnColourOrMaskWithoutDepth) {
    Snapshot snapshot = allStreams();
    snapshot.depth = {};
    EXPECT_EQ(Pictures::compose(snapshot).width, 80);
    snapshot.color = {};
    EXPECT_EQ(Pictures::compose(snapshot).width, 80);
    snapshot.processed = {};
    EXPECT_TRUE(Pictures::compose(snapshot).empty());
}

TEST(Textures, FindTheSizeOfThePictureThatIsNotTold) {
    using host::Textures;
    EXPECT_EQ(Textures::sizeLike(640 * 480, 320, 240), std::make_pair(640, 480));
    EXPECT_EQ(Textures::sizeLike(640 * 480, 100, 75), std::make_pair(640, 480));
    EXPECT_EQ(Textures::sizeLike(640 * 240, 640, 240), std::make_pair(640, 240));
    EXPECT_EQ(Textures::sizeLike(0, 320, 240), std::nullopt);
    EXPECT_EQ(Textures::sizeLike(100, 0, 0), std::nullopt);
}

class KeeperOnAScript : public testing::Test {
  protected:
    void start(unsigned port) {
        std::string problem;
        plugin = host::Plugin::load(SCRIPTED_PLUGIN, problem);
        ASSERT_NE(plugin, nullptr) << problem;
        plugin->functions().initClientWithCustomServer("x", port);
        plugin->functions().update();
        state.connection = host::Connection::connected;
    }

    std::unique_ptr<host::Plugin> plugin;
    host::HostState state;
};

TEST_F(KeeperOnAScript, PrefersTouchesAtRest) {
    start(2);
    host::Keeper keeper(plugin->functions());
    state.touches = {{0, 50, 50, 600}, {1, 90, 50, 600}};
    keeper.consider(state, true);
    state.touches = {{0, 70, 50, 600}, {1, 90.5, 50, 600}}; // one moves, one rests
    keeper.consider(state, false);
    EXPECT_EQ(keeper.best()->touches[0].touch.x, 70);
    state.touches = {{0, 70.5, 50, 600}, {1, 90.5, 50, 600}}; // both rest
    keeper.consider(state, false);
    EXPECT_EQ(keeper.best()->touches[0].touch.x, 70.5);
    // Three, but only one of them at rest.
    state.touches = {{0, 70.5, 50, 600}, {1, 95, 50, 600}, {2, 20, 50, 600}};
    keeper.consider(state, false);
    EXPECT_EQ(keeper.best()->touches.size(), 2U);
    EXPECT_EQ(keeper.best()->touches[0].touch.x, 70.5);
}

TEST_F(KeeperOnAScript, KeepsTheFirstFrameWithTheMostTouches) {
    start(2);
    host::Keeper keeper(plugin->functions());
    EXPECT_FALSE(keeper.best());
    keeper.consider(state, true);
    ASSERT_TRUE(keeper.best());
    EXPECT_TRUE(keeper.best()->touches.empty());
    state.touches = {{2, 50, 50, 600}};
    keeper.consider(state, false);
    EXPECT_EQ(keeper.best()->touches[0].touch.slot, 2);
    state.touches = {{3, 50, 50, 600}};
    keeper.consider(state, false);
    EXPECT_EQ(keeper.best()->touches[0].touch.slot, 2);
}

TEST_F(KeeperOnAScript, TakesTheStreamsInTheirSizes) {
    start(2);
    host::Keeper keeper(plugin->functions());
    keeper.consider(state, true);
    EXPECT_EQ(keeper.best()->color.width, 480);
    EXPECT_EQ(keeper.best()->color.height, 270);
    EXPECT_EQ(keeper.best()->color.at(100, 40), (Color{50, 20, 90}));
    EXPECT_EQ(keeper.best()->depth.width, 320);
    EXPECT_EQ(keeper.best()->depth.at(100, 0), 5680);
    EXPECT_EQ(keeper.best()->processed.width, 320);
    EXPECT_EQ(keeper.best()->processed.height, 240);
}

TEST_F(KeeperOnAScript, LeavesStreamsEmptyThatAreNotSent) {
    start(6);
    host::Keeper keeper(plugin->functions());
    keeper.consider(state, true);
    EXPECT_TRUE(keeper.best()->color.empty());
    EXPECT_TRUE(keeper.best()->depth.empty());
    EXPECT_TRUE(keeper.best()->processed.empty());
}

TEST_F(KeeperOnAScript, LooksAwayWhileTheConnectionIsLost) {
    start(2);
    host::Keeper keeper(plugin->functions());
    state.connection = host::Connection::lost;
    keeper.consider(state, false);
    EXPECT_FALSE(keeper.best());
}

} // namespace
