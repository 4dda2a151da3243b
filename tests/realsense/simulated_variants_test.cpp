#include "realsense/simulated_scene.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Sensors and surfaces other than the usual ones, and stories that measure.
namespace {

using simulated_tests::options;
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

std::size_t lostIn(const std::vector<std::uint16_t>& depth) {
    return static_cast<std::size_t>(std::count(depth.begin(), depth.end(), 0));
}

TEST(SimulatedHoles, AreAsManyAsAskedFor) {
    const auto lost = [](const std::string& keys) {
        Scene scene("scene=empty,noise=0" + keys);
        std::size_t count = 0;
        for (std::uint64_t frame = 0; frame < 4; ++frame)
            count += lostIn(scene.depth(frame));
        return static_cast<double>(count) / (4.0 * 80.0 * 60.0); // pixels by patch
    };
    EXPECT_EQ(lost(""), 0.0);
    // 1 to 4 pixels wide and high: 2.5 x 2.5 on average.
    EXPECT_NEAR(lost(",holes=5"), 0.05 * 6.25, 0.03);
    EXPECT_NEAR(lost(",holes=100"), 6.25, 0.3);
}

TEST(SimulatedHoles, AreRectanglesElsewhereInEveryFrame) {
    Scene scene("scene=empty,noise=0,holes=100");
    const auto first = scene.depth(0);
    EXPECT_NE(first, scene.depth(1));
    EXPECT_EQ(first, scene.depth(0));
    for (std::size_t top = 0; top < 480; top += 8) {
        for (std::size_t left = 0; left < 640; left += 8) {
            std::set<std::size_t> rows;
            std::set<std::size_t> columns;
            std::size_t lost = 0;
            for (std::size_t i = 0; i < 64; ++i) {
                if (first[(top + i / 8) * 640 + left + i % 8] == 0) {
                    rows.insert(i / 8);
                    columns.insert(i % 8);
                    ++lost;
                }
            }
            ASSERT_EQ(lost, rows.size() * columns.size()) << left << ", " << top;
            ASSERT_TRUE(rows.size() >= 1 && rows.size() <= 4 && columns.size() >= 1 &&
                        columns.size() <= 4);
            ASSERT_EQ(*rows.rbegin() - *rows.begin() + 1, rows.size());
        }
    }
}

TEST(SimulatedHoles, ComeOnTopOfTheNoise) {
    Scene with("scene=resting,holes=20");
    Scene without("scene=resting");
    const auto holed = with.depth(3);
    const auto whole = without.depth(3);
    std::size_t more = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (holed[i] != whole[i]) {
            ASSERT_EQ(holed[i], 0);
            ++more;
        }
    }
    EXPECT_GT(more, 3000u);
}

TEST(SimulatedBend, IsStatedForTheCornersAtTwentyCentimetres) {
    for (const double bend : {25.0, -25.0}) {
        Scene flat("scene=empty,noise=0");
        Scene bent("scene=empty,noise=0,bend=" + std::to_string(bend));
        const auto straight = flat.depth(0);
        const auto curved = bent.depth(0);
        const auto ratio = [&](std::size_t pixel) {
            return static_cast<double>(curved[pixel]) / static_cast<double>(straight[pixel]);
        };
        for (const std::size_t corner : {0u, 639u, 479u * 640u, 479u * 640u + 639u})
            EXPECT_NEAR(ratio(corner), 1.0 + bend / 200.0, 0.001);
        EXPECT_NEAR(ratio(240 * 640 + 320), 1.0, 0.001);
        // Halfway to the corner it is a quarter.
        EXPECT_NEAR(ratio(120 * 640 + 160), 1.0 + bend / 800.0, 0.002);
    }
}

TEST(SimulatedBend, IsOfTheSensorAndNotOfTheTruth) {
    Scene bent("scene=everywhere,noise=0,bend=25");
    Scene flat("scene=everywhere,noise=0");
    int compared = 0;
    for (std::uint64_t frame = 12; frame < 48 * 20; frame += 48) {
        const rs_scene_finger& finger = bent.truth(frame).fingers[0];
        EXPECT_EQ(finger.depth, flat.truth(frame).fingers[0].depth);
        EXPECT_EQ(finger.touching, 1) << frame;
        const double x = (static_cast<double>(finger.pixel[0]) - 319.5) / 319.5;
        const double y = (static_cast<double>(finger.pixel[1]) - 239.5) / 239.5;
        const double square =
            (x * x * 319.5 * 319.5 + y * y * 239.5 * 239.5) / (319.5 * 319.5 + 239.5 * 239.5);
        const auto pixel = static_cast<std::size_t>(std::lround(finger.pixel[1]) * 640 +
                                                    std::lround(finger.pixel[0]));
        EXPECT_NEAR(bent.depth(frame)[pixel],
                    static_cast<double>(finger.depth) * (1.0 + 0.125 * square), 3.0);
        ++compared;
    }
    EXPECT_EQ(compared, 20);
}

TEST(SimulatedTilt, LeansTheSurfaceAndTheRestingFingers) {
    Scene level("scene=resting,noise=0,fingers=2");
    Scene tilted("scene=resting,noise=0,fingers=2,tilt=4");
    const double slope = std::tan(4.0 * 3.14159265358979 / 180.0);
    for (int i = 0; i < 2; ++i) {
        const rs_scene_finger before = level.truth(0).fingers[i];
        const rs_scene_finger after = tilted.truth(0).fingers[i];
        const double x = (static_cast<double>(before.pixel[0]) - 314.25) / 476.0 *
                         static_cast<double>(before.depth) / 8.0;
        EXPECT_GT(std::fabs(x), 50.0);
        EXPECT_NEAR(static_cast<double>(after.depth) - static_cast<double>(before.depth),
                    8.0 * slope * x, 0.1);
        EXPECT_EQ(after.touching, 1);
    }
    // The right side of the surface leans away.
    const auto depth = Scene("scene=empty,noise=0,tilt=4").depth(0);
    const auto straight = Scene("scene=empty,noise=0").depth(0);
    EXPECT_GT(depth[240 * 640 + 639], straight[240 * 640 + 639] + 100);
    EXPECT_LT(depth[240 * 640], straight[240 * 640] - 100);
}

TEST(SimulatedTilt, LeansTheFarSideOfTheTouchVolume) {
    Scene tilted("scene=tapping,noise=0,fingers=4,tilt=8");
    Scene level("scene=tapping,noise=0,fingers=4");
    for (std::uint64_t frame = 0; frame < 200; ++frame) {
        const rs_scene_truth one = tilted.truth(frame);
        const rs_scene_truth other = level.truth(frame);
        for (int i = 0; i < 4; ++i)
            ASSERT_EQ(one.fingers[i].touching, other.fingers[i].touching) << frame << " " << i;
    }
}

TEST(SimulatedTilt, DisplayPositionsFollowTheDisplay) {
    Scene tilted("scene=resting,tilt=4");
    const rs_scene_finger finger = tilted.truth(0).fingers[0];
    const double z = static_cast<double>(finger.depth) / 8.0;
    const camera::simulated::Vector point{
        (static_cast<double>(finger.pixel[0]) - 314.25) / 476.0 * z,
        (static_cast<double>(finger.pixel[1]) - 242.5) / 476.0 * z, z};
    const auto expected = camera::simulated::displayAt(430.0, 4.0).fromCamera(point);
    EXPECT_NEAR(finger.display[0], expected.x, 0.01);
    EXPECT_NEAR(finger.display[1], expected.y, 0.01);
    EXPECT_NEAR(finger.display[2], expected.z, 0.01);
}

TEST(SimulatedSurface, LiesAsFarAwayAsAskedFor) {
    const auto depth = Scene("scene=empty,noise=0,surface=300").depth(0);
    EXPECT_NEAR(depth[240 * 640 + 320], 2400.0, 12.0);
    // Behind the touch volume everywhere, though not by much.
    const auto [nearest, farthest] = std::minmax_element(depth.begin(), depth.end());
    EXPECT_NEAR((*nearest - 2240) / 8.0, 8.0, 1.0);
    EXPECT_NEAR((*farthest - 2240) / 8.0, 32.0, 1.0);
}

TEST(SimulatedDragging, KeepsTheSpeedAskedFor) {
    for (const double speed : {0.1, 0.5, 2.0}) {
        Scene scene("scene=dragging,fingers=1,speed=" + std::to_string(speed));
        double least = 1e9;
        double most = -1e9;
        int full = 0;
        for (std::uint64_t frame = 1; frame < 400; ++frame) {
            const rs_scene_finger before = scene.truth(frame - 1).fingers[0];
            const rs_scene_finger now = scene.truth(frame).fingers[0];
            ASSERT_EQ(now.touching, 1);
            const double step =
                std::hypot(now.display[0] - before.display[0], now.display[1] - before.display[1]);
            full += std::fabs(step - speed * 1000.0 / 60.0) < 0.2 + 0.01 * step ? 1 : 0;
            least = std::min(least, static_cast<double>(now.pixel[0]));
            most = std::max(most, static_cast<double>(now.pixel[0]));
        }
        EXPECT_GT(full, speed > 1.0 ? 300 : 370) << speed; // all but the turns
        EXPECT_GT(most - least, 300.0);
        EXPECT_GT(least, 60.0);
        EXPECT_LT(most, 580.0);
    }
}

TEST(SimulatedDragging, KeepsBothHandsInThePicture) {
    Scene scene("scene=dragging,fingers=10,speed=1");
    for (std::uint64_t frame = 0; frame < 60; ++frame) {
        const rs_scene_truth truth = scene.truth(frame);
        for (int i = 0; i < truth.finger_count; ++i)
            ASSERT_EQ(truth.fingers[i].touching, 1) << frame << " " << i;
    }
}

TEST(SimulatedEverywhere, TapsAllOverThePicture) {
    Scene scene("scene=everywhere");
    std::set<int> regions;
    int contacts = 0;
    bool before = false;
    for (std::uint64_t frame = 0; frame < 48 * 60; ++frame) {
        const rs_scene_finger finger = scene.truth(frame).fingers[0];
        contacts += finger.touching == 1 && !before ? 1 : 0;
        before = finger.touching == 1;
        if (before) {
            regions.insert(static_cast<int>(finger.pixel[0]) / 160 +
                           10 * (static_cast<int>(finger.pixel[1]) / 160));
        }
    }
    EXPECT_EQ(contacts, 60);
    EXPECT_EQ(regions.size(), 12u);
    EXPECT_NE(Scene("scene=everywhere,seed=2").truth(12).fingers[0].pixel[0],
              scene.truth(12).fingers[0].pixel[0]);
}

TEST(SimulatedCalibration, IsElsewhereInTheTouchVolumeInEveryFrame) {
    Scene scene("scene=calibration");
    std::set<int> regions;
    float last = 0.0f;
    for (std::uint64_t frame = 0; frame < 600; ++frame) {
        const rs_scene_finger finger = scene.truth(frame).fingers[0];
        ASSERT_EQ(finger.touching, 1) << frame;
        ASSERT_NE(finger.pixel[0], last) << frame;
        last = finger.pixel[0];
        regions.insert(static_cast<int>(finger.pixel[0]) / 160 +
                       10 * (static_cast<int>(finger.pixel[1]) / 160) +
                       100 * ((static_cast<int>(finger.depth) - 1600) / 214));
    }
    EXPECT_EQ(regions.size(), 36u);
}

TEST(SimulatedVariants, SayWhatTheyAccept) {
    EXPECT_EQ(failureOf("holes=5,bend=-25,tilt=4,surface=300"), "");
    EXPECT_EQ(failureOf("scene=dragging,speed=2"), "");
    EXPECT_THAT(failureOf("holes=101"), HasSubstr("a number from 0 to 100"));
    EXPECT_THAT(failureOf("bend=51"), HasSubstr("a number from -50 to 50"));
    EXPECT_THAT(failureOf("tilt=16"), HasSubstr("a number from -15 to 15"));
    EXPECT_THAT(failureOf("surface=200"), HasSubstr("a number from 285 to 1000"));
    EXPECT_THAT(failureOf("scene=dragging,speed=0"), HasSubstr("a number from 0.01 to 5"));
    EXPECT_THAT(failureOf("scene=tapping,speed=2"),
                AllOf(HasSubstr("speed belongs to scene=dragging"), HasSubstr("scene=tapping")));
    EXPECT_THAT(failureOf("speed=2"), HasSubstr("not to scene=demo"));
    for (const char* key : {"speed", "holes", "bend", "tilt", "surface"})
        EXPECT_THAT(failureOf("hole=5"), HasSubstr(key));
}

} // namespace
