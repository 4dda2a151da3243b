// Calibration from files and from the host, applied to points.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"

#include <string>

#include <json11.hpp>

namespace {

using client_test::identityCalibration;
using client_test::noCalibrationFile;
using client_test::projectionMap;
using QVR::ClientManager;
using QVR::Vector3;
using support::bytesOf;
using support::LoopbackPeer;
using testing::ElementsAre;

class ClientManagerCalibration : public client_test::ClientFixture {
  protected:
    void initConnected() {
        initWith(peer);
        ASSERT_TRUE(ClientManager::isConnected());
    }

    // A client whose distortion map is the identity and whose projection is that of `map`.
    void initCalibrated(const std::string& map = "{" + projectionMap(0) + "}") {
        volume.write("QVR_calibration/touch.json", identityCalibration());
        volume.write("touch_projectionMap.json", map);
        initConnected();
    }

    static Vector3 calibrated(double x, double y, double z) {
        Vector3 point{x, y, z};
        client().applyCalibrationToCoord(point);
        return point;
    }

    static void expectPoint(const Vector3& point, double x, double y, double z) {
        EXPECT_NEAR(point.x, x, 1e-9);
        EXPECT_NEAR(point.y, y, 1e-9);
        EXPECT_NEAR(point.z, z, 1e-9);
    }

    static int setSizes(const std::string& sizes) {
        return client().setCalibrationData(identityCalibration(sizes));
    }

    LoopbackPeer peer{[](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + std::string(10 * 280, '\0'));
    }};
};

TEST_F(ClientManagerCalibration, LooksForItsFileAtEveryUpdateUntilItIsThere) {
    initConnected();
    EXPECT_EQ(messages().back(), noCalibrationFile);
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_THAT(messages(), ElementsAre(noCalibrationFile));
    expectPoint(calibrated(320, 240, 1000), 320, 240, 1000);

    volume.write("QVR_calibration/touch.json", identityCalibration());
    volume.write("touch_projectionMap.json", "{" + projectionMap(0) + "}");
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_TRUE(messages().empty());
    expectPoint(calibrated(320, 240, 1000), 0.5, 0.5, 0.5);
}

TEST_F(ClientManagerCalibration, AnEmptyFileCountsAsNone) {
    volume.write("QVR_calibration/touch.json", "");
    initConnected();
    EXPECT_EQ(messages().back(),
              "Could not read data from: " + volume.path("QVR_calibration/touch.json") +
                  "\nFile appears empty.");
}

TEST_F(ClientManagerCalibration, SaysWithDebuggingThatThereIsNoProjectionMap) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    // The map in the calibration folder is the server's; the client's lies at the root.
    volume.write("QVR_calibration/touch_projectionMap.json", "{" + projectionMap(0) + "}");
    ClientManager::debugLogging = true;
    initConnected();
    ASSERT_GE(messages().size(), 2u);
    EXPECT_EQ(messages()[messages().size() - 2],
              "Client could not read data from: touch_projectionMap.json\nFile appears empty.");
    expectPoint(calibrated(320, 240, 1000), 0, 0, 0);
}

TEST_F(ClientManagerCalibration, SaysWithDebuggingWhichProjectionMapItHasLoaded) {
    ClientManager::debugLogging = true;
    initCalibrated();
    ASSERT_GE(messages().size(), 2u);
    EXPECT_EQ(messages()[messages().size() - 2],
              "Client loaded projection map: " + volume.path("touch_projectionMap.json"));
    expectPoint(calibrated(160, 120, 1000), 0.25, 0.25, 0.5);
}

TEST_F(ClientManagerCalibration, IsSilentAboutProjectionMapsWithoutDebugging) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    initConnected();
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port()));
}

TEST_F(ClientManagerCalibration, AFileThatDoesNotParseIsReportedOnceAndTheProjectionStillLoads) {
    volume.write("QVR_calibration/touch.json", "{");
    volume.write("touch_projectionMap.json", "{" + projectionMap(0) + "}");
    initConnected();
    ASSERT_EQ(messages().size(), 2u);
    EXPECT_EQ(
        messages()[1].find("ERROR: There was a problem in parsing the calibration file contents: "),
        0u);
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_TRUE(messages().empty());
    expectPoint(calibrated(320, 240, 1000), 0.5, 0.5, 0.5);
}

TEST_F(ClientManagerCalibration, ScalesClipDistancesByTheHeadersUnitsPerMeter) {
    volume.write("QVR_calibration/touch.json",
                 R"({"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.5,
                     "farClipMeters": 0.2})");
    initConnected();
    ASSERT_EQ(messages().size(), 2u);
    EXPECT_NE(messages()[1].find("\nFound values: near=500 far=200"), std::string::npos);
}

TEST_F(ClientManagerCalibration, PointsOutsideTheGridAreMarkedAndThenProjected) {
    initCalibrated();
    expectPoint(calibrated(-5, 240, 1000), -1.0 / 640, -1.0 / 480, -1.0 / 2000);
}

TEST_F(ClientManagerCalibration, PointsStayWithoutACalibration) {
    initWithoutServer();
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 240, )"), -10);
    expectPoint(calibrated(1.5, 2.5, 3.5), 1.5, 2.5, 3.5);
}

TEST_F(ClientManagerCalibration, EmptyDataIsRefused) {
    initCalibrated();
    forgetMessages();
    EXPECT_EQ(client().setCalibrationData(""), -1);
    EXPECT_THAT(messages(), ElementsAre("WARNING: Could not read touch calibration because it "
                                        "appears to be empty."));
}

TEST_F(ClientManagerCalibration, DataThatDoesNotParseIsRefusedWithTheParsersText) {
    initCalibrated();
    forgetMessages();
    std::string error = "noError";
    json11::Json::parse("{]", error);
    EXPECT_EQ(client().setCalibrationData("{]"), -2);
    EXPECT_THAT(messages(),
                ElementsAre("ERROR: There was a problem in parsing the calibration file "
                            "contents: " +
                            error));
}

TEST_F(ClientManagerCalibration, DataBeforeACalibrationIsRefused) {
    initWithoutServer();
    forgetMessages();
    EXPECT_EQ(client().setCalibrationData(identityCalibration()), -10);
    EXPECT_THAT(messages(),
                ElementsAre("Failed to load distortion calibration. Init() was never called, or "
                            "previously failed, possibly because the server could not be found."));

    ClientManager::debugLogging = true;
    forgetMessages();
    EXPECT_EQ(client().setCalibrationData(identityCalibration()), -10);
    ASSERT_EQ(messages().size(), 2u);
    EXPECT_EQ(messages()[0], "Loading distortion map touch calibration...");
}

TEST_F(ClientManagerCalibration, DataReplacesTheDistortionMap) {
    initCalibrated();
    forgetMessages();
    // Everything is measured 64 pixels too far left.
    EXPECT_EQ(client().setCalibrationData(
                  R"({"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.5,
                      "farClipMeters": 2, "calibration": {"sizeX": 2, "sizeY": 2, "sizeZ": 2,
                      "verts": [64, 0, 500, 704, 0, 500, 64, 480, 500, 704, 480, 500,
                                64, 0, 2000, 704, 0, 2000, 64, 480, 2000, 704, 480, 2000]}})"),
              0);
    EXPECT_TRUE(messages().empty());
    expectPoint(calibrated(320, 240, 1000), 0.6, 0.5, 0.5);
}

TEST_F(ClientManagerCalibration, DataPassesOnTheImportsCode) {
    initCalibrated();
    EXPECT_EQ(client().setCalibrationData("{}"), -4);
    EXPECT_EQ(client().setCalibrationData("null"), -3);
    ClientManager::debugLogging = true;
    forgetMessages();
    EXPECT_EQ(client().setCalibrationData("{}"), -4);
    EXPECT_THAT(messages(), ElementsAre("Loading distortion map touch calibration...",
                                        "Warning: Did not find resX value in calibration data."));
}

TEST_F(ClientManagerCalibration, AProjectionMapIsTakenByNumber) {
    initCalibrated();
    forgetMessages();
    const std::string maps = "{" + projectionMap(0, "10") + ", " + projectionMap(1, "100") + "}";
    EXPECT_TRUE(client().setProjectionMap(maps, 1));
    expectPoint(calibrated(320, 240, 1000), 50, 50, 50);
    EXPECT_TRUE(client().setProjectionMap(maps, 0));
    expectPoint(calibrated(320, 240, 1000), 5, 5, 5);
    EXPECT_FALSE(client().setProjectionMap(maps, 2));
    expectPoint(calibrated(320, 240, 1000), 5, 5, 5);
    EXPECT_TRUE(messages().empty());

    ClientManager::debugLogging = true;
    EXPECT_TRUE(client().setProjectionMap(maps, 1));
    EXPECT_THAT(messages(), ElementsAre("Loading projection map touch calibration..."));
}

TEST_F(ClientManagerCalibration, AProjectionMapBeforeACalibrationIsRefused) {
    initWithoutServer();
    forgetMessages();
    EXPECT_FALSE(client().setProjectionMap("{" + projectionMap(0) + "}", 0));
    EXPECT_THAT(messages(),
                ElementsAre("Failed to load projection map. Init() was never called, or "
                            "previously failed, possibly because the server could not be found."));
}

TEST_F(ClientManagerCalibration, TheFilesMapIsNumberZero) {
    initCalibrated("{" + projectionMap(1, "100") + "}");
    expectPoint(calibrated(320, 240, 1000), 0, 0, 0);
}

TEST_F(ClientManagerCalibration, DownsampledPixelsAreTakenBackToFullResolutionFirst) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), 0);
    // Pixel 16, 16 of 320 x 160 is pixel 32, 48 of 640 x 480; fractions are cut.
    expectPoint(calibrated(16.9, 16.9, 1000), 50, 100, 500);
    // Left of the image is the first column.
    expectPoint(calibrated(-3, 16, 1000), 0, 100, 500);
}

TEST_F(ClientManagerCalibration, NonsenseCoordinatesAreCutLikeOnTheProcessor) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), 0);
    expectPoint(calibrated(1e300, 16, 1000), 0, 100, 500);
}

TEST_F(ClientManagerCalibration, ASecondDownsamplerReplacesTheFirst) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), 0);
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 160, "downsampleDepthY": 240, )"), 0);
    expectPoint(calibrated(16, 24, 1000), 100, 100, 500);
}

TEST_F(ClientManagerCalibration, SizesThatMakeNoDownsamplerKeepTheEarlierOne) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), 0);
    for (const std::string sizes : {"", R"("downsampleDepthX": 640, "downsampleDepthY": 480, )",
                                    R"("downsampleDepthX": 2, "downsampleDepthY": 240, )",
                                    R"("downsampleDepthX": "160", "downsampleDepthY": 240, )",
                                    R"("downsampleDepthX": 160, "downsampleDepthY": -1, )",
                                    R"("downsampleDepthX": -160, "downsampleDepthY": 240, )"}) {
        EXPECT_EQ(setSizes(sizes), 0) << sizes;
        expectPoint(calibrated(16, 16, 1000), 50, 100, 500);
    }
    for (const std::string document :
         {R"({"depthResX": 2, "depthResY": 480, "downsampleDepthX": 160, "downsampleDepthY": 9})",
          R"({"depthResX": 640, "depthResY": 2, "downsampleDepthX": 160, "downsampleDepthY": 9})",
          R"({"depthResX": "640", "depthResY": 480, "downsampleDepthX": 160,
              "downsampleDepthY": 9})"}) {
        client().setCalibrationData(document);
        expectPoint(calibrated(16, 16, 1000), 50, 100, 500);
    }
}

TEST_F(ClientManagerCalibration, ADownsampledImageThatNoServerCanSendKeepsTheEarlierSizes) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), 0);
    for (const std::string sizes :
         {R"("downsampleDepthX": 2147483647, "downsampleDepthY": 2147483647, )",
          R"("downsampleDepthX": 40000, "downsampleDepthY": 40000, )",
          R"("downsampleDepthX": 16384, "downsampleDepthY": 8193, )"}) {
        forgetMessages();
        EXPECT_EQ(setSizes(sizes), 0) << sizes;
        EXPECT_THAT(messages(),
                    ElementsAre("WARNING: downsampleDepthX and downsampleDepthY make too large an "
                                "image and are ignored."))
            << sizes;
        expectPoint(calibrated(16, 16, 1000), 50, 100, 500);
    }
}

TEST_F(ClientManagerCalibration, ThreeIsTheSmallestSizeOnEachAxis) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    std::string error = "noError";
    client().handleMiniDepth(json11::Json::parse(
        R"({"depthResX": 3, "depthResY": 3, "downsampleDepthX": 3, "downsampleDepthY": 1})",
        error));
    // Row 0 is the only one of the downsampled image; x keeps its pixel.
    expectPoint(calibrated(2, 0, 1000), 3.125, 0, 500);
    expectPoint(calibrated(5, 0, 1000), 3.125, 0, 500);
}

TEST_F(ClientManagerCalibration, OneEqualAxisStillMakesADownsampler) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 640, "downsampleDepthY": 160, )"), 0);
    expectPoint(calibrated(32, 16, 1000), 50, 100, 500);
}

TEST_F(ClientManagerCalibration, AHeightOfZeroTakesEveryRowToTheFirst) {
    initCalibrated("{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, )"), 0);
    expectPoint(calibrated(16, 100, 1000), 50, 0, 500);
}

TEST_F(ClientManagerCalibration, SizesCountEvenBeforeACalibration) {
    initConnected();
    EXPECT_EQ(setSizes(R"("downsampleDepthX": 320, "downsampleDepthY": 160, )"), -10);
    volume.write("QVR_calibration/touch.json", identityCalibration());
    volume.write("touch_projectionMap.json", "{" + projectionMap(0, "1000") + "}");
    EXPECT_EQ(ClientManager::Update(), 0);
    expectPoint(calibrated(16, 16, 1000), 50, 100, 500);
}

} // namespace
