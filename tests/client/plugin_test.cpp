// The C functions, called as a host calls them.
#include "client/ClientFixture.h"
#include "client/plugin.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using client_test::identityCalibration;
using client_test::noCalibrationFile;
using client_test::projectionMap;
using QVR::ClientManager;
using support::bytesOf;
using support::LoopbackPeer;
using testing::ElementsAre;

class Plugin : public client_test::ClientFixture {
  protected:
    // Inits against a server that offers 640 x 480 depth and 1920 x 1080 colour in name, and
    // sends one frame of touches.
    void initConnected() { initClientWithCustomServer("127.0.0.1", peer.portNumber()); }

    LoopbackPeer peer{[](LoopbackPeer::Line& line) {
        QVR::ProtocolHeader header = support::touchesOnlyHeader();
        header.depthX = 640;
        header.depthY = 480;
        header.colorX = 1920;
        header.colorY = 1080;
        header.touchCount = 2;
        std::vector<QVR::NetworkTouch> touches(2);
        touches[1] = {1, 0.25, 0.5, 0.1};
        line.accept();
        line.send(bytesOf(header) + bytesOf(touches));
    }};
};

TEST_F(Plugin, AnswersWithSentinelsWithoutAClient) {
    EXPECT_FALSE(hasDepthCamera());
    EXPECT_EQ(getDimX(), -1);
    EXPECT_EQ(getDimY(), -1);
    EXPECT_EQ(getColorDimX(), -1);
    EXPECT_EQ(getColorDimY(), -1);
    EXPECT_EQ(getTouchPoolSize(), -1);
    EXPECT_EQ(update(), -100);
    EXPECT_FALSE(prepareTouchCollection());
    EXPECT_EQ(getTouchData(), -9999.0f);
    unsigned char buffer = 0;
    EXPECT_FALSE(setColorTexture(&buffer));
    EXPECT_FALSE(setDepthTexture(&buffer));
    EXPECT_FALSE(setProcessedTexture(&buffer));
    EXPECT_FALSE(updateColorTexture());
    EXPECT_FALSE(updateDepthTexture());
    EXPECT_FALSE(updateProcessedTexture());
    EXPECT_FALSE(setProjectionMapping("{}", 0));
    setCalibration("not even JSON");
    EXPECT_EQ(setCalibrationAsString(""), 0);
    EXPECT_TRUE(messages().empty());
    shutDown();
}

TEST_F(Plugin, KeepsAPointWithoutAClient) {
    applyCalibrationToCoord(1.5f, 2.5f, 3.5f);
    EXPECT_EQ(getCalibratedX(), 1.5f);
    EXPECT_EQ(getCalibratedY(), 2.5f);
    EXPECT_EQ(getCalibratedZ(), 3.5f);
    EXPECT_EQ(calibratedCoord.x, 1.5);
    EXPECT_EQ(calibratedCoord.y, 2.5);
    EXPECT_EQ(calibratedCoord.z, 3.5);
}

TEST_F(Plugin, SaysHowDebuggingIsSet) {
    printDebug(true);
    EXPECT_TRUE(ClientManager::debugLogging);
    printDebug(false);
    EXPECT_FALSE(ClientManager::debugLogging);
    EXPECT_THAT(messages(), ElementsAre("Set debugging to ON", "Set debugging to OFF"));
}

TEST_F(Plugin, AnswersFromTheHeaderOfItsServer) {
    initConnected();
    EXPECT_TRUE(hasDepthCamera());
    EXPECT_EQ(getDimX(), 640);
    EXPECT_EQ(getDimY(), 480);
    EXPECT_EQ(getColorDimX(), 1920);
    EXPECT_EQ(getColorDimY(), 1080);
    EXPECT_EQ(getTouchPoolSize(), 2);
    EXPECT_EQ(update(), 0);
    EXPECT_TRUE(prepareTouchCollection());
    EXPECT_EQ(getTouchData(), -1.0f);
    EXPECT_EQ(getTouchData(), -1.0f);
    EXPECT_EQ(getTouchData(), -1.0f);
    EXPECT_EQ(getTouchData(), 0.25f);
    EXPECT_EQ(getTouchData(), 0.5f);
    EXPECT_EQ(getTouchData(), 0.1f);
    EXPECT_EQ(getTouchData(), -9999.0f);
    EXPECT_TRUE(updateColorTexture());
    EXPECT_TRUE(updateDepthTexture());
    EXPECT_TRUE(updateProcessedTexture());
    shutDown();
    EXPECT_FALSE(hasDepthCamera());
    EXPECT_EQ(getDimX(), -1);
}

TEST_F(Plugin, LogsAStartWithACustomServer) {
    ClientManager::debugLogging = true;
    const std::string port = support::unusedPort();
    // The file would lead elsewhere; it is not read.
    volume.write("QVR_calibration/touch_client.json", R"({"ip": "127.0.0.5", "port": 5000})");
    initClientWithCustomServer("127.0.0.1", static_cast<unsigned int>(std::stoul(port)));
    EXPECT_THAT(messages(),
                ElementsAre("Init()...", "Connecting to: 127.0.0.1 : " + port,
                            "Connecting to Server at: 127.0.0.1 : " + port,
                            "Client manager starting...", "Connecting to 127.0.0.1:" + port,
                            "Unable to connect to server",
                            "ERROR!  The networkClient could not connect!  Returned: -1",
                            "Client manager instantiated."));
    EXPECT_EQ(update(), -2);
    EXPECT_TRUE(hasDepthCamera());
}

TEST_F(Plugin, LogsAStartWithTheSettingsFile) {
    ClientManager::debugLogging = true;
    volume.write("QVR_calibration/touch_client.json", R"({"ip": "127.0.0.5", "port": 5000})");
    init();
    EXPECT_THAT(messages(),
                ElementsAre("Init()...", "Client manager Init...",
                            "Connecting to Server at: 127.0.0.5 : 5000",
                            "Client manager starting...", "Connecting to 127.0.0.5:5000",
                            "Unable to connect to server",
                            "ERROR!  The networkClient could not connect!  Returned: -1",
                            "Client manager instantiated."));
}

TEST_F(Plugin, LogsNoStartWithoutDebugging) {
    initConnected();
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to 127.0.0.1:" + peer.port(), noCalibrationFile));
}

TEST_F(Plugin, KeepsTheTexturesOfTheHost) {
    initConnected();
    unsigned char color = 0;
    unsigned char depth = 0;
    unsigned char processed = 0;
    EXPECT_TRUE(setColorTexture(&color));
    EXPECT_TRUE(setDepthTexture(&depth));
    EXPECT_TRUE(setProcessedTexture(&processed));
    EXPECT_EQ(client().colorTexture, &color);
    EXPECT_EQ(client().depthTexture, &depth);
    EXPECT_EQ(client().processedTexture, &processed);
    EXPECT_TRUE(setColorTexture(nullptr));
    EXPECT_EQ(client().colorTexture, nullptr);
}

TEST_F(Plugin, CalibratesAPoint) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    volume.write("touch_projectionMap.json", "{" + projectionMap(0) + "}");
    initConnected();
    applyCalibrationToCoord(320.0f, 120.0f, 1000.0f);
    EXPECT_FLOAT_EQ(getCalibratedX(), 0.5f);
    EXPECT_FLOAT_EQ(getCalibratedY(), 0.25f);
    EXPECT_FLOAT_EQ(getCalibratedZ(), 0.5f);
    shutDown();
    EXPECT_FLOAT_EQ(getCalibratedX(), 0.5f);
}

TEST_F(Plugin, HandsCalibrationTextsOn) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    initConnected();
    forgetMessages();
    EXPECT_EQ(setCalibrationAsString(identityCalibration()), 0);
    EXPECT_EQ(setCalibrationAsString("{}"), -4);
    setCalibration("");
    setCalibration(nullptr);
    const std::string empty = "WARNING: Could not read touch calibration because it appears to be "
                              "empty.";
    EXPECT_THAT(messages(),
                ElementsAre("Warning: Did not find resX value in calibration data.", empty, empty));
    EXPECT_TRUE(setProjectionMapping(("{" + projectionMap(3, "2") + "}").c_str(), 3));
    EXPECT_FALSE(setProjectionMapping(nullptr, 3));
    applyCalibrationToCoord(320.0f, 240.0f, 1000.0f);
    EXPECT_FLOAT_EQ(getCalibratedX(), 1.0f);
}

TEST_F(Plugin, LoadsAProjectionMapFromTheCalibrationFolder) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    volume.write("QVR_calibration/touch_projectionMap.json", "{" + projectionMap(1, "2") + "}");
    initConnected();
    forgetMessages();
    EXPECT_TRUE(loadProjectionMap(1));
    EXPECT_FALSE(loadProjectionMap(0));
    const std::string line =
        "Loading projection map file: " + volume.path("QVR_calibration/touch_projectionMap.json");
    EXPECT_THAT(messages(), ElementsAre(line, line));
    applyCalibrationToCoord(320.0f, 240.0f, 1000.0f);
    EXPECT_FLOAT_EQ(getCalibratedX(), 1.0f);
}

TEST_F(Plugin, ReportsThatThereIsNoProjectionMapToLoad) {
    EXPECT_FALSE(loadProjectionMap(0));
    EXPECT_THAT(messages(),
                ElementsAre("Could not read data from: QVR_calibration/touch_projectionMap.json"));
}

TEST_F(Plugin, LoadsNoProjectionMapWithoutAClient) {
    volume.write("QVR_calibration/touch_projectionMap.json", "{" + projectionMap(0) + "}");
    EXPECT_FALSE(loadProjectionMap(0));
    EXPECT_THAT(messages(), ElementsAre("Loading projection map file: " +
                                        volume.path("QVR_calibration/touch_projectionMap.json")));
}

TEST_F(Plugin, WarnsThatSomeFunctionsNeedACamera) {
    logInternalVariables();
    EXPECT_EQ(getCameraInfo(), nullptr);
    setTouchLerp(0.5f);
    outputCalibratedTouches(true);
    EXPECT_THAT(
        messages(),
        ElementsAre("WARNING: logInternalVariables() is not available in the client version.",
                    "WARNING: getCameraInfo() is not available in the client version.",
                    "WARNING: setTouchLerp() is not available in the client version.",
                    "WARNING: outputCalibratedTouches() is not available in the client version."));
}

TEST_F(Plugin, TakesAMissingHostNameAsEmpty) {
    testing::internal::CaptureStdout();
    initClientWithCustomServer(nullptr, 27016);
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(client().ip, "");
}

TEST_F(Plugin, MessagesGoToStandardOutputWithoutACallback) {
    registerDebugCallback(nullptr);
    testing::internal::CaptureStdout();
    printDebug(false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Set debugging to OFF\n");
}

// A log callback that throws once stands for every failure inside a C function.
class PluginFailures : public Plugin {
  protected:
    ~PluginFailures() override { registerDebugCallback(nullptr); }

    static void throwOnce(const char* message) {
        if (armed()) {
            armed() = false;
            throw std::runtime_error("no way");
        }
        collected().emplace_back(message);
    }

    static void throwAlways(const char*) { throw 7; }

    static void arm() {
        armed() = true;
        collected().clear();
        registerDebugCallback(throwOnce);
    }

    static void expectReported(const std::string& function) {
        EXPECT_FALSE(armed()) << function;
        EXPECT_THAT(collected(), testing::Contains("ERROR: " + function + "() failed: no way"));
    }

    static bool& armed() {
        static bool state = false;
        return state;
    }
    static std::vector<std::string>& collected() {
        static std::vector<std::string> messages;
        return messages;
    }
};

TEST_F(PluginFailures, BecomeALogLineAndASentinel) {
    arm();
    printDebug(true);
    expectReported("printDebug");
    arm();
    init();
    expectReported("init");
    EXPECT_FALSE(hasDepthCamera());
    arm();
    initClientWithCustomServer("127.0.0.1", 1);
    expectReported("initClientWithCustomServer");
    EXPECT_FALSE(hasDepthCamera());
    arm();
    shutDown();
    expectReported("shutDown");
    arm();
    EXPECT_FALSE(loadProjectionMap(0));
    expectReported("loadProjectionMap");
    arm();
    logInternalVariables();
    expectReported("logInternalVariables");
    arm();
    EXPECT_EQ(getCameraInfo(), nullptr);
    expectReported("getCameraInfo");
    arm();
    setTouchLerp(1.0f);
    expectReported("setTouchLerp");
    arm();
    outputCalibratedTouches(true);
    expectReported("outputCalibratedTouches");

    initWithoutServer();
    arm();
    EXPECT_EQ(update(), -100);
    expectReported("update");
    arm();
    EXPECT_EQ(setCalibrationAsString("{}"), -10);
    expectReported("setCalibrationAsString");
    arm();
    setCalibration("{}");
    expectReported("setCalibrationAsString");
    arm();
    EXPECT_FALSE(setProjectionMapping("{}", 0));
    expectReported("setProjectionMapping");
}

TEST_F(PluginFailures, OfTheLogItselfAreSwallowed) {
    registerDebugCallback(throwAlways);
    printDebug(true);
    EXPECT_TRUE(ClientManager::debugLogging);
    init();
    EXPECT_FALSE(hasDepthCamera());
    EXPECT_EQ(getCameraInfo(), nullptr);
    shutDown();
}

TEST_F(PluginFailures, WhileAClientIsMadeLeaveNoneAndFreeTheMutex) {
    arm();
    initConnected(); // without debugging the first message is the connection's
    expectReported("initClientWithCustomServer");
    EXPECT_FALSE(hasDepthCamera());
    ASSERT_TRUE(clientManagerMutex.try_lock());
    clientManagerMutex.unlock();
}

TEST_F(PluginFailures, AtTheEndOfMakingAClientLeaveNoConnectionEither) {
    LoopbackPeer server([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
        line.waitUntilClosed();
    });
    ClientManager::debugLogging = true;
    registerDebugCallback([](const char* message) {
        if (std::string(message) == "Client manager instantiated.") {
            throw std::runtime_error("no way");
        }
    });
    initClientWithCustomServer("127.0.0.1", server.portNumber());
    EXPECT_FALSE(hasDepthCamera());
    EXPECT_EQ(server.finish(), "");
}

TEST_F(PluginFailures, WhileAClientIsDestroyedDoNotKeepItAlive) {
    initWithoutServer();
    ClientManager::debugLogging = true;
    registerDebugCallback([](const char* message) {
        if (std::string(message).find("destructor") != std::string::npos) {
            throw std::runtime_error("no way");
        }
    });
    shutDown();
    EXPECT_FALSE(hasDepthCamera());
}

} // namespace
