// Opening a camera, and what is said when that fails.
#include "cameraTool/CameraFixture.h"
#include "cameraTool/OpenCamera.h"
#include "cameraTool/cameraInformation.h"

#include <cerrno>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace cameraTool;
using testing::HasSubstr;
using testing::StartsWith;

class OpenCameraTest : public camera_tool_test::CameraFixture {};

TEST_F(OpenCameraTest, GivesThePicturesOfBothStreams) {
    OpenCamera camera({});
    EXPECT_TRUE(camera.hasColor());
    EXPECT_EQ(camera.mode(RS_STREAM_COLOR).width, 16);
    EXPECT_EQ(camera.mode(RS_STREAM_DEPTH_ALIGNED_TO_COLOR).height, 10);
    EXPECT_EQ(camera.mode(RS_STREAM_DEPTH).framerate, 30);
    camera.start();
    camera.wait();
    camera.wait();
    EXPECT_EQ(camera.depth(RS_STREAM_DEPTH).size(), 48U);
    EXPECT_EQ(camera.depth(RS_STREAM_DEPTH)[0], 500);
    EXPECT_EQ(camera.color(RS_STREAM_COLOR).size(), 480U);
    EXPECT_EQ(camera.color(RS_STREAM_COLOR)[0], 32);
}

TEST_F(OpenCameraTest, ListsTheModesWhenItHasNoSuchOne) {
    const auto [code, text] = failure([] { OpenCamera({640, 480, 0, 0, 0}); });
    EXPECT_EQ(code, server::exitBadOption);
    EXPECT_EQ(text, "the camera has no such mode. Choose with --depth, --color and --fps from "
                    "what it has, both at one rate:\n"
                    "  depth\n    8x6 at 30\n  colour\n    16x10 at 30");
}

TEST_F(OpenCameraTest, SaysWhoElseHasTheCamera) {
    startProblem = std::string("xioctl(VIDIOC_S_FMT) failed Last Error: ") + std::strerror(EBUSY);
    OpenCamera camera({});
    const auto [code, text] = failure([&] { camera.start(); });
    EXPECT_EQ(code, server::exitNoCamera);
    EXPECT_EQ(text, "the camera does not start: " + startProblem +
                        "\nAnother program is using the camera, and only one can: end qvr-server, "
                        "or whatever else shows its pictures");
}

TEST_F(OpenCameraTest, SaysWhyItGivesNoPictures) {
    script->paint = [](auto...) { throw std::runtime_error("it is dark"); };
    OpenCamera camera({});
    camera.start();
    const auto [code, text] = failure([&] { camera.wait(); });
    EXPECT_EQ(code, server::exitNoCamera);
    EXPECT_THAT(text, StartsWith("the camera gives no pictures: it is dark"));
}

TEST_F(OpenCameraTest, SaysThatThereIsNone) {
    camera::setEnumeration([] { return std::vector<std::unique_ptr<camera::Device>>(); });
    const auto [code, text] = failure([] { OpenCamera({}); });
    EXPECT_EQ(code, server::exitNoCamera);
    EXPECT_NE(text, "");
}

TEST_F(OpenCameraTest, TellsTheCameraInformationAsHostsGetItAndLaidOut) {
    OpenCamera camera({});
    const std::string raw = cameraInformation(camera, true);
    EXPECT_THAT(raw, StartsWith("{\n\"colorToDepthExtrinsics4x4\": {\n    "));
    const std::string laidOut = cameraInformation(camera, false);
    EXPECT_THAT(laidOut, HasSubstr("  \"depthIntrinsics\": {\n    \"focalLengthX\": 7"));
    EXPECT_EQ(nlohmann::json::parse(raw), nlohmann::json::parse(laidOut));
}

} // namespace
