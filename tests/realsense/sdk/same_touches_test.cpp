// One scene as three cameras: simulated, recorded with the SDK's recorder, and as a folder of
// pictures. The pipeline must find the same touches in all of them, byte for byte.
#include "camera/cameraManager.h"
#include "detection/blobManager.h"
#include "realsense/sdk/SoftwareCamera.h"
#include "realsense/support/PictureFolder.h"
#include "realsense/support/calls.h"
#include "source_uri.h"
#include "support/LogCapture.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryVolume.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <json11.hpp>

using namespace camera_test;
using QVR::cameraManager;

namespace {

constexpr std::uint64_t frames = 60;
constexpr const char* scene = "simulated:scene=dragging,fingers=2,seed=5,pace=off";

constexpr const char* settings = R"({"colorResX": 160, "colorResY": 120,
"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.2, "farClipMeters": 0.28,
"streaming": {"color": true, "depth": true, "processed": true, "touch": true, "fps": 20},
"touchDetection": {"confidenceThreshold": 2, "forwardFacing": {
    "maxDiffNear": 45, "maxDiffFar": 36, "blobLineAssocLimitU": 16, "blobLineAssocLimitV": 4,
    "flatnessRadius": 3, "flatnessThreshold": 30, "biasStrength": 45, "minBlobSize": 11,
    "minBlobSpace": 4, "allowedBlobNoiseGap": 3, "borderClipTop": 8, "borderClipBottom": 8,
    "borderClipLeft": 8, "borderClipRight": 8}}})";

class SameTouches : public testing::Test {
  protected:
    void SetUp() override {
        source = camera::makeSource(scene);
        film.geometry = source->configure({640, 480, 20}, {160, 120, 20});
        film.paint = [this](std::uint64_t number, std::span<std::uint16_t> depth,
                            std::span<std::uint8_t> color) {
            source->render(number, depth, color);
        };
    }
    void TearDown() override { call(rs_select_camera_source, static_cast<const char*>(nullptr)); }

    std::string asBag() {
        // The file knows neither distortion nor pose; the pictures are what counts.
        recordBag(folder.file("scene.bag"), film, frames);
        return "bag:" + folder.file("scene.bag") + ",pace=off";
    }

    std::string asPictures() {
        const rs_intrinsics& lens = film.geometry.depth;
        std::vector<std::uint16_t> depth(640 * 480);
        std::vector<std::uint8_t> color(160 * 120 * 3);
        for (std::uint64_t number = 0; number < frames; ++number) {
            film.paint(number, depth, color);
            const std::string name = std::to_string(1000 + number) + ".png";
            folder.writeDepth("depth_" + name, lens.width, lens.height, depth);
            folder.writeColor("color_" + name, 160, 120, color);
        }
        std::ostringstream uri;
        uri.imbue(std::locale::classic());
        uri << std::setprecision(9) << "images:" << folder.path()
            << ",pace=off,scale=" << film.geometry.depthScale;
        return uri.str();
    }

    // The touch records of every frame, one after the other.
    std::vector<QVR::NetworkTouch> touchesOf(const std::string& uri) {
        call(rs_select_camera_source, uri.c_str());
        volume.write("QVR_calibration/touch.json", settings);
        cameraManager::init();
        std::string error;
        json11::Json document = json11::Json::parse(settings, error);
        cameraManager::get()->blobs->loadJson(document);
        std::vector<QVR::NetworkTouch> records;
        QVR::networkFrameData frame;
        for (std::uint64_t number = 0; number < frames; ++number) {
            EXPECT_EQ(cameraManager::update(frame), 0) << uri << " frame " << number;
            if (frame.touches) {
                records.insert(records.end(), frame.touches, frame.touches + 10);
            }
        }
        cameraManager::destroy();
        return records;
    }

    support::ScopedEnvironment noCamera{"QVR_CAMERA", nullptr};
    support::TemporaryVolume volume;
    support::LogCapture log;
    PictureFolder folder;
    std::unique_ptr<camera::FrameSource> source;
    SoftwareScript film;
};

TEST_F(SameTouches, ComeFromARecordingAndFromPicturesOfOneScene) {
    const auto simulated = touchesOf(scene);
    ASSERT_EQ(simulated.size(), frames * 10);
    const auto active = std::count_if(simulated.begin(), simulated.end(),
                                      [](const auto& touch) { return touch.active == 1; });
    EXPECT_GT(active, 20) << "nothing is compared when nobody touches";
    const auto same = [&](const std::vector<QVR::NetworkTouch>& other) {
        return other.size() == simulated.size() &&
               std::memcmp(other.data(), simulated.data(),
                           simulated.size() * sizeof(QVR::NetworkTouch)) == 0;
    };
    EXPECT_TRUE(same(touchesOf(asPictures())));
    EXPECT_TRUE(same(touchesOf(asBag())));
}

} // namespace
