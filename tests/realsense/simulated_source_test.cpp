#include "realsense/simulated_scene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using simulated_tests::options;
using simulated_tests::Pictures;
using simulated_tests::Scene;
using testing::AllOf;
using testing::HasSubstr;

std::string failureOf(const std::string& keys) {
    try {
        camera::makeSimulatedSource(options(keys));
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

std::string failureOf(const std::string& keys, camera::StreamRequest depth,
                      camera::StreamRequest color) {
    const auto source = camera::makeSimulatedSource(options(keys));
    try {
        source->configure(depth, color);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

const std::vector<std::string> scenes{"demo", "resting", "tapping", "dragging",   "crossing",
                                      "ten",  "flat",    "empty",   "everywhere", "calibration"};

// How many fingers a scene has when four are asked for.
int fingersOfFour(const std::string& scene) {
    if (scene == "everywhere" || scene == "calibration")
        return 1;
    return scene == "ten" ? 10 : scene == "empty" ? 0 : 4;
}

TEST(SimulatedSource, SameNumberGivesSamePicturesInAnyOrder) {
    for (const std::string& name : {std::string("demo"), std::string("crossing")}) {
        Scene scene("scene=" + name);
        const Pictures seventy = scene.pictures(70);
        const Pictures three = scene.pictures(3);
        const Pictures hundred = scene.pictures(100);
        EXPECT_TRUE(scene.pictures(70) == seventy) << name;
        EXPECT_TRUE(scene.pictures(100) == hundred) << name;
        EXPECT_FALSE(three == seventy) << name;

        Scene again("scene=" + name);
        EXPECT_TRUE(again.pictures(3) == three) << name;
        EXPECT_TRUE(again.pictures(100) == hundred) << name;
    }
}

TEST(SimulatedSource, SeedChoosesNoiseAndFingers) {
    Scene one("seed=1");
    Scene two("seed=2");
    EXPECT_NE(one.depth(90), two.depth(90));
    EXPECT_NE(one.truth(90).fingers[0].depth, two.truth(90).fingers[0].depth);
    Scene sameAgain("seed=2");
    EXPECT_EQ(two.depth(90), sameAgain.depth(90));
}

TEST(SimulatedSource, EveryFrameHasNoiseOfItsOwn) {
    Scene scene("scene=empty");
    EXPECT_NE(scene.depth(0), scene.depth(1));
    Scene ideal("scene=empty,noise=0");
    EXPECT_EQ(ideal.depth(0), ideal.depth(1));
}

TEST(SimulatedSource, NoiseGrowsWithDistanceAndItsStrength) {
    const auto spread = [](const std::string& noise, int width, int fromColumn) {
        Scene scene("scene=flat,fingers=10,noise=" + noise);
        Scene ideal("scene=flat,fingers=10,noise=0");
        double sum = 0.0;
        int count = 0;
        for (std::uint64_t frame = 0; frame < 4; ++frame) {
            const auto measured = scene.depth(frame);
            const auto truth = ideal.depth(frame);
            for (std::size_t i = 0; i < truth.size(); ++i) {
                const bool wanted = truth[i] >= fromColumn && truth[i] < fromColumn + width;
                if (!wanted || measured[i] == 0)
                    continue;
                const double off = measured[i] - static_cast<double>(truth[i]);
                sum += off * off;
                ++count;
            }
        }
        EXPECT_GT(count, 1000);
        return std::sqrt(sum / count);
    };
    const double nearHands = spread("1", 120, 2140);
    const double display = spread("1", 300, 3300);
    EXPECT_GT(nearHands, 1.6);
    EXPECT_LT(nearHands, 2.6);
    EXPECT_GT(display, 1.7 * nearHands);
    EXPECT_NEAR(spread("2", 300, 3300) / display, 2.0, 0.1);
}

TEST(SimulatedSource, WithoutNoiseTheTipIsTheNearestPointOfItsFinger) {
    for (const std::string& name : scenes) {
        Scene scene("scene=" + name + ",noise=0,fingers=4");
        for (const std::uint64_t frame : {0u, 57u, 75u, 143u, 260u, 400u}) {
            const auto depth = scene.depth(frame);
            const rs_scene_truth truth = scene.truth(frame);
            for (int i = 0; i < truth.finger_count; ++i) {
                const rs_scene_finger& finger = truth.fingers[i];
                const int column = static_cast<int>(std::lround(finger.pixel[0]));
                const int row = static_cast<int>(std::lround(finger.pixel[1]));
                if (name == "crossing" || finger.touching == 0)
                    continue; // one finger may hide another there, or it may be out of sight
                const auto at = [&](int x, int y) {
                    return static_cast<float>(
                        depth[static_cast<std::size_t>(y * scene.width() + x)]);
                };
                EXPECT_NEAR(at(column, row), finger.depth, 1.0f) << name << " " << frame;
                for (int y = std::max(0, row - 6); y <= std::min(scene.height() - 1, row + 6); ++y)
                    for (int x = std::max(0, column - 6);
                         x <= std::min(scene.width() - 1, column + 6); ++x)
                        ASSERT_GE(at(x, y), finger.depth - 1.0f)
                            << name << " " << frame << " at " << x << ", " << y;
            }
        }
    }
}

TEST(SimulatedSource, AnIdealSensorMissesNothing) {
    for (const std::string& name : scenes) {
        Scene scene("scene=" + name + ",noise=0,fingers=10");
        const auto depth = scene.depth(120);
        EXPECT_EQ(std::count(depth.begin(), depth.end(), 0), 0) << name;
    }
}

TEST(SimulatedSource, TheProjectorsShadowLiesToTheLeftOfWhatIsNear) {
    Scene scene("scene=resting,fingers=2");
    const auto depth = scene.depth(0);
    const rs_scene_truth truth = scene.truth(0);
    for (int i = 0; i < truth.finger_count; ++i) {
        const int column = static_cast<int>(std::lround(truth.fingers[i].pixel[0]));
        const int row = static_cast<int>(std::lround(truth.fingers[i].pixel[1]));
        const auto start = depth.begin() + row * scene.width() + column;
        // The tip is some 15 pixels in radius, the shadow about as wide.
        EXPECT_GE(std::count(start - 40, start, 0), 10);
        EXPECT_LE(std::count(start, start + 40, 0), 2);
    }
}

TEST(SimulatedSource, HolesComeWithNoiseOnly) {
    Scene scene("scene=ten");
    const auto depth = scene.depth(10);
    const auto lost = std::count(depth.begin(), depth.end(), 0);
    EXPECT_GT(lost, 2000);
    EXPECT_LT(lost, 40000);
}

TEST(SimulatedSource, KnowsTheFingersOfEveryScene) {
    for (const std::string& name : scenes) {
        Scene scene("scene=" + name + ",fingers=4");
        const rs_scene_truth truth = scene.truth(100);
        EXPECT_EQ(truth.known, 1) << name;
        EXPECT_EQ(truth.frame, 100u) << name;
        EXPECT_EQ(truth.finger_count, fingersOfFour(name)) << name;
        for (int i = 0; i < truth.finger_count; ++i)
            EXPECT_EQ(truth.fingers[i].id, i) << name;
    }
}

TEST(SimulatedSource, AFingerTouchesInsideTheClipsAndTheImage) {
    int inside = 0;
    int outside = 0;
    Scene scene("");
    for (std::uint64_t frame = 0; frame < 16 * 60; ++frame) {
        const rs_scene_truth truth = scene.truth(frame);
        for (int i = 0; i < truth.finger_count; ++i) {
            const rs_scene_finger& finger = truth.fingers[i];
            const bool inVolume = finger.depth > 1600.0f && finger.depth < 2240.0f;
            const bool inImage = finger.pixel[0] >= 0.0f && finger.pixel[0] <= 639.0f &&
                                 finger.pixel[1] >= 0.0f && finger.pixel[1] <= 479.0f;
            ASSERT_EQ(finger.touching, inVolume && inImage ? 1 : 0) << frame;
            (finger.touching ? inside : outside) += 1;
        }
    }
    EXPECT_GT(inside, 1000);
    EXPECT_GT(outside, 200);
}

TEST(SimulatedSource, TimePassesInSecondsWhateverTheFrameRate) {
    Scene sixty("scene=dragging", {0, 0, 60}, {});
    Scene thirty("scene=dragging", {0, 0, 30}, {});
    for (std::uint64_t frame = 0; frame < 60; frame += 7) {
        const rs_scene_truth fast = sixty.truth(2 * frame);
        const rs_scene_truth slow = thirty.truth(frame);
        EXPECT_FLOAT_EQ(fast.fingers[1].pixel[0], slow.fingers[1].pixel[0]);
        EXPECT_FLOAT_EQ(fast.fingers[1].depth, slow.fingers[1].depth);
    }
    EXPECT_EQ(sixty.geometry().framerate, 60);
    EXPECT_EQ(thirty.geometry().framerate, 30);
}

TEST(SimulatedSource, LooksLikeAnSr300) {
    Scene scene("");
    EXPECT_FLOAT_EQ(scene.source().depthScale(), 0.000125f);
    EXPECT_FLOAT_EQ(scene.geometry().depthScale, 0.000125f);
    EXPECT_EQ(scene.width(), 640);
    EXPECT_EQ(scene.height(), 480);
    EXPECT_FLOAT_EQ(scene.geometry().depth.fx, 476.0f);
    EXPECT_FLOAT_EQ(scene.geometry().depth.fy, 476.0f);
    EXPECT_NE(scene.geometry().depth.ppx, 320.0f);
    EXPECT_NE(scene.geometry().depth.ppy, 240.0f);
    EXPECT_EQ(scene.geometry().color.width, 640);
    EXPECT_EQ(scene.geometry().color.height, 480);
    EXPECT_NEAR(scene.geometry().color.fx, 616.0f, 1.0f);
    EXPECT_EQ(scene.geometry().framerate, 60);
    EXPECT_TRUE(scene.source().paced());
    const rs_extrinsics pose = scene.source().depthToColor();
    EXPECT_NEAR(std::hypot(pose.translation[0], pose.translation[1], pose.translation[2]), 0.026f,
                0.001f);
    // Columns of a rotation have unit length; this one is small but there.
    for (int column = 0; column < 3; ++column)
        EXPECT_NEAR(std::hypot(pose.rotation[column * 3], pose.rotation[column * 3 + 1],
                               pose.rotation[column * 3 + 2]),
                    1.0f, 1e-5f);
    EXPECT_GT(pose.rotation[0], 0.999f);
    EXPECT_LT(pose.rotation[0], 1.0f);
}

TEST(SimulatedSource, ScalesToOtherSizes) {
    Scene half("noise=0,scene=resting", {320, 240, 0}, {1920, 1080, 0});
    Scene full("noise=0,scene=resting");
    EXPECT_FLOAT_EQ(half.geometry().depth.fx, 238.0f);
    EXPECT_FLOAT_EQ(half.geometry().depth.ppx * 2.0f, full.geometry().depth.ppx);
    EXPECT_EQ(half.geometry().color.width, 1920);
    EXPECT_NEAR(half.geometry().color.fx, 1386.0f, 0.01f);
    EXPECT_NEAR(half.truth(5).fingers[0].pixel[0] * 2.0f, full.truth(5).fingers[0].pixel[0], 0.01f);
    EXPECT_FLOAT_EQ(half.truth(5).fingers[0].depth, full.truth(5).fingers[0].depth);
    const Pictures pictures = half.pictures(5);
    EXPECT_EQ(pictures.depth.size(), 320u * 240u);
    EXPECT_EQ(pictures.color.size(), 1920u * 1080u * 3u);
}

TEST(SimulatedSource, KeysRestrictTheModes) {
    Scene scene("depth=320x240,color=1280x720,fps=30");
    EXPECT_EQ(scene.width(), 320);
    EXPECT_EQ(scene.geometry().color.width, 1280);
    EXPECT_EQ(scene.geometry().framerate, 30);

    EXPECT_THAT(failureOf("depth=640x480", {320, 240, 0}, {}),
                AllOf(HasSubstr("320x240"), HasSubstr("available: 640x480")));
    EXPECT_THAT(failureOf("color=1920x1080", {}, {640, 480, 0}),
                AllOf(HasSubstr("640x480"), HasSubstr("available: 1920x1080")));
    EXPECT_THAT(failureOf("fps=30", {0, 0, 60}, {}),
                AllOf(HasSubstr("60"), HasSubstr("available: 30")));
    EXPECT_THAT(failureOf("", {0, 0, 60}, {0, 0, 30}), HasSubstr("60 and 30"));
    EXPECT_THAT(failureOf("", {0, 0, 500}, {}), HasSubstr("available: 1 to 240"));
    EXPECT_THAT(failureOf("", {4000, 480, 0}, {}),
                AllOf(HasSubstr("4000x480"), HasSubstr("16x16 to 1920x1080")));
    EXPECT_EQ(failureOf("", {1920, 1080, 0}, {1920, 1080, 0}), "");
}

TEST(SimulatedSource, RejectsWhatItDoesNotKnow) {
    EXPECT_EQ(failureOf(""), "");
    EXPECT_EQ(failureOf("pace=off,fingers=0,noise=0.5"), "");
    const std::string scene = failureOf("scene=dance");
    EXPECT_THAT(scene, HasSubstr("dance"));
    for (const std::string& name : scenes)
        EXPECT_THAT(scene, HasSubstr(name));
    EXPECT_THAT(failureOf("fingers=11"), HasSubstr("fingers"));
    EXPECT_THAT(failureOf("fingers=-1"), HasSubstr("fingers"));
    EXPECT_THAT(failureOf("noise=17"), HasSubstr("noise"));
    EXPECT_THAT(failureOf("noise=-1"), HasSubstr("noise"));
    EXPECT_THAT(failureOf("pace=slow"), HasSubstr("pace"));
    EXPECT_THAT(failureOf("seed=x"), HasSubstr("seed"));
    EXPECT_THAT(failureOf("fps=241"), HasSubstr("fps"));
    EXPECT_THAT(failureOf("depth=8x8"), AllOf(HasSubstr("depth=8x8"), HasSubstr("1920x1080")));
    EXPECT_THAT(failureOf("color=2000x1"), HasSubstr("color=2000x1"));
    EXPECT_THAT(failureOf("colour=640x480"), HasSubstr("colour"));
    EXPECT_THROW(camera::makeSimulatedSource(camera::SourceOptions("simulated", "somewhere", {})),
                 std::runtime_error);
}

// Depth pixel -> space -> colour camera -> colour pixel must lead from a fingertip to its
// picture.
TEST(SimulatedSource, BothImagesShowTheSameScene) {
    Scene scene("scene=resting,fingers=4,noise=0");
    const Pictures pictures = scene.pictures(0);
    const Pictures empty = Scene("scene=empty,noise=0").pictures(0);
    const camera::CameraGeometry& geometry = scene.geometry();
    const auto showsHand = [&](const float(&pixel)[2], float depth) {
        const float z = depth * geometry.depthScale;
        const float point[3] = {(pixel[0] - geometry.depth.ppx) / geometry.depth.fx * z,
                                (pixel[1] - geometry.depth.ppy) / geometry.depth.fy * z, z};
        float moved[3];
        for (int i = 0; i < 3; ++i)
            moved[i] = geometry.depthToColor.rotation[i] * point[0] +
                       geometry.depthToColor.rotation[i + 3] * point[1] +
                       geometry.depthToColor.rotation[i + 6] * point[2] +
                       geometry.depthToColor.translation[i];
        const long column =
            std::lround(moved[0] / moved[2] * geometry.color.fx + geometry.color.ppx);
        const long row = std::lround(moved[1] / moved[2] * geometry.color.fy + geometry.color.ppy);
        const long width = geometry.color.width;
        if (column < 0 || column >= width || row < 0 || row >= geometry.color.height)
            return false;
        const auto start = static_cast<std::ptrdiff_t>((row * width + column) * 3);
        return !std::equal(pictures.color.begin() + start, pictures.color.begin() + start + 3,
                           empty.color.begin() + start);
    };
    const rs_scene_truth truth = scene.truth(0);
    for (int i = 0; i < truth.finger_count; ++i) {
        const rs_scene_finger& finger = truth.fingers[i];
        EXPECT_TRUE(showsHand(finger.pixel, finger.depth)) << i;
        // The finger is some 15 pixels in radius, so both sides belong to it too.
        for (const float aside : {-6.0f, 6.0f}) {
            const float beside[2] = {finger.pixel[0] + aside, finger.pixel[1]};
            EXPECT_TRUE(showsHand(beside, finger.depth + 6.0f)) << i;
        }
        // Above the tip there is table or display.
        const float above[2] = {finger.pixel[0], finger.pixel[1] - 24.0f};
        EXPECT_FALSE(showsHand(above, finger.depth)) << i;
    }
}

TEST(SimulatedSource, PaceOffTurnsPacingOff) {
    EXPECT_FALSE(Scene("pace=off").source().paced());
    EXPECT_TRUE(Scene("pace=on").source().paced());
}

} // namespace
