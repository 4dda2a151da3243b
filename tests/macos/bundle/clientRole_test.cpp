// A host's life with the plug-in, once with the library for Linux and once with the bundle for
// macOS, on the same bytes from the same server: both must answer and say the same.
#include "macos/bundle/Transcript.h"
#include "server/RawClient.h"
#include "support/LoopbackPeer.h"
#include "support/TemporaryFolder.h"
#include "support/streamBytes.h"
#include "system/ServerProcess.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using support::LoopbackPeer;
using testing::ElementsAreArray;
using Journey = std::function<void(Plugin&, Transcript&)>;

const std::string examples = EXAMPLES;

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What the real camera server sends: its header, and the frames after which its scene has hands in
// it.
std::string cameraStream(int frames) {
    support::ServerProcess server(examples + "/simulated",
                                  {"--camera", "simulated:fingers=5,fps=60", "--port", "0"});
    support::RawClient client(server.waitForPort());
    std::string stream = support::bytesOf(client.readHeader());
    for (int number = 0; number < frames; ++number) {
        const support::Bytes frame = client.readFrame();
        stream.append(reinterpret_cast<const char*>(frame.data()), frame.size());
    }
    return stream;
}

LoopbackPeer::Script sending(const std::string& stream) {
    return [stream](LoopbackPeer::Line& line) {
        line.accept();
        line.send(stream);
        line.close();
    };
}

void connect(Plugin& plugin, Transcript& transcript, const LoopbackPeer& peer) {
    transcript.replace(peer.port(), "PORT");
    plugin.c().initClientWithCustomServer("127.0.0.1", peer.portNumber());
}

void describeServer(Plugin& plugin, Transcript& transcript) {
    transcript.add("hasDepthCamera", plugin.c().hasDepthCamera());
    transcript.add("getDimX", plugin.c().getDimX());
    transcript.add("getDimY", plugin.c().getDimY());
    transcript.add("getColorDimX", plugin.c().getColorDimX());
    transcript.add("getColorDimY", plugin.c().getColorDimY());
    transcript.add("getTouchPoolSize", plugin.c().getTouchPoolSize());
}

void readTouches(Plugin& plugin, Transcript& transcript) {
    transcript.add("prepareTouchCollection", plugin.c().prepareTouchCollection());
    for (int value = 0; value <= 3 * plugin.c().getTouchPoolSize(); ++value) {
        transcript.add("getTouchData", plugin.c().getTouchData());
    }
}

void calibratePoint(Plugin& plugin, Transcript& transcript, float x, float y, float z) {
    plugin.c().applyCalibrationToCoord(x, y, z);
    transcript.add("getCalibratedX", plugin.c().getCalibratedX());
    transcript.add("getCalibratedY", plugin.c().getCalibratedY());
    transcript.add("getCalibratedZ", plugin.c().getCalibratedZ());
}

void calibratePoints(Plugin& plugin, Transcript& transcript) {
    for (float x = -40; x < 700; x += 71.3f) {
        for (float y = -30; y < 540; y += 67.7f) {
            for (float z = 1500; z < 2400; z += 199.9f) {
                calibratePoint(plugin, transcript, x, y, z);
            }
        }
    }
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const float extreme : {1e10f, -1e10f, 3e38f, 1e-40f, infinity, -infinity}) {
        calibratePoint(plugin, transcript, extreme, 240, 2000);
        calibratePoint(plugin, transcript, 320, extreme, 2000);
        calibratePoint(plugin, transcript, 320, 240, extreme);
    }
}

// The pictures of the latest frame, in buffers as large as the header makes them.
void readTextures(Plugin& plugin, Transcript& transcript) {
    const auto pixels = [](int x, int y) {
        return 4 * static_cast<std::size_t>(x) * static_cast<std::size_t>(y);
    };
    std::vector<unsigned char> color(pixels(plugin.c().getColorDimX(), plugin.c().getColorDimY()));
    std::vector<unsigned char> depth(pixels(plugin.c().getDimX(), plugin.c().getDimY()));
    std::vector<unsigned char> processed(depth.size());
    transcript.add("setColorTexture", plugin.c().setColorTexture(color.data()));
    transcript.add("setDepthTexture", plugin.c().setDepthTexture(depth.data()));
    transcript.add("setProcessedTexture", plugin.c().setProcessedTexture(processed.data()));
    transcript.add("updateColorTexture", plugin.c().updateColorTexture());
    transcript.add("updateDepthTexture", plugin.c().updateDepthTexture());
    transcript.add("updateProcessedTexture", plugin.c().updateProcessedTexture());
    transcript.addBytes("color", color.data(), color.size());
    transcript.addBytes("depth", depth.data(), depth.size());
    transcript.addBytes("processed", processed.data(), processed.size());
    plugin.c().setColorTexture(nullptr);
    plugin.c().setDepthTexture(nullptr);
    plugin.c().setProcessedTexture(nullptr);
}

class ClientRole : public testing::Test {
  protected:
    // Takes both plug-ins the same way. What the Linux one did, for a look at it.
    static std::vector<std::string> takeBoth(const Journey& journey) {
        const std::vector<std::string> onLinux = take(linuxPlugin(), journey);
        EXPECT_THAT(take(macosPlugin(), journey), ElementsAreArray(onLinux));
        return onLinux;
    }

    static std::vector<std::string> take(Plugin& plugin, const Journey& journey) {
        plugin.setVolumes({"/nonexistent"});
        Transcript transcript(plugin);
        plugin.c().printDebug(true);
        journey(plugin, transcript);
        plugin.c().shutDown();
        plugin.c().printDebug(false);
        plugin.c().setReceiveTimeout(0);
        plugin.c().setReconnectReadsHeader(false);
        return transcript.lines();
    }

    static long count(const std::vector<std::string>& lines, const std::string& line) {
        return std::count(lines.begin(), lines.end(), line);
    }
};

} // namespace

TEST_F(ClientRole, IsTheSameWithoutAServer) {
    const std::vector<std::string> lines = takeBoth([](Plugin& plugin, Transcript& transcript) {
        describeServer(plugin, transcript);
        transcript.add("update", plugin.c().update());
        readTouches(plugin, transcript);
        calibratePoints(plugin, transcript);
        plugin.c().logInternalVariables();
        transcript.add("getCameraInfo", plugin.c().getCameraInfo() == nullptr);
        plugin.c().setTouchLerp(0.5f);
        plugin.c().outputCalibratedTouches(true);
        transcript.add("loadProjectionMap", plugin.c().loadProjectionMap(0));
        transcript.add("setProjectionMapping", plugin.c().setProjectionMapping(nullptr, 0));
        plugin.c().setCalibration(nullptr);

        const std::string port = support::unusedPort();
        transcript.replace(port, "PORT");
        plugin.c().initClientWithCustomServer("localhost",
                                              static_cast<unsigned int>(std::stoul(port)));
        transcript.add("update", plugin.c().update());
        plugin.c().setReceiveTimeout(2000); // another way to connect
        transcript.add("update", plugin.c().update());
        describeServer(plugin, transcript);
    });
    EXPECT_EQ(count(lines, "update -100"), 1);
    EXPECT_EQ(count(lines, "update -2"), 2);
}

TEST_F(ClientRole, IsTheSameOnTheFramesOfACamera) {
    const std::string stream = cameraStream(60);
    const std::vector<std::string> lines =
        takeBoth([&stream](Plugin& plugin, Transcript& transcript) {
            LoopbackPeer peer(sending(stream));
            connect(plugin, transcript, peer);
            describeServer(plugin, transcript);
            for (int result = 0; result == 0;) {
                result = plugin.c().update();
                transcript.add("update", result);
                readTouches(plugin, transcript);
                readTextures(plugin, transcript);
            }
        });
    EXPECT_EQ(count(lines, "update 0"), 60);
    EXPECT_EQ(count(lines, "update -101"), 1);
    // Somebody touches: more values are read than the fields of empty slots have.
    EXPECT_LT(count(lines, "getTouchData -0x1p+0"), 61 * 30);
}

TEST_F(ClientRole, IsTheSameWithATimeLimitToo) {
    const std::string stream = cameraStream(3);
    const std::vector<std::string> lines =
        takeBoth([&stream](Plugin& plugin, Transcript& transcript) {
            plugin.c().setReceiveTimeout(3000);
            LoopbackPeer peer([&stream](LoopbackPeer::Line& line) {
                line.accept();
                line.send(stream);
                line.waitUntilClosed();
            });
            connect(plugin, transcript, peer);
            for (int number = 0; number < 4; ++number) {
                transcript.add("update", plugin.c().update());
                readTouches(plugin, transcript);
            }
        });
    EXPECT_EQ(count(lines, "update 0"), 3);
    EXPECT_EQ(count(lines, "says: Data reception did not end in time."), 1);
}

TEST_F(ClientRole, CalibratesTheSamePointsToTheSamePlaces) {
    const std::string document = fileText(examples + "/simulated/QVR_calibration/touch.json");
    const std::string maps =
        fileText(examples + "/simulated/QVR_calibration/touch_projectionMap.json");
    const std::vector<std::string> lines = takeBoth([&](Plugin& plugin, Transcript& transcript) {
        QVR::ProtocolHeader header = support::touchesOnlyHeader();
        header.oneMeterValue = 8000;
        LoopbackPeer peer(sending(support::bytesOf(header)));
        plugin.setVolumes({examples + "/hand"});
        connect(plugin, transcript, peer);
        transcript.add("before", plugin.c().setProjectionMapping(maps.c_str(), 0));
        plugin.c().setCalibration(document.c_str());
        calibratePoints(plugin, transcript);
        for (const int number : {0, 1, 99, -1}) {
            transcript.add("setProjectionMapping",
                           plugin.c().setProjectionMapping(maps.c_str(), number));
            calibratePoints(plugin, transcript);
        }
        plugin.c().setCalibration("{\"depthResX\": 1e300");
        plugin.c().setCalibration("{\"depthResX\": 1e300}");
    });
    EXPECT_GE(count(lines, "setProjectionMapping 1"), 1);
    EXPECT_GE(count(lines, "setProjectionMapping 0"), 1);
}

TEST_F(ClientRole, FindsTheSameSettingsOnTheDisplaysVolume) {
    const std::string stream = cameraStream(2);
    const support::TemporaryFolder folder;
    const std::string display = folder.file("MY \u00C9CRAN");
    std::filesystem::create_directories(folder.file("other"));
    std::filesystem::create_directory(display);
    std::filesystem::copy(examples + "/simulated", display,
                          std::filesystem::copy_options::recursive);
    const std::vector<std::string> lines = takeBoth([&](Plugin& plugin, Transcript& transcript) {
        LoopbackPeer peer(sending(stream));
        transcript.replace(peer.port(), "PORT");
        folder.write("MY \u00C9CRAN/QVR_calibration/touch_client.json",
                     "{\"ip\": \"127.0.0.1\", \"port\": " + peer.port() +
                         ", \"receiveTimeoutMs\": 2000, \"reconnectReadsHeader\": true}");
        plugin.setVolumes({folder.file("other"), display, "/nonexistent"});
        plugin.c().init();
        transcript.add("update", plugin.c().update());
        calibratePoints(plugin, transcript);
        transcript.add("loadProjectionMap", plugin.c().loadProjectionMap(0));
        transcript.add("loadProjectionMap", plugin.c().loadProjectionMap(99));
        calibratePoints(plugin, transcript);
    });
    EXPECT_EQ(count(lines, "update 0"), 1);
    EXPECT_GE(count(lines, "loadProjectionMap 1"), 1);
}

TEST_F(ClientRole, IsTheSameWhenTheServerIsStrange) {
    QVR::ProtocolHeader otherVersion = support::touchesOnlyHeader();
    otherVersion.protocolID = 4000000000;
    QVR::ProtocolHeader tooMany = support::touchesOnlyHeader();
    tooMany.touchCount = 4000000000;
    QVR::ProtocolHeader tooLarge = support::touchesOnlyHeader();
    tooLarge.depthX = tooLarge.depthY = 0x10001;
    tooLarge.depthChannels = tooLarge.depthDepth = 0xFFFF;
    for (const QVR::ProtocolHeader& header : {otherVersion, tooMany, tooLarge}) {
        const std::vector<std::string> lines =
            takeBoth([&header](Plugin& plugin, Transcript& transcript) {
                plugin.c().setReceiveTimeout(1000); // the second connection is never answered
                LoopbackPeer peer(sending(support::bytesOf(header)));
                connect(plugin, transcript, peer);
                describeServer(plugin, transcript);
                transcript.add("update", plugin.c().update());
                transcript.add("update", plugin.c().update());
            });
        EXPECT_GT(lines.size(), 10u);
    }
}

// Both systems number errors in their own way, and the message shows the number.
TEST_F(ClientRole, SaysHowEachSystemCallsABrokenConnection) {
    const Journey broken = [](Plugin& plugin, Transcript& transcript) {
        LoopbackPeer peer([](LoopbackPeer::Line& line) {
            line.accept();
            line.send(support::bytesOf(support::touchesOnlyHeader()));
            line.waitUntilRead();
            line.reset();
        });
        connect(plugin, transcript, peer);
        EXPECT_EQ(peer.finish(), "");
        transcript.add("update", plugin.c().update());
    };
    const auto saidBy = [&broken](Plugin& plugin) {
        return testing::PrintToString(take(plugin, broken));
    };
    EXPECT_THAT(saidBy(linuxPlugin()), testing::HasSubstr(" return: -1 error: 104\""));
    EXPECT_THAT(saidBy(macosPlugin()), testing::HasSubstr(" return: -1 error: 54\""));
    EXPECT_THAT(saidBy(macosPlugin()), testing::HasSubstr("update -101"));
}

// The host would be ended by a signal that the connection raises unless told otherwise, and each
// system is told in its own way.
TEST_F(ClientRole, LivesOnWhenItSendsToAClosedServer) {
    takeBoth([](Plugin& plugin, Transcript& transcript) {
        LoopbackPeer peer([](LoopbackPeer::Line& line) {
            line.accept();
            line.waitForTest(); // a connection reset too early is one that could not be made
            line.reset();
        });
        transcript.replace(peer.port(), "PORT");
        void* client = plugin.function<void*()>("_ZN3QVR13NetworkClient8mkClientEv")();
        const auto connectTo = plugin.function<int(void*, const char*, const char*)>(
            "_ZN3QVR12TcpClientWin7connectEPKcS2_");
        const auto send =
            plugin.function<int(void*, const char*, int)>("_ZN3QVR12TcpClientWin4sendEPKci");
        transcript.add("connect", connectTo(client, "127.0.0.1", peer.port().c_str()));
        peer.proceed();
        EXPECT_EQ(peer.finish(), "");
        transcript.add("send to a connection that was reset", send(client, "bytes", 5));
        transcript.add("send to one that is closed", send(client, "bytes", 5));
        plugin.function<void(void*)>("_ZN3QVR13NetworkClient10freeClientEPS0_")(client);
    });
}
