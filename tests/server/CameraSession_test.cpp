#include "CameraSession.h"
#include "CameraSource.h"
#include "FrameLayout.h"
#include "ServerError.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "server/CameraFixture.h"

#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using QVR::cameraManager;
using server::CameraSession;
using server::ExitCode;
using server::Options;
using testing::HasSubstr;

namespace {

using CameraSessionTest = support::CameraFixture;

template <typename Action>
std::string problem(ExitCode code, Action action) {
    try {
        action();
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), code);
        return error.what();
    }
    return "";
}

Options withCamera(const char* uri) {
    Options options;
    options.camera = uri;
    return options;
}

} // namespace

TEST_F(CameraSessionTest, KeepsThePipelineUpWhileItLives) {
    {
        const CameraSession session((Options()));
        ASSERT_NE(cameraManager::get(), nullptr);
        EXPECT_TRUE(cameraManager::get()->isCameraStreaming());
    }
    EXPECT_EQ(cameraManager::get(), nullptr);
}

TEST_F(CameraSessionTest, DescribesItsFrames) {
    const CameraSession session((Options()));
    const QVR::ProtocolHeader& header = session.header();
    EXPECT_EQ(header.protocolID, 1U);
    EXPECT_EQ(header.endianTest, 0x01020304U);
    EXPECT_EQ(header.oneMeterValue, 1000U);
    EXPECT_EQ(header.depthX, 160U);
    EXPECT_EQ(header.depthY, 120U);
    EXPECT_EQ(header.touchCount, 10U);
    EXPECT_EQ(server::FrameLayout(header).frameBytes(), 280U + 160U * 120U * 2U);
}

TEST_F(CameraSessionTest, NamesTheWayOutWithoutACamera) {
    camera.plugged = false;
    EXPECT_EQ(problem(server::exitNoCamera, [] { CameraSession session((Options())); }),
              "no camera that can be started. Connect a depth camera, or try --camera simulated");
    EXPECT_EQ(cameraManager::get(), nullptr);
}

TEST_F(CameraSessionTest, BlamesACameraThatDoesNotStart) {
    camera.starts = false;
    EXPECT_THAT(problem(server::exitNoCamera, [] { CameraSession session((Options())); }),
                HasSubstr("no camera that can be started"));
    EXPECT_THAT(
        problem(server::exitNoCamera, [] { CameraSession session(withCamera("realsense:123")); }),
        HasSubstr("no camera that can be started"));
}

TEST_F(CameraSessionTest, BlamesACameraThatDoesNotAnswer) {
    camera.failingScale = 1;
    EXPECT_EQ(problem(server::exitNoCamera, [] { CameraSession session((Options())); }),
              "the camera cannot be used: the scale cannot be read");
    EXPECT_EQ(cameraManager::get(), nullptr);
}

TEST_F(CameraSessionTest, BlamesASourceOfPicturesThatDoesNotFit) {
    writeDocument(R"("depthResX": 320, "depthResY": 200, "streaming": {"fps": 30})");
    camera.starts = false;
    EXPECT_EQ(problem(server::exitBadCameraSource,
                      [] { CameraSession session(withCamera("images:/x")); }),
              "camera source 'images:/x' does not start with the sizes and frame rate asked for "
              "(640 x 480 colour, 320 x 200 depth, 30 frames a second)");
    const support::ScopedEnvironment variable("QVR_CAMERA", "images:/y");
    EXPECT_THAT(problem(server::exitBadCameraSource, [] { CameraSession session((Options())); }),
                HasSubstr("'images:/y'"));
}

TEST_F(CameraSessionTest, TakesSwitchesFromTheDocument) {
    writeDocument(R"("streaming": {"color": true, "depth": 0, "processed": 1, "touch": false})");
    const CameraSession session((Options()));
    EXPECT_EQ(session.header().colorChannels, 3U);
    EXPECT_EQ(session.header().depthChannels, 0U);
    EXPECT_EQ(session.header().processedChannels, 1U);
    EXPECT_EQ(session.header().touchCount, 0U);
}

TEST_F(CameraSessionTest, LetsTheCommandLineOverrideThem) {
    writeDocument(R"("streaming": {"color": true, "depth": 0, "processed": 1, "touch": false})");
    Options options;
    options.color = false;
    options.depth = true;
    options.processed = false;
    options.touch = true;
    const CameraSession session(options);
    EXPECT_EQ(session.header().colorChannels, 0U);
    EXPECT_EQ(session.header().depthChannels, 1U);
    EXPECT_EQ(session.header().processedChannels, 0U);
    EXPECT_EQ(session.header().touchCount, 10U);
}

TEST_F(CameraSessionTest, AppliesClipDistancesInTheCamerasUnits) {
    writeDocument();
    const CameraSession session((Options()));
    EXPECT_EQ(cameraManager::get()->blobs->nearNoiseCutoff, 100);
    EXPECT_EQ(cameraManager::get()->blobs->farLimit, 250);
}

TEST_F(CameraSessionTest, LeavesDetectionAsItIsWithoutADocument) {
    const CameraSession session((Options()));
    EXPECT_EQ(cameraManager::get()->blobs->nearNoiseCutoff, 600);
    EXPECT_EQ(cameraManager::get()->blobs->farLimit, 2400);
}

TEST_F(CameraSessionTest, KeepsTheMarginsAsThePipelineReadThem) {
    writeDocument();
    const CameraSession session((Options()));
    EXPECT_EQ(cameraManager::get()->touches->borderClipRight, 160);
    EXPECT_EQ(cameraManager::get()->touches->borderClipBottom, 120);
}

TEST_F(CameraSessionTest, ReportsTouchesCalibratedUnlessAskedForRawOnes) {
    {
        const CameraSession session((Options()));
        EXPECT_TRUE(cameraManager::get()->touches->outputCalibratedTouches);
    }
    Options options;
    options.rawTouches = true;
    const CameraSession session(options);
    EXPECT_FALSE(cameraManager::get()->touches->outputCalibratedTouches);
}

TEST_F(CameraSessionTest, TakesPortAndFrameRateFromTheDocument) {
    {
        const CameraSession session((Options()));
        EXPECT_EQ(session.port(), 27016);
        EXPECT_EQ(session.framePeriod(), std::chrono::nanoseconds(16666666));
    }
    writeDocument(R"("streaming": {"port": 4711, "fps": 25})");
    const CameraSession session((Options()));
    EXPECT_EQ(session.port(), 4711);
    EXPECT_EQ(session.framePeriod(), std::chrono::milliseconds(40));
}

TEST_F(CameraSessionTest, SurvivesAnAbsurdFrameRate) {
    writeDocument(R"("streaming": {"fps": -3})");
    const CameraSession session((Options()));
    EXPECT_EQ(session.framePeriod(), std::chrono::seconds(1));
}

TEST_F(CameraSessionTest, SendsDepthInTheSizeThatTheDocumentNames) {
    writeDocument(R"("downsampleDepthX": 80, "downsampleDepthY": 60)");
    const CameraSession session((Options()));
    EXPECT_EQ(session.header().depthX, 80U);
    EXPECT_EQ(session.header().depthY, 60U);
    EXPECT_EQ(session.header().processedX, 160U);
    const QVR::ImageDownsampler& downsampler = *cameraManager::get()->downsampler;
    EXPECT_EQ(downsampler.sourceWidth, 160U);
    EXPECT_EQ(downsampler.sourceHeight, 120U);
}

TEST_F(CameraSessionTest, SendsNoDepthOfARowlessSize) {
    writeDocument(R"("downsampleDepthX": 80, "downsampleDepthY": 0)");
    const CameraSession session((Options()));
    ASSERT_NE(cameraManager::get()->downsampler, nullptr);
    EXPECT_EQ(session.header().depthY, 0U);
    EXPECT_EQ(server::FrameLayout(session.header()).depthBytes(), 0U);
    QVR::networkFrameData parts;
    ASSERT_EQ(cameraManager::update(parts), 0);
    EXPECT_EQ(parts.depth, nullptr);
}

TEST_F(CameraSessionTest, SendsFullDepthWhereNoOtherSizeMakesSense) {
    for (const char* sizes :
         {R"("downsampleDepthX": 80, "downsampleDepthY": -1)",
          R"("downsampleDepthX": 2, "downsampleDepthY": 60)",
          R"("downsampleDepthX": -80, "downsampleDepthY": 60)", R"("downsampleDepthX": 80)",
          R"("downsampleDepthY": 60)", R"("downsampleDepthX": "80", "downsampleDepthY": "60")",
          R"("downsampleDepthX": 160, "downsampleDepthY": 120)",
          R"("downsampleDepthX": 100000, "downsampleDepthY": 100000)",
          R"("downsampleDepthX": 1e300, "downsampleDepthY": 0)",
          R"("downsampleDepthX": 1e18, "downsampleDepthY": 1e18)"}) {
        writeDocument(sizes);
        const CameraSession session((Options()));
        EXPECT_EQ(cameraManager::get()->downsampler, nullptr) << sizes;
        EXPECT_EQ(session.header().depthX, 160U) << sizes;
    }
}

TEST(CameraSource, IsWhatTheCommandLineOrTheEnvironmentNames) {
    const support::ScopedEnvironment none("QVR_CAMERA", nullptr);
    EXPECT_EQ(server::cameraSource(Options()), "");
    const support::ScopedEnvironment variable("QVR_CAMERA", "images:/y");
    EXPECT_EQ(server::cameraSource(Options()), "images:/y");
    EXPECT_EQ(server::cameraSource(withCamera("fake")), "fake");
}

TEST(CameraSource, SaysWhatIsWrongWithIt) {
    EXPECT_EQ(problem(server::exitBadCameraSource,
                      [] { server::selectCameraSource(withCamera("nonsense")); }),
              "camera source 'nonsense': no such source");
    const support::ScopedEnvironment variable("QVR_CAMERA", "rubbish");
    EXPECT_EQ(problem(server::exitBadCameraSource, [] { server::selectCameraSource(Options()); }),
              "camera source 'rubbish': no such source");
    EXPECT_NO_THROW(server::selectCameraSource(withCamera("fake")));
}
