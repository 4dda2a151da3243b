// The whole pipeline on the simulated camera: real frames, real detection, known truth.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/utils.h"
#include "support/LogCapture.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryVolume.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>
#include <librealsense/camera_source.h>
#include <librealsense/rs.hpp>

using QVR::cameraManager;

namespace {

// Small by default: most tests are about sizes and states, not about pictures.
struct Sizes {
    int colorWidth = 80;
    int colorHeight = 60;
    int depthWidth = 160;
    int depthHeight = 120;
    int alignment = 0;
    int fps = 60;
};

// Settings for the simulated scene without a calibration grid: touches stay in camera space.
std::string document(const Sizes& sizes) {
    const auto pair = [](const char* key, int value) {
        return "\"" + std::string(key) + "\": " + std::to_string(value) + ", ";
    };
    return "{" + pair("colorResX", sizes.colorWidth) + pair("colorResY", sizes.colorHeight) +
           pair("depthResX", sizes.depthWidth) + pair("depthResY", sizes.depthHeight) + R"(
"nearClipMeters": 0.2, "farClipMeters": 0.28,
"streaming": {"color": true, "depth": true, "processed": true, "touch": true, "fps": )" +
           std::to_string(sizes.fps) + R"(, "streamAlignment": )" +
           std::to_string(sizes.alignment) + R"(},
"touchDetection": {"confidenceThreshold": 2, "forwardFacing": {
    "maxDiffNear": 45, "maxDiffFar": 36, "blobLineAssocLimitU": 16, "blobLineAssocLimitV": 4,
    "flatnessRadius": 3, "flatnessThreshold": 30, "biasStrength": 45, "minBlobSize": 11,
    "minBlobSpace": 4, "allowedBlobNoiseGap": 3, "borderClipTop": 8, "borderClipBottom": 8,
    "borderClipLeft": 8, "borderClipRight": 8}}})";
}

class PipelineOnSimulatedCamera : public testing::Test {
  protected:
    void TearDown() override {
        if (cameraManager::get() != nullptr) {
            cameraManager::destroy();
        }
        select(nullptr);
    }

    static void select(const char* uri) {
        rs_error* error = nullptr;
        rs_select_camera_source(uri, &error);
        rs::error::handle(error);
    }

    cameraManager& start(const char* uri, const std::string& text) {
        select(uri);
        volume.write("QVR_calibration/touch.json", text);
        cameraManager::init();
        cameraManager& manager = *cameraManager::get();
        // The units are known only now; the clip distances of the document can count.
        std::string error;
        json11::Json settings = json11::Json::parse(text, error);
        manager.blobs->loadJson(settings);
        return manager;
    }

    rs_scene_truth truth() const {
        rs_scene_truth scene = {};
        rs_error* error = nullptr;
        rs_get_scene_truth(cameraManager::get()->camera->device, &scene, &error);
        rs::error::handle(error);
        return scene;
    }

    support::ScopedEnvironment noCamera{"QVR_CAMERA", nullptr};
    support::TemporaryVolume volume;
    support::LogCapture log;
    QVR::networkFrameData frame;
};

TEST_F(PipelineOnSimulatedCamera, DeliversFramesOfTheAnnouncedSizes) {
    Sizes sizes;
    sizes.colorWidth = 960;
    sizes.colorHeight = 540;
    sizes.depthWidth = 640;
    sizes.depthHeight = 480;
    cameraManager& manager = start("simulated:pace=off", document(sizes));
    ASSERT_EQ(cameraManager::update(frame), 0);
    ASSERT_NE(frame.color, nullptr);
    ASSERT_NE(frame.depth, nullptr);
    ASSERT_NE(frame.processed, nullptr);
    ASSERT_NE(frame.touches, nullptr);
    QVR::ProtocolHeader header;
    EXPECT_EQ(manager.getNetworkFrameInfo(header),
              960 * 540 * 3 + 640 * 480 * 2 + 640 * 480 + 10 * 28);
    EXPECT_EQ(header.oneMeterValue, 8000U);
    // Readable to the last byte, and a picture rather than nothing.
    const auto* color = frame.color;
    EXPECT_NE(*std::max_element(color, color + 960 * 540 * 3), 0);
    const auto* depth = frame.depth;
    EXPECT_NE(*std::max_element(depth, depth + 640 * 480), 0);
}

TEST_F(PipelineOnSimulatedCamera, TouchesAreWhereTheFingersAre) {
    Sizes sizes;
    sizes.depthWidth = 640;
    sizes.depthHeight = 480;
    sizes.fps = 20;
    cameraManager& manager =
        start("simulated:scene=resting,fingers=3,pace=off,seed=7", document(sizes));
    manager.setOutputCalibratedTouches(false);
    int checked = 0;
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(cameraManager::update(frame), 0);
        if (i < 50) {
            continue; // let the fingers arrive and come to rest
        }
        const rs_scene_truth scene = truth();
        ASSERT_EQ(scene.known, 1);
        ASSERT_EQ(scene.finger_count, 3);
        int touching = 0;
        for (int f = 0; f < scene.finger_count; ++f) {
            const rs_scene_finger& finger = scene.fingers[f];
            if (finger.touching == 0) {
                continue;
            }
            ++touching;
            double nearest = 1e9;
            for (int slot = 0; slot < 10; ++slot) {
                if (frame.touches[slot].active == 1) {
                    nearest =
                        std::min(nearest, std::hypot(frame.touches[slot].x - finger.pixel[0],
                                                     frame.touches[slot].y - finger.pixel[1]));
                }
            }
            // A fingertip is some 30 pixels wide.
            EXPECT_LT(nearest, 12.0) << "finger " << finger.id << " in frame " << scene.frame;
            ++checked;
        }
        const long active = std::count_if(frame.touches, frame.touches + 10,
                                          [](const auto& touch) { return touch.active == 1; });
        EXPECT_EQ(active, touching);
    }
    EXPECT_EQ(checked, 3 * 10);
}

TEST_F(PipelineOnSimulatedCamera, ShippedSettingsPutTouchesOnTheDisplay) {
    const std::string folder = QVR_SIMULATED_SETTINGS;
    std::string settings = QVR::utils::readFileContent(folder + "/touch.json");
    const std::string rate = "\"fps\": 60";
    ASSERT_NE(settings.find(rate), std::string::npos);
    // The story takes the same seconds in fewer frames.
    settings.replace(settings.find(rate), rate.size(), "\"fps\": 20");
    volume.write("QVR_calibration/touch_projectionMap.json",
                 QVR::utils::readFileContent(folder + "/touch_projectionMap.json"));
    cameraManager& manager = start("simulated:scene=resting,fingers=3,pace=off,seed=7", settings);
    ASSERT_NE(manager.projectionMap, nullptr);
    int checked = 0;
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(cameraManager::update(frame), 0);
        if (i < 50) {
            continue; // let the fingers arrive and come to rest
        }
        const rs_scene_truth scene = truth();
        for (int f = 0; f < scene.finger_count; ++f) {
            const rs_scene_finger& finger = scene.fingers[f];
            double nearest = 1e9;
            for (int slot = 0; slot < 10; ++slot) {
                if (frame.touches[slot].active == 1) {
                    nearest =
                        std::min(nearest, std::hypot(frame.touches[slot].x - finger.display[0],
                                                     frame.touches[slot].y - finger.display[1]));
                }
            }
            // Millimetres; less than half a fingertip.
            EXPECT_LT(nearest, 8.0) << "finger " << finger.id << " in frame " << scene.frame;
            checked += finger.touching;
        }
    }
    EXPECT_EQ(checked, 3 * 10);
}

TEST_F(PipelineOnSimulatedCamera, AnEmptySceneHasNoTouches) {
    Sizes sizes;
    sizes.depthWidth = 640;
    sizes.depthHeight = 480;
    start("simulated:scene=empty,pace=off", document(sizes));
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(cameraManager::update(frame), 0);
        for (int slot = 0; slot < 10; ++slot) {
            EXPECT_EQ(frame.touches[slot].active, 0);
        }
    }
}

TEST_F(PipelineOnSimulatedCamera, AlignedImagesHaveTheSizeOfTheirTarget) {
    Sizes sizes;
    sizes.colorWidth = 320;
    sizes.colorHeight = 180;
    sizes.alignment = 2;
    cameraManager& depthAligned = start("simulated:pace=off", document(sizes));
    EXPECT_EQ(depthAligned.depthResX, 320U);
    EXPECT_EQ(depthAligned.depthResY, 180U);
    EXPECT_EQ(cameraManager::update(frame), 0);
    cameraManager::destroy();

    sizes.alignment = 1;
    cameraManager& colorAligned = start("simulated:pace=off", document(sizes));
    EXPECT_EQ(colorAligned.colorResX, 160U);
    EXPECT_EQ(colorAligned.colorResY, 120U);
    EXPECT_EQ(colorAligned.colorBuffer.size(), 160U * 120U * 3U);
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(PipelineOnSimulatedCamera, SizesOfZeroTakeWhatTheCameraHas) {
    cameraManager& manager =
        start("simulated:depth=320x240,color=400x300,pace=off", document({0, 0, 0, 0, 0}));
    EXPECT_EQ(manager.depthResX, 320U);
    EXPECT_EQ(manager.colorResY, 300U);
    EXPECT_EQ(manager.blobs->width, 320U);
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(PipelineOnSimulatedCamera, AModeThatTheCameraLacksLeavesAManagerWithoutFrames) {
    cameraManager& manager = start("simulated:depth=320x240,pace=off", document(Sizes()));
    EXPECT_THAT(log.messages(), testing::IsSupersetOf({"Failed to start camera streams.",
                                                       "Failed to initialize the camera."}));
    EXPECT_EQ(cameraManager::update(frame), 1);
    // Another document brings the same camera up.
    Sizes sizes;
    sizes.depthWidth = 320;
    sizes.depthHeight = 240;
    EXPECT_EQ(manager.setCalibrationData(document(sizes)), 0);
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(PipelineOnSimulatedCamera, FramesFailWhileTheBuffersHaveOtherSizes) {
    cameraManager& manager = start("simulated:pace=off", document(Sizes()));
    ASSERT_EQ(cameraManager::update(frame), 0);
    Sizes sizes;
    sizes.depthWidth = 800;
    manager.setCalibrationData(document(sizes));
    EXPECT_EQ(cameraManager::update(frame), 1);
    sizes.depthWidth = 160;
    sizes.colorHeight = 61;
    manager.setCalibrationData(document(sizes));
    EXPECT_EQ(cameraManager::update(frame), 1);
    manager.setCalibrationData(document(Sizes()));
    EXPECT_EQ(cameraManager::update(frame), 0);
}

TEST_F(PipelineOnSimulatedCamera, ACameraOpenedAnewAtAnotherSizeKeepsRunning) {
    cameraManager& manager = start("simulated:pace=off", document(Sizes()));
    for (const int width : {80, 320, 160}) {
        ASSERT_TRUE(manager.toggleCamera(false));
        Sizes sizes;
        sizes.depthWidth = width;
        sizes.depthHeight = width * 3 / 4;
        ASSERT_EQ(manager.setCalibrationData(document(sizes)), 0);
        EXPECT_EQ(cameraManager::update(frame), 0) << width;
        EXPECT_EQ(manager.blobs->mask.size(), static_cast<std::size_t>(width * width * 3 / 4));
    }
}

TEST_F(PipelineOnSimulatedCamera, StopsAndStartsAgain) {
    cameraManager& manager = start("simulated:scene=resting,pace=off", document(Sizes()));
    ASSERT_EQ(cameraManager::update(frame), 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(manager.toggleCamera(false));
        EXPECT_FALSE(manager.isCameraStreaming());
        EXPECT_EQ(cameraManager::update(frame), 1);
        EXPECT_EQ(frame.depth, nullptr);
        EXPECT_NE(frame.touches, nullptr);
        EXPECT_TRUE(manager.toggleCamera(true));
        EXPECT_EQ(cameraManager::update(frame), 0);
        EXPECT_NE(frame.depth, nullptr);
    }
}

TEST_F(PipelineOnSimulatedCamera, FillsTexturesFromItsFrames) {
    Sizes sizes;
    sizes.depthWidth = 320;
    sizes.depthHeight = 240;
    cameraManager& manager = start("simulated:pace=off", document(sizes));
    std::vector<unsigned char> color(80 * 60 * 4);
    std::vector<unsigned char> depth(320 * 240 * 4);
    std::vector<unsigned char> processed(320 * 240 * 4);
    manager.colorTexture = color.data();
    manager.depthTexture = depth.data();
    manager.processedTexture = processed.data();
    cameraManager::processedTextureDebug = true;
    ASSERT_EQ(cameraManager::update(frame), 0);
    manager.updateColorTexture();
    manager.updateDepthTexture();
    manager.updateProcessedTexture();
    cameraManager::processedTextureDebug = false;
    for (std::size_t i = 0; i < 320 * 240; ++i) {
        ASSERT_EQ(depth[4 * i] + 256 * depth[4 * i + 1], frame.depth[i]);
        ASSERT_EQ(processed[4 * i], frame.processed[i]);
    }
    for (std::size_t i = 0; i < 80 * 60; ++i) {
        ASSERT_EQ(color[4 * i + 1], frame.color[3 * i + 1]);
    }
}

TEST_F(PipelineOnSimulatedCamera, SendsReducedDepthImages) {
    cameraManager& manager = start("simulated:pace=off", document(Sizes()));
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(160, 120, 40, 30);
    ASSERT_EQ(cameraManager::update(frame), 0);
    long long count = 0;
    const unsigned short* full = manager.camera->getDepthFrame(count);
    for (int row = 0; row < 30; ++row) {
        for (int column = 0; column < 40; ++column) {
            ASSERT_EQ(frame.depth[row * 40 + column], full[row * 4 * 160 + column * 4]);
        }
    }
}

TEST_F(PipelineOnSimulatedCamera, DescribesItself) {
    cameraManager& manager = start("simulated:pace=off", document(Sizes()));
    std::string error = "noError";
    const json11::Json info = json11::Json::parse(manager.getCameraInfoJson(), error);
    EXPECT_EQ(error, "noError");
    EXPECT_GT(info["depthIntrinsics"]["focalLengthX"].number_value(), 0.0);
    EXPECT_NEAR(info["depthIntrinsics"]["centerOffsetX"].number_value(), 80.0, 10.0);
    EXPECT_NE(info["depthToColorExtrinsics4x4"]["tX"].number_value(), 0.0);
}

TEST_F(PipelineOnSimulatedCamera, ACameraThatAppearsLaterIsFoundAfterDestroyAndInit) {
    volume.write("QVR_calibration/touch.json", document(Sizes()));
    cameraManager::init();
    if (cameraManager::get()->camera->device != nullptr) {
        GTEST_SKIP() << "this machine has a depth camera";
    }
    EXPECT_EQ(cameraManager::update(frame), 1);
    cameraManager::destroy();
    for (int i = 0; i < 3; ++i) {
        start("simulated:pace=off", document(Sizes()));
        EXPECT_EQ(cameraManager::update(frame), 0);
        cameraManager::destroy();
        EXPECT_EQ(cameraManager::update(frame), -5);
    }
}

} // namespace
