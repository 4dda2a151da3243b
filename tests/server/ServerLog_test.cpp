#include "ServerLog.h"

#include <string>

#include <gtest/gtest.h>

using server::ServerLog;

namespace {

// What reaches the terminal while `talk` runs.
template <typename Talk>
std::string heard(Talk talk) {
    testing::internal::CaptureStderr();
    talk();
    return testing::internal::GetCapturedStderr();
}

class ServerLogTest : public testing::Test {
  protected:
    ~ServerLogTest() override {
        ServerLog::setVerbose(false);
        ServerLog::setPipelineQuiet(false);
        ServerLog::setProgram("qvr-server");
    }
};

} // namespace

TEST_F(ServerLogTest, NamesTheProgramThatSpeaks) {
    EXPECT_EQ(heard([] { ServerLog::notice("hello"); }), "qvr-server: hello\n");
    ServerLog::setProgram("qvr-camera");
    EXPECT_EQ(heard([] { ServerLog::notice("hello"); }), "qvr-camera: hello\n");
}

TEST_F(ServerLogTest, PassesWarningsErrorsAndTheCamera) {
    for (const char* message :
         {"WARNING! QVR RealSense plugin has already been initialized!",
          "WARNING: Could not read touch calibration file. No calibration was loaded.",
          "Warning: Did not find maxDiffNear value in calibration data.",
          "ERROR: realSense not initialized. Can't load cell calibration.", "Error: no",
          "RealSense error calling rs_start_source(device:0x1):\n    busy", "No depth cam found.",
          "Failed to start camera streams.", "Failed to initialize the camera.",
          "Using device 0, an Image folder", "Camera initialized and ready.",
          "Using calibration file: /x/touch.json", "cameraManager::internalUpdate() e:\nlate"})
        EXPECT_TRUE(ServerLog::isImportant(message)) << message;
    for (const char* message :
         {"Loading distortion map touch calibration...", "", "the ERROR", "warning"})
        EXPECT_FALSE(ServerLog::isImportant(message)) << message;
}

TEST_F(ServerLogTest, PrintsAMessageAsItStands) {
    EXPECT_EQ(heard([] { ServerLog::receivePipelineMessage("WARNING: 100% %s %n"); }),
              "WARNING: 100% %s %n\n");
}

TEST_F(ServerLogTest, KeepsTheRestForVerbose) {
    const auto talk = [] {
        ServerLog::receivePipelineMessage("some progress");
        ServerLog::detail("a client came");
    };
    EXPECT_EQ(heard(talk), "");
    ServerLog::setVerbose(true);
    EXPECT_EQ(heard(talk), "some progress\nqvr-server: a client came\n");
}

TEST_F(ServerLogTest, SaysOnceWhatOthersCanMakeHappenAgainAndAgain) {
    const auto talk = [] {
        ServerLog::noticeSparingly("a client was refused");
        ServerLog::noticeSparingly("a client was refused");
        ServerLog::noticeSparingly("another client was refused");
    };
    EXPECT_EQ(heard(talk), "qvr-server: a client was refused\n"
                           "qvr-server: another client was refused\n");
    EXPECT_EQ(heard(talk), "");
}

TEST_F(ServerLogTest, SaysTheSameThingOnce) {
    const auto talk = [] {
        for (int frame = 0; frame < 100; ++frame) {
            ServerLog::receivePipelineMessage("WARNING! every frame");
            ServerLog::receivePipelineMessage("WARNING! and another");
        }
    };
    EXPECT_EQ(heard(talk), "WARNING! every frame\nWARNING! and another\n");
    ServerLog::setVerbose(true);
    EXPECT_EQ(heard(talk).size(), 4200U);
}

TEST_F(ServerLogTest, RemembersWhatTheCameraComplainedOf) {
    ServerLog::setPipelineQuiet(true);
    ServerLog::receivePipelineMessage("RealSense error calling f(x):\n    busy");
    ServerLog::receivePipelineMessage("Failed to start camera streams.");
    ServerLog::receivePipelineMessage("Warning: Did not find maxDiffNear value");
    EXPECT_EQ(ServerLog::cameraComplaint(), "RealSense error calling f(x):\n    busy");
    ServerLog::receivePipelineMessage("No depth cam found.");
    EXPECT_EQ(ServerLog::cameraComplaint(), "No depth cam found.");
}

TEST_F(ServerLogTest, TellsWhyAFrameFailed) {
    const auto talk = [] {
        for (int frame = 0; frame < 3; ++frame) {
            ServerLog::receivePipelineMessage("cameraManager::internalUpdate() e: ");
            ServerLog::receivePipelineMessage("the cable is loose");
            ServerLog::receivePipelineMessage("some progress");
        }
    };
    EXPECT_EQ(heard(talk), "cameraManager::internalUpdate() e: \nthe cable is loose\n");
    EXPECT_EQ(ServerLog::cameraComplaint(), "the cable is loose");
}

TEST_F(ServerLogTest, HoldsThePipelineBackWhileACameraIsAwaited) {
    ServerLog::setPipelineQuiet(true);
    const auto talk = [] {
        ServerLog::receivePipelineMessage("ERROR: while away");
        ServerLog::notice("of our own");
    };
    EXPECT_EQ(heard(talk), "qvr-server: of our own\n");
    ServerLog::setVerbose(true);
    EXPECT_EQ(heard(talk), "ERROR: while away\nqvr-server: of our own\n");
}
