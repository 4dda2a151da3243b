// Folders of depth images as a camera.
#include "images/color_picture.h"
#include "images/image_folder.h"
#include "images/png_image.h"
#include "source_uri.h"
#include "support/PictureFolder.h"
#include "support/calls.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

using namespace camera_test;
using camera::ImageSize;

namespace {

template <class Action>
std::string thrownBy(Action&& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

std::vector<std::uint16_t> samples(int width, int height, int first) {
    std::vector<std::uint16_t> result(static_cast<std::size_t>(width * height));
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<std::uint16_t>(first + static_cast<int>(i));
    }
    return result;
}

std::vector<std::uint8_t> plainColor(int width, int height, int value) {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 3),
                                     static_cast<std::uint8_t>(value));
}

class ImageFolderTest : public testing::Test {
  protected:
    std::string uri(const std::string& keys = "") const { return "images:" + folder.path() + keys; }
    std::unique_ptr<camera::FrameSource> source(const std::string& keys = "") const {
        return camera::makeSource(uri(keys));
    }
    std::string problem(const std::string& keys = "") const {
        return thrownBy([&] { source(keys); });
    }
    std::vector<std::uint16_t> depthOf(camera::FrameSource& camera, std::uint64_t number) const {
        const auto geometry = camera.configure({}, {});
        std::vector<std::uint16_t> depth(
            static_cast<std::size_t>(geometry.depth.width * geometry.depth.height));
        camera.render(number, depth, {});
        return depth;
    }
    std::vector<std::uint8_t> colorOf(camera::FrameSource& camera, std::uint64_t number,
                                      ImageSize size = {}) const {
        const auto geometry = camera.configure({}, {size.width, size.height, 0});
        std::vector<std::uint8_t> color(
            static_cast<std::size_t>(geometry.color.width * geometry.color.height * 3));
        camera.render(number, {}, color);
        return color;
    }
    std::string rateProblem(camera::FrameSource& camera, int framerate) const {
        return thrownBy([&] { camera.configure({0, 0, framerate}, {0, 0, framerate}); });
    }

    PictureFolder folder;
};

TEST_F(ImageFolderTest, PlaysImagesInNameOrderOverAndOver) {
    folder.writeDepth("c.png", 4, 3, samples(4, 3, 3000));
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.writeDepth("b.PNG", 4, 3, samples(4, 3, 2000));
    folder.write("notes.txt", "not a picture");
    const auto camera = source();
    EXPECT_EQ(depthOf(*camera, 0), samples(4, 3, 1000));
    EXPECT_EQ(depthOf(*camera, 1), samples(4, 3, 2000));
    EXPECT_EQ(depthOf(*camera, 2), samples(4, 3, 3000));
    EXPECT_EQ(depthOf(*camera, 3), samples(4, 3, 1000));
    EXPECT_EQ(depthOf(*camera, 3'000'000'000'000'000'001), samples(4, 3, 2000));
}

TEST_F(ImageFolderTest, ReadsAllSixteenBitsAndInterlacedFiles) {
    const std::vector<std::uint16_t> values{0, 1, 255, 256, 0x1234, 0xfffe};
    folder.writeDepth("a.png", 3, 2, values);
    folder.writeDepth("b.png", 3, 2, values, PNG_INTERLACE_ADAM7);
    const auto camera = source();
    EXPECT_EQ(depthOf(*camera, 0), values);
    EXPECT_EQ(depthOf(*camera, 1), values);
}

TEST_F(ImageFolderTest, LooksLikeACameraWithUsualValues) {
    folder.writeDepth("a.png", 64, 48, samples(64, 48, 1000));
    const auto camera = source();
    const auto geometry = camera->configure({}, {});
    EXPECT_EQ(camera->depthScale(), 0.000125f);
    EXPECT_EQ(geometry.depthScale, 0.000125f);
    EXPECT_EQ(geometry.framerate, 30);
    EXPECT_TRUE(camera->paced());
    EXPECT_EQ(geometry.depth.width, 64);
    EXPECT_EQ(geometry.depth.height, 48);
    EXPECT_EQ(geometry.depth.fx, 476.0f);
    EXPECT_EQ(geometry.depth.fy, 476.0f);
    EXPECT_EQ(geometry.depth.ppx, 32.0f);
    EXPECT_EQ(geometry.depth.ppy, 24.0f);
    EXPECT_EQ(geometry.depth.model, RS_DISTORTION_NONE);
    EXPECT_EQ(std::memcmp(&geometry.color, &geometry.depth, sizeof geometry.color), 0);
    const rs_extrinsics identity{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    EXPECT_EQ(std::memcmp(&geometry.depthToColor, &identity, sizeof identity), 0);
    EXPECT_EQ(camera->serial(), folder.path());
    EXPECT_EQ(camera->truth(7).frame, 7u);
    EXPECT_EQ(camera->truth(7).known, 0);
    EXPECT_EQ(camera->truth(7).finger_count, 0);
}

TEST_F(ImageFolderTest, TakesEveryKey) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    const auto camera = source(",scale=0.001,fps=60,fx=10,fy=11,ppx=1.5,ppy=-2,pace=off");
    const auto geometry = camera->configure({}, {});
    EXPECT_EQ(geometry.depthScale, 0.001f);
    EXPECT_EQ(geometry.framerate, 60);
    EXPECT_EQ(geometry.depth.fx, 10.0f);
    EXPECT_EQ(geometry.depth.fy, 11.0f);
    EXPECT_EQ(geometry.depth.ppx, 1.5f);
    EXPECT_EQ(geometry.depth.ppy, -2.0f);
    EXPECT_FALSE(camera->paced());
}

TEST_F(ImageFolderTest, RefusesOtherKeysAndValues) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    EXPECT_EQ(problem(",speed=2"), "camera source \"images\" has no key \"speed\"; accepted: "
                                   "scale, fps, hold, fx, fy, ppx, ppy, loop, pace");
    EXPECT_EQ(problem(",fps=0"), "camera source \"images\": key \"fps\" cannot be \"0\"; accepted: "
                                 "a whole number from 1 to 1000");
    EXPECT_EQ(problem(",scale=0"), "camera source \"images\": key \"scale\" cannot be \"0\"; "
                                   "accepted: a number from 1e-09 to 1");
    EXPECT_EQ(problem(",fx=-1"), "camera source \"images\": key \"fx\" cannot be \"-1\"; "
                                 "accepted: a number from 0.001 to 1e+06");
    EXPECT_EQ(thrownBy([] { camera::makeSource("images"); }),
              "camera source \"images\" needs a folder: images:DIR");
    EXPECT_EQ(thrownBy([] { camera::makeSource("images:fps=30"); }),
              "camera source \"images\" needs a folder: images:DIR");
}

TEST_F(ImageFolderTest, FollowsTheRateAskedForUnlessOneIsSet) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    EXPECT_EQ(source()->configure({0, 0, 60}, {0, 0, 60}).framerate, 60);
    const auto fixed = source(",fps=25");
    EXPECT_EQ(fixed->configure({0, 0, 25}, {}).framerate, 25);
    EXPECT_EQ(rateProblem(*fixed, 30), "the images come at 25 frames a second (fps), not at 30");
}

TEST_F(ImageFolderTest, HoldsEachPictureAsLongAsAskedFor) {
    folder.writeDepth("a.png", 2, 1, samples(2, 1, 1000));
    folder.writeDepth("b.png", 2, 1, samples(2, 1, 2000));
    const auto camera = source(",hold=3");
    camera->configure({}, {});
    std::vector<std::uint16_t> firstSamples;
    for (std::uint64_t number = 0; number < 8; ++number) {
        std::vector<std::uint16_t> depth(2);
        camera->render(number, depth, {});
        firstSamples.push_back(depth[0]);
    }
    const std::uint16_t a = samples(2, 1, 1000)[0];
    const std::uint16_t b = samples(2, 1, 2000)[0];
    EXPECT_EQ(firstSamples, (std::vector<std::uint16_t>{a, a, a, b, b, b, a, a}));
    EXPECT_EQ(problem(",hold=0"), "camera source \"images\": key \"hold\" cannot be \"0\"; "
                                  "accepted: a whole number from 1 to 1000");
}

TEST_F(ImageFolderTest, DeliversDepthInTheImagesSizeOnly) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    const auto camera = source();
    EXPECT_NO_THROW(camera->configure({4, 3, 0}, {}));
    EXPECT_NO_THROW(camera->configure({4, 0, 0}, {}));
    EXPECT_EQ(thrownBy([&] {
                  camera->configure({640, 480, 30}, {});
              }),
              "depth comes in the size of the images, 4x3, not in 640x480");
}

TEST_F(ImageFolderTest, NamesAMissingFolder) {
    const std::string missing = folder.file("nowhere");
    EXPECT_EQ(thrownBy([&] { camera::makeSource("images:" + missing); }),
              "image folder " + missing + " does not exist or is no folder");
    folder.write("file", "");
    EXPECT_EQ(thrownBy([&] { camera::makeSource("images:" + folder.file("file")); }),
              "image folder " + folder.file("file") + " does not exist or is no folder");
}

TEST_F(ImageFolderTest, NamesAFolderWithoutDepthImages) {
    folder.writeColor("color_1.png", 4, 3, plainColor(4, 3, 9));
    folder.write("notes.txt", "");
    EXPECT_EQ(problem(), "image folder " + folder.path() +
                             " has no depth images; 16-bit grey PNGs are needed");
}

TEST_F(ImageFolderTest, NamesImagesOfAnotherKind) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.writePng("b.png", 4, 3, 8, PNG_COLOR_TYPE_GRAY, std::vector<std::uint8_t>(12));
    EXPECT_EQ(problem(), "image " + folder.file("b.png") +
                             ": a depth image must be a 16-bit grey PNG, this one has 8 bits");
    folder.writePng("b.png", 4, 3, 16, PNG_COLOR_TYPE_RGB, std::vector<std::uint8_t>(72));
    EXPECT_EQ(
        problem(),
        "image " + folder.file("b.png") +
            ": a depth image must be a 16-bit grey PNG, this one has 16 bits and is not grey");
}

TEST_F(ImageFolderTest, NamesImagesOfAnotherSize) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.writeDepth("b.png", 3, 4, samples(3, 4, 1000));
    EXPECT_EQ(problem(), "image " + folder.file("b.png") +
                             " is 3x4; all depth images of a folder must have one size, 4x3 like "
                             "a.png");
}

TEST_F(ImageFolderTest, NamesBrokenImages) {
    folder.writeDepth("a.png", 40, 30, samples(40, 30, 1000));
    folder.write("b.png", "this is text");
    const std::string notPng = problem();
    EXPECT_EQ(notPng.find("image " + folder.file("b.png") + ": not a readable PNG ("), 0u)
        << notPng;
    folder.write("b.png", "");
    EXPECT_EQ(problem().find("image " + folder.file("b.png") + ": not a readable PNG ("), 0u);
}

TEST_F(ImageFolderTest, NamesImagesThatEndTooEarlyWhereverTheyEnd) {
    folder.writeDepth("a.png", 40, 30, samples(40, 30, 1000));
    std::ifstream whole(folder.file("a.png"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
    for (std::size_t length = 0; length < bytes.size(); length += 5) {
        folder.write("b.png", bytes.substr(0, length));
        const std::string found = problem();
        EXPECT_EQ(found.find("image " + folder.file("b.png") + ": "), 0u) << length << found;
    }
}

TEST_F(ImageFolderTest, SurvivesDamagedBytesAnywhere) {
    folder.writeDepth("a.png", 20, 15, samples(20, 15, 1000));
    std::ifstream whole(folder.file("a.png"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
    int refused = 0;
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        std::string damaged = bytes;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x41);
        folder.write("a.png", damaged);
        refused += problem().empty() ? 0 : 1;
    }
    EXPECT_GT(refused, static_cast<int>(bytes.size()) / 2);
}

TEST_F(ImageFolderTest, RefusesImagesTooLargeToHold) {
    // The header of a PNG of 100,000 x 100,000 pixels, with its right check sum.
    folder.write("a.png", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\1\x86\xa0\0\1\x86\xa0"
                                      "\x10\0\0\0\0\xdd\xa9\x88W",
                                      33));
    EXPECT_EQ(problem().find("image " + folder.file("a.png") + ": not a readable PNG ("), 0u);
}

TEST_F(ImageFolderTest, PaintsDepthGreyWithoutColorPictures) {
    folder.writeDepth("a.png", 2, 2, {1000, 2000, 0, 3000});
    const auto camera = source();
    const auto color = colorOf(*camera, 0);
    EXPECT_EQ(color,
              (std::vector<std::uint8_t>{255, 255, 255, 144, 144, 144, 0, 0, 0, 32, 32, 32}));
}

TEST_F(ImageFolderTest, PairsColorPicturesByName) {
    for (const char* name : {"depth_1.png", "2.png"}) {
        folder.writeDepth(name, 2, 2, samples(2, 2, 1000));
    }
    folder.writeColor("color_0.png", 2, 2, plainColor(2, 2, 10));
    folder.writeColor("color_1.png", 2, 2, plainColor(2, 2, 11));
    folder.writeColor("color_2.png", 2, 2, plainColor(2, 2, 12));
    const auto camera = source();
    EXPECT_EQ(colorOf(*camera, 0), plainColor(2, 2, 12)) << "2.png comes first";
    EXPECT_EQ(colorOf(*camera, 1), plainColor(2, 2, 11));
}

TEST_F(ImageFolderTest, PairsColorPicturesByOrderWhenNamesDiffer) {
    for (const char* name : {"a.png", "b.png", "c.png"}) {
        folder.writeDepth(name, 2, 2, samples(2, 2, 1000));
    }
    folder.writeColor("color_a.png", 2, 2, plainColor(2, 2, 10));
    folder.writeColor("color_x.png", 2, 2, plainColor(2, 2, 11));
    const auto camera = source();
    EXPECT_EQ(colorOf(*camera, 0), plainColor(2, 2, 10));
    EXPECT_EQ(colorOf(*camera, 1), plainColor(2, 2, 11));
    EXPECT_EQ(colorOf(*camera, 2), plainColor(2, 2, 10));
}

TEST_F(ImageFolderTest, DeliversColorInAnySize) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.writeColor("color_a.png", 2, 1, {1, 2, 3, 4, 5, 6});
    const auto camera = source(",fx=100,fy=100,ppx=1.5,ppy=1");
    const auto native = camera->configure({}, {});
    EXPECT_EQ(native.color.width, 2);
    EXPECT_EQ(native.color.height, 1);
    const auto wide = camera->configure({}, {8, 6, 30});
    EXPECT_EQ(wide.color.width, 8);
    EXPECT_EQ(wide.color.height, 6);
    EXPECT_EQ(wide.color.fx, 200.0f);
    EXPECT_EQ(wide.color.fy, 200.0f);
    EXPECT_EQ(wide.color.ppx, 3.5f) << "the middle between two pixels stays the middle";
    EXPECT_EQ(wide.color.ppy, 2.5f);
    EXPECT_EQ(colorOf(*camera, 0, {4, 2}),
              (std::vector<std::uint8_t>{1, 2, 3, 1, 2, 3, 4, 5, 6, 4, 5, 6, //
                                         1, 2, 3, 1, 2, 3, 4, 5, 6, 4, 5, 6}));
    EXPECT_EQ(colorOf(*camera, 0, {1, 1}), (std::vector<std::uint8_t>{4, 5, 6}));
    EXPECT_EQ(thrownBy([&] {
                  camera->configure({}, {20000, 10, 0});
              }),
              "colour comes in sizes up to 16384x16384, not in 20000x10");
}

TEST_F(ImageFolderTest, TakesColorPicturesOfAnyKind) {
    folder.writeDepth("a.png", 1, 1, {1000});
    folder.writePng("color_a.png", 1, 1, 8, PNG_COLOR_TYPE_GRAY, {77});
    EXPECT_EQ(colorOf(*source(), 0), (std::vector<std::uint8_t>{77, 77, 77}));
    folder.writePng("color_a.png", 1, 1, 8, PNG_COLOR_TYPE_RGB_ALPHA, {10, 20, 30, 255});
    EXPECT_EQ(colorOf(*source(), 0), (std::vector<std::uint8_t>{10, 20, 30}));
    folder.writePng("color_a.png", 1, 1, 8, PNG_COLOR_TYPE_RGB_ALPHA, {10, 20, 30, 0});
    EXPECT_EQ(colorOf(*source(), 0), (std::vector<std::uint8_t>{0, 0, 0}));
}

TEST_F(ImageFolderTest, NamesBrokenColorPictures) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.write("color_a.png", "this is text");
    EXPECT_EQ(problem().find("image " + folder.file("color_a.png") + ": not a readable PNG ("), 0u);
    folder.writeColor("color_a.png", 40, 30, plainColor(40, 30, 5));
    std::ifstream whole(folder.file("color_a.png"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
    folder.write("color_a.png", bytes.substr(0, bytes.size() - 20));
    EXPECT_EQ(problem().find("image " + folder.file("color_a.png") + ": broken PNG ("), 0u)
        << problem();
}

TEST_F(ImageFolderTest, IsReadOnceWhenItFitsIntoMemory) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    const auto camera = source();
    const camera::ImageFolder justFits(folder.path(), 24);
    std::filesystem::remove(folder.file("a.png"));
    EXPECT_EQ(depthOf(*camera, 0), samples(4, 3, 1000));
    std::vector<std::uint16_t> depth(12);
    justFits.copyDepth(0, depth);
    EXPECT_EQ(depth, samples(4, 3, 1000));
}

TEST_F(ImageFolderTest, IsReadFrameByFrameBeyondTheMemoryBound) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    folder.writeDepth("b.png", 4, 3, samples(4, 3, 2000));
    folder.writeColor("color_a.png", 4, 3, plainColor(4, 3, 7));
    const camera::ImageFolder images(folder.path(), 2 * 24 + 36 - 1);
    std::vector<std::uint16_t> depth(12);
    std::vector<std::uint8_t> color(36);
    images.copyDepth(1, depth);
    images.paintColor(1, color, {4, 3});
    EXPECT_EQ(depth, samples(4, 3, 2000));
    EXPECT_EQ(color, plainColor(4, 3, 7));

    folder.writeDepth("b.png", 3, 4, samples(3, 4, 2000));
    folder.writeColor("color_a.png", 3, 4, plainColor(3, 4, 7));
    EXPECT_EQ(thrownBy([&] { images.copyDepth(1, depth); }),
              "image " + folder.file("b.png") + ": is 3x4 now and was 4x3");
    EXPECT_EQ(thrownBy([&] {
                  images.paintColor(1, color, {4, 3});
              }),
              "image " + folder.file("color_a.png") + ": is 3x4 now and was 4x3");
    std::filesystem::remove(folder.file("b.png"));
    EXPECT_EQ(thrownBy([&] { images.copyDepth(1, depth); }),
              "image " + folder.file("b.png") + ": cannot be opened");
    std::filesystem::remove(folder.file("a.png"));
}

TEST_F(ImageFolderTest, IsCheckedWhenChosen) {
    EXPECT_NE(messageOf(rs_select_camera_source, uri().c_str()), "");
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    EXPECT_EQ(messageOf(rs_select_camera_source, uri().c_str()), "");
    for (int round = 0; round < 2; ++round) {
        rs_context* const context = call(rs_create_context, RS_API_VERSION);
        rs_device* const device = call(rs_get_device, context, 0);
        EXPECT_STREQ(call(rs_get_device_name, device), "Image folder");
        call(rs_delete_context, context);
    }
    call(rs_select_camera_source, static_cast<const char*>(nullptr));
}

TEST_F(ImageFolderTest, EndsAfterItsLastPictureWhenItIsNotLooped) {
    for (const char* name : {"a.png", "b.png", "c.png"}) {
        folder.writeDepth(name, 4, 3, samples(4, 3, 1000));
    }
    call(rs_select_camera_source, uri(",loop=off,pace=off,hold=2").c_str());
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    rs_device* const device = call(rs_get_device, context, 0);
    enable(device, RS_STREAM_DEPTH);
    for (int round = 0; round < 2; ++round) {
        call(rs_start_source, device, RS_SOURCE_VIDEO);
        for (int frame = 0; frame < 6; ++frame) {
            call(rs_wait_for_frames, device);
            EXPECT_EQ(call(rs_has_ended, device), 0);
        }
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(messageOf(rs_wait_for_frames, device), "the recording has ended");
            EXPECT_EQ(call(rs_has_ended, device), 1);
        }
        call(rs_stop_source, device, RS_SOURCE_VIDEO);
    }
    call(rs_delete_context, context);
    call(rs_select_camera_source, static_cast<const char*>(nullptr));
}

TEST_F(ImageFolderTest, IsFoundThroughTheEnvironment) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    setenv("QVR_CAMERA", uri(",scale=0.001").c_str(), 1);
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    unsetenv("QVR_CAMERA");
    ASSERT_EQ(call(rs_get_device_count, context), 1);
    EXPECT_EQ(call(rs_get_device_depth_scale, call(rs_get_device, context, 0)), 0.001f);
    call(rs_delete_context, context);
}

TEST_F(ImageFolderTest, KeepsTheEarlierChoiceWhenANewOneIsWrong) {
    folder.writeDepth("a.png", 4, 3, samples(4, 3, 1000));
    call(rs_select_camera_source, uri().c_str());
    EXPECT_NE(messageOf(rs_select_camera_source, "webcam"), "");
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, context), 1);
    call(rs_delete_context, context);
    call(rs_select_camera_source, static_cast<const char*>(nullptr));
}

} // namespace
