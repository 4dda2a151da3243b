#include "realsense/simulated_detection.h"

#include <gtest/gtest.h>

// The simulated camera is there to be touched: the shipped settings must find every finger of it,
// where it truly is.
namespace {

using simulated_tests::Account;
using simulated_tests::Detection;
using simulated_tests::play;
using simulated_tests::Scene;
using simulated_tests::shippedFile;

TEST(SimulatedDetection, EveryRestingFingerIsOneBlobWhereItIs) {
    for (const std::string fingers : {"3", "10"}) {
        SCOPED_TRACE(fingers + " fingers");
        const Account account = play("scene=resting,fingers=" + fingers, 40);
        EXPECT_EQ(account.settledFrames, 34);
        EXPECT_EQ(account.settledWithAllBlobs, account.settledFrames);
        EXPECT_EQ(account.contacts, std::stoi(fingers));
        EXPECT_EQ(account.contactsReported, account.contacts);
        EXPECT_EQ(account.strays, 0);
        // All but the first frame report every finger.
        EXPECT_EQ(account.reports, 39 * std::stoi(fingers));
        EXPECT_LT(account.meanPixelError, 2.0);
        EXPECT_LT(account.meanDisplayError, 2.0);
        EXPECT_LT(std::fabs(account.meanHeightError), 2.5);
    }
}

TEST(SimulatedDetection, HoldsForOtherSeedsAndSensors) {
    for (const std::string keys : {"scene=ten,seed=2", "scene=resting,fingers=7,seed=77",
                                   "scene=ten,noise=0", "scene=resting,fingers=1,noise=1.5"}) {
        SCOPED_TRACE(keys);
        const Account account = play(keys, 20);
        EXPECT_EQ(account.settledWithAllBlobs, account.settledFrames);
        EXPECT_EQ(account.contactsReported, account.contacts);
        EXPECT_EQ(account.strays, 0);
        EXPECT_LT(account.meanPixelError, 2.0);
        EXPECT_LT(account.meanDisplayError, 2.0);
    }
}

TEST(SimulatedDetection, EveryTapIsReported) {
    const Account account = play("scene=tapping,fingers=4", 150);
    EXPECT_GT(account.contacts, 7);
    EXPECT_EQ(account.contactsReported, account.contacts);
    EXPECT_LE(account.strays, account.reports / 100);
    EXPECT_LT(account.meanPixelError, 3.0);
}

TEST(SimulatedDetection, DraggedFingersStayApartAndAreFollowed) {
    const Account account = play("scene=dragging,fingers=10", 100);
    EXPECT_EQ(account.contactsReported, 10);
    EXPECT_GE(account.settledWithAllBlobs, account.settledFrames * 99 / 100);
    EXPECT_LE(account.strays, account.reports / 100);
    EXPECT_LT(account.meanPixelError, 3.0);
    EXPECT_LT(account.meanDisplayError, 2.0);
}

TEST(SimulatedDetection, TheDefaultStoryIsReportedFromComingToLeaving) {
    // At half the frame rate touches trail twice as far behind.
    const Account account = play("scene=demo,fps=30", 16 * 30);
    EXPECT_EQ(account.contacts, 12); // each finger comes down once and taps three times
    EXPECT_EQ(account.contactsReported, account.contacts);
    EXPECT_GE(account.settledWithAllBlobs, account.settledFrames * 98 / 100);
    EXPECT_LE(account.strays, account.reports / 100);
    EXPECT_LT(account.meanPixelError, 5.0);
}

TEST(SimulatedDetection, TheDefaultStoryOpensWithPreciseTouches) {
    const Account account = play("scene=demo", 5 * 60);
    EXPECT_EQ(account.contactsReported, account.contacts);
    EXPECT_GT(account.reports, 400);
    EXPECT_LT(account.meanPixelError, 2.5);
    EXPECT_LT(account.meanDisplayError, 2.0);
}

TEST(SimulatedDetection, CrossingFingersMergeForAWhile) {
    const Account account = play("scene=crossing,fingers=2", 180);
    EXPECT_EQ(account.contactsReported, 2);
    EXPECT_LT(account.settledWithAllBlobs, account.settledFrames);
    EXPECT_GT(account.settledWithAllBlobs, account.settledFrames * 3 / 4);
}

TEST(SimulatedDetection, AnEmptySceneHasNoTouches) {
    const Account account = play("scene=empty", 20);
    EXPECT_EQ(account.reports, 0);
    EXPECT_EQ(account.settledWithAllBlobs, account.settledFrames);
}

TEST(SimulatedDetection, AFlatHandIsNoFingertip) {
    Scene scene("scene=flat,fingers=5");
    Detection detection(shippedFile("touch.json"), scene.width(), scene.height());
    detection.detect(scene.depth(0));
    int widest = 0;
    for (const QVR::cImageBlob& blob : detection.blobs.blobs)
        if (blob.valid)
            widest = std::max(widest, static_cast<int>(blob.maxY) - static_cast<int>(blob.minY));
    EXPECT_GT(widest, 60); // a tip is some 25 rows high
}

// The files that belong to the scene carry true positions into display space.
TEST(SimulatedCalibration, MapsTheTruthToTheDisplay) {
    const QVR::calibrationManager calibration = simulated_tests::shippedCalibration();
    int compared = 0;
    for (const std::string keys :
         {"scene=demo,fingers=10", "scene=crossing,fingers=10", "scene=dragging,fingers=10"}) {
        Scene scene(keys);
        for (std::uint64_t frame = 0; frame < 960; frame += 3) {
            const rs_scene_truth truth = scene.truth(frame);
            for (int i = 0; i < truth.finger_count; ++i) {
                const rs_scene_finger& finger = truth.fingers[i];
                if (finger.touching == 0)
                    continue;
                QVR::Vector3 point{finger.pixel[0], finger.pixel[1], finger.depth};
                calibration.calibrateVector(point);
                ASSERT_NEAR(point.x, static_cast<double>(finger.display[0]), 0.2);
                ASSERT_NEAR(point.y, static_cast<double>(finger.display[1]), 0.2);
                ASSERT_NEAR(point.z, static_cast<double>(finger.display[2]), 0.2);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 5000);
}

TEST(SimulatedCalibration, HoldsAllOverTheTouchVolume) {
    const QVR::calibrationManager calibration = simulated_tests::shippedCalibration();
    const rs_intrinsics camera = camera::simulated::depthIntrinsics(640, 480);
    for (int units = 1601; units < 2240; units += 58)
        for (int row = 0; row < 480; row += 37)
            for (int column = 0; column < 640; column += 41) {
                const double z = units / camera::simulated::unitsPerMillimeter;
                const camera::simulated::Vector point{
                    (column - static_cast<double>(camera.ppx)) / static_cast<double>(camera.fx) * z,
                    (row - static_cast<double>(camera.ppy)) / static_cast<double>(camera.fy) * z,
                    z};
                const auto expected = camera::simulated::display().fromCamera(point);
                QVR::Vector3 mapped{static_cast<double>(column), static_cast<double>(row),
                                    static_cast<double>(units)};
                calibration.calibrateVector(mapped);
                ASSERT_NEAR(mapped.x, expected.x, 0.2);
                ASSERT_NEAR(mapped.y, expected.y, 0.2);
                ASSERT_NEAR(mapped.z, expected.z, 0.2);
            }
}

// A host looks for the projection map at the volume's root, the camera server in its folder.
TEST(SimulatedCalibration, TheProjectionMapIsAlsoAtTheVolumesRoot) {
    EXPECT_EQ(simulated_tests::fileContent(std::string(QVR_EXAMPLES_DIR) +
                                           "/simulated/touch_projectionMap.json"),
              shippedFile("touch_projectionMap.json"));
}

void expectEverySetting(const json11::Json& touch) {
    for (const char* key :
         {"colorResX", "colorResY", "depthResX", "depthResY", "nearClipMeters", "farClipMeters"})
        EXPECT_TRUE(touch[key].is_number()) << key;
    for (const char* key : {"color", "depth", "processed", "touch", "autoClose"})
        EXPECT_TRUE(touch["streaming"][key].is_bool()) << key;
    for (const char* key : {"port", "fps", "streamAlignment"})
        EXPECT_TRUE(touch["streaming"][key].is_number()) << key;
    EXPECT_TRUE(touch["touchDetection"]["confidenceThreshold"].is_number());
    for (const char* key :
         {"maxDiffNear", "maxDiffFar", "blobLineAssocLimitU", "blobLineAssocLimitV",
          "flatnessRadius", "flatnessThreshold", "biasStrength", "minBlobSize", "minBlobSpace",
          "allowedBlobNoiseGap", "borderClipTop", "borderClipBottom", "borderClipLeft",
          "borderClipRight"})
        EXPECT_TRUE(touch["touchDetection"]["forwardFacing"][key].is_number()) << key;
}

TEST(ExampleSettings, LeaveNothingToADefault) {
    std::string error;
    const json11::Json touch = json11::Json::parse(shippedFile("touch.json"), error);
    expectEverySetting(touch);
    EXPECT_EQ(touch["nearClipMeters"].number_value() * 1000.0, camera::simulated::nearClip);
    EXPECT_EQ(touch["farClipMeters"].number_value() * 1000.0, camera::simulated::farClip);
    const json11::Json client = json11::Json::parse(shippedFile("touch_client.json"), error);
    EXPECT_EQ(client["ip"].string_value(), "127.0.0.1");
    EXPECT_EQ(client["port"].number_value(), touch["streaming"]["port"].number_value());
}

// Settings for recorded pictures of a hand: there is no display, so positions stay pixels.
TEST(ExampleSettings, OfTheHandKeepPixels) {
    const std::string text = simulated_tests::fileContent(std::string(QVR_EXAMPLES_DIR) +
                                                          "/hand/QVR_calibration/touch.json");
    std::string error;
    expectEverySetting(json11::Json::parse(text, error));
    QVR::calibrationBlock block;
    ASSERT_EQ(block.importCellCalibration(text, 8000.0f), 0);
    QVR::Vector3 point{123.0, 321.0, 4000.0};
    block.calibrateVector(point);
    EXPECT_NEAR(point.x, 123.0, 1e-9);
    EXPECT_NEAR(point.y, 321.0, 1e-9);
    EXPECT_NEAR(point.z, 4000.0, 1e-9);
}

} // namespace
