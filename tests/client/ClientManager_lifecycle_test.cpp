// Creation, settings file, destruction.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/FakeNetworkClient.h"
#include "foundation/utils.h"

#include <string>
#include <thread>

namespace {

using QVR::ClientManager;
using support::LoopbackPeer;
using testing::ElementsAre;

class ClientManagerLifecycle : public client_test::ClientFixture {
  protected:
    static void sendHeader(LoopbackPeer::Line& line) {
        line.accept();
        line.send(support::bytesOf(support::touchesOnlyHeader()));
    }

    // Inits from a settings file of this text; what the host would see printed is dropped.
    void initFromSettings(const std::string& text) const {
        volume.write("QVR_calibration/touch_client.json", text);
        testing::internal::CaptureStdout();
        ClientManager::Init();
        testing::internal::GetCapturedStdout();
    }
};

TEST_F(ClientManagerLifecycle, StartsWithoutAClient) {
    EXPECT_EQ(ClientManager::Get(), nullptr);
    EXPECT_FALSE(ClientManager::HasInstance());
    EXPECT_EQ(ClientManager::_instance, nullptr);
    EXPECT_FALSE(ClientManager::isConnected());
    EXPECT_FALSE(ClientManager::debugLogging);
    EXPECT_TRUE(ClientManager::convertImageBuffersTo8bit4channel);
    EXPECT_FALSE(ClientManager::ranSocketsInit);
    EXPECT_EQ(calibratedCoord.x, 0.0);
    EXPECT_EQ(calibratedCoord.y, 0.0);
    EXPECT_EQ(calibratedCoord.z, 0.0);
}

TEST_F(ClientManagerLifecycle, SaysEachStepOfASuccessfulStartWithDebugging) {
    ClientManager::debugLogging = true;
    LoopbackPeer peer(sendHeader);
    initWith(peer);
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to Server at: 127.0.0.1 : " + peer.port(),
                            "Client manager starting...", "Connecting to 127.0.0.1:" + peer.port(),
                            "Received header:", QVR::utils::headerToString(client().header),
                            client_test::noCalibrationFile, "Client manager instantiated."));
    EXPECT_TRUE(ClientManager::HasInstance());
    EXPECT_TRUE(ClientManager::isConnected());
    EXPECT_EQ(client().ip, "127.0.0.1");
    EXPECT_EQ(client().port, peer.port());
}

TEST_F(ClientManagerLifecycle, SaysOnlyWhatMattersWithoutDebugging) {
    LoopbackPeer peer(sendHeader);
    initWith(peer);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port(),
                                        client_test::noCalibrationFile));
    forgetMessages();
    initWith(peer);
    ClientManager::Destroy();
    ClientManager::Destroy();
    EXPECT_TRUE(messages().empty());
}

TEST_F(ClientManagerLifecycle, AServerThatIsDownStillLeavesAClient) {
    ClientManager::debugLogging = true;
    const std::string port = support::unusedPort();
    ClientManager::Init("127.0.0.1", static_cast<unsigned int>(std::stoul(port)));
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to Server at: 127.0.0.1 : " + port,
                            "Client manager starting...", "Connecting to 127.0.0.1:" + port,
                            "Unable to connect to server",
                            "ERROR!  The networkClient could not connect!  Returned: -1",
                            "Client manager instantiated."));
    EXPECT_TRUE(ClientManager::HasInstance());
    EXPECT_FALSE(ClientManager::isConnected());
    EXPECT_EQ(client().header.protocolID, 9999u);
    EXPECT_EQ(client().header.endianTest, 2u);
    EXPECT_EQ(client().header.touchCount, 0u);
    EXPECT_EQ(client().colorTexture, nullptr);
    EXPECT_EQ(client().depthTexture, nullptr);
    EXPECT_EQ(client().processedTexture, nullptr);
    EXPECT_EQ(client().getNetworkTouches(), nullptr);
}

TEST_F(ClientManagerLifecycle, ASecondInitChangesNothing) {
    LoopbackPeer peer(sendHeader);
    initWith(peer);
    const ClientManager* before = ClientManager::Get();
    ClientManager::debugLogging = true;
    forgetMessages();
    ClientManager::Init("elsewhere", 1);
    EXPECT_THAT(messages(), ElementsAre("Connecting to Server at: elsewhere : 1",
                                        "WARNING: Depth plugin has already been initialized."));
    EXPECT_EQ(ClientManager::Get(), before);
    EXPECT_EQ(client().ip, "127.0.0.1");
}

TEST_F(ClientManagerLifecycle, SaysEachStepOfTheEndWithDebugging) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        sendHeader(line);
        line.waitUntilClosed();
    });
    initWith(peer);
    ClientManager::debugLogging = true;
    forgetMessages();
    ClientManager::Destroy();
    EXPECT_THAT(messages(),
                ElementsAre("Shutting down client manager...", "Client starting destructor...",
                            "Client destructor done.", "Done shutting down ClientManager."));
    EXPECT_EQ(peer.finish(), "");
    EXPECT_FALSE(ClientManager::HasInstance());

    forgetMessages();
    ClientManager::Destroy();
    EXPECT_THAT(messages(), ElementsAre("Shutting down client manager...",
                                        "WARNING: Depth plugin has already been destroyed!"));
}

TEST_F(ClientManagerLifecycle, StartsAgainAfterTheEnd) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        sendHeader(line);
        sendHeader(line);
    });
    initWith(peer);
    client().closeClient();
    ClientManager::Destroy();
    initWith(peer);
    EXPECT_TRUE(ClientManager::isConnected());
    EXPECT_EQ(client().header.touchCount, 10u);
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerLifecycle, HoldsItsMutexFromFirstConnectionToInstance) {
    bool wasFree = true;
    LoopbackPeer peer([&wasFree](LoopbackPeer::Line& line) {
        line.accept();
        wasFree = clientManagerMutex.try_lock();
        if (wasFree) {
            clientManagerMutex.unlock();
        }
        line.send(support::bytesOf(support::touchesOnlyHeader()));
    });
    initWith(peer);
    EXPECT_EQ(peer.finish(), "");
    EXPECT_FALSE(wasFree);
    ASSERT_TRUE(clientManagerMutex.try_lock());
    clientManagerMutex.unlock();
}

TEST_F(ClientManagerLifecycle, IsThereOnlyOnceItIsComplete) {
    static std::string seen;
    seen.clear();
    QVR::Logger::RegisterDebugCallback([](const char* message) {
        seen += ClientManager::HasInstance() ? "client: " : "no client: ";
        seen += std::string(message) + "\n";
    });
    ClientManager::debugLogging = true;
    LoopbackPeer peer(sendHeader);
    initWith(peer);
    ClientManager::debugLogging = false;
    EXPECT_NE(seen.find("no client: Client manager instantiated.\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("\nclient: "), std::string::npos) << seen;
    EXPECT_TRUE(ClientManager::HasInstance());
}

TEST_F(ClientManagerLifecycle, HoldsItsMutexThroughTheWholeEnd) {
    initWithoutServer();
    static int linesWithMutexFree;
    static int lines;
    linesWithMutexFree = lines = 0;
    QVR::Logger::RegisterDebugCallback([](const char*) {
        ++lines;
        std::thread([] {
            if (clientManagerMutex.try_lock()) {
                ++linesWithMutexFree;
                clientManagerMutex.unlock();
            }
        }).join();
    });
    ClientManager::debugLogging = true;
    ClientManager::Destroy();
    ClientManager::debugLogging = false;
    EXPECT_EQ(lines, 4);
    EXPECT_EQ(linesWithMutexFree, 0);
    ASSERT_TRUE(clientManagerMutex.try_lock());
    clientManagerMutex.unlock();
}

TEST_F(ClientManagerLifecycle, ItsSwitchesOutliveAClient) {
    ClientManager::debugLogging = true;
    ClientManager::convertImageBuffersTo8bit4channel = false;
    initWithoutServer();
    ClientManager::Destroy();
    initWithoutServer();
    EXPECT_TRUE(ClientManager::debugLogging);
    EXPECT_FALSE(ClientManager::convertImageBuffersTo8bit4channel);
    EXPECT_EQ(messages().back(), "Client manager instantiated.");
}

TEST_F(ClientManagerLifecycle, CloseClientClosesThenCleansUp) {
    initWithoutServer();
    QVR::NetworkClient* real = client().networkClient;
    client_test::FakeNetworkClient fake;
    client().networkClient = &fake;
    client().closeClient();
    EXPECT_THAT(fake.calls, ElementsAre("close", "cleanup"));
    EXPECT_TRUE(ClientManager::isConnected());
    fake.connected = false;
    EXPECT_FALSE(ClientManager::isConnected());
    client().networkClient = nullptr;
    client().closeClient();
    EXPECT_FALSE(ClientManager::isConnected());
    client().networkClient = real;
}

TEST_F(ClientManagerLifecycle, ReadsHostAndPortFromTheSettingsFile) {
    ClientManager::debugLogging = true;
    LoopbackPeer peer(sendHeader);
    volume.write("QVR_calibration/touch_client.json",
                 R"({"ip": "127.0.0.1", "port": )" + peer.port() + "}");
    ClientManager::Init();
    ASSERT_GE(messages().size(), 2u);
    EXPECT_EQ(messages()[0], "Client manager Init...");
    EXPECT_EQ(messages()[1], "Connecting to Server at: 127.0.0.1 : " + peer.port());
    EXPECT_TRUE(ClientManager::isConnected());
    EXPECT_EQ(peer.finish(), "");
}

// 127.0.0.5 is this machine, where nobody listens: the attempt fails at once.

TEST_F(ClientManagerLifecycle, APortThatIsNoNumberKeepsTheDefault) {
    initFromSettings(R"({"ip": "127.0.0.5", "port": "5000"})");
    EXPECT_EQ(client().ip, "127.0.0.5");
    EXPECT_EQ(client().port, "27016");
}

TEST_F(ClientManagerLifecycle, AMissingPortKeepsTheDefault) {
    initFromSettings(R"({"ip": "127.0.0.5"})");
    EXPECT_EQ(client().port, "27016");
}

TEST_F(ClientManagerLifecycle, AMissingHostIsTheEmptyName) {
    initFromSettings(R"({"port": 5000})");
    EXPECT_EQ(client().ip, "");
    EXPECT_EQ(client().port, "5000");
}

TEST_F(ClientManagerLifecycle, AHostThatIsNoStringIsTheEmptyName) {
    initFromSettings(R"({"ip": 5, "port": 5000})");
    EXPECT_EQ(client().ip, "");
    EXPECT_EQ(client().port, "5000");
}

TEST_F(ClientManagerLifecycle, SettingsThatAreNoObjectHaveNeither) {
    for (const std::string text : {"[]", "null", "5000"}) {
        initFromSettings(text);
        EXPECT_EQ(client().ip, "") << text;
        EXPECT_EQ(client().port, "27016") << text;
        ClientManager::Destroy();
    }
}

TEST_F(ClientManagerLifecycle, AFractionalPortIsCutAndAnAbsurdOneDoesNoHarm) {
    initFromSettings(R"({"ip": "127.0.0.5", "port": 5000.9})");
    EXPECT_EQ(client().port, "5000");
    ClientManager::Destroy();
    initFromSettings(R"({"ip": "127.0.0.5", "port": -1})");
    EXPECT_EQ(client().port, "4294967295");
    ClientManager::Destroy();
    initFromSettings(R"({"ip": "127.0.0.5", "port": 1e300})");
    EXPECT_EQ(client().port, "2147483648");
}

TEST_F(ClientManagerLifecycle, TheSettingsFileSetsBothSwitches) {
    initFromSettings(R"({"ip": "127.0.0.5", "receiveTimeoutMs": 2500.7,
                         "reconnectReadsHeader": true})");
    EXPECT_EQ(ClientManager::receiveTimeoutMs, 2500);
    EXPECT_TRUE(ClientManager::reconnectReadsHeader);
    ClientManager::Destroy();

    // Without the keys, and for values of another type, they stay as they are.
    for (const std::string text :
         {R"({"ip": "127.0.0.5"})",
          R"({"ip": "127.0.0.5", "receiveTimeoutMs": "1", "reconnectReadsHeader": 0})"}) {
        initFromSettings(text);
        EXPECT_EQ(ClientManager::receiveTimeoutMs, 2500) << text;
        EXPECT_TRUE(ClientManager::reconnectReadsHeader) << text;
        ClientManager::Destroy();
    }

    initFromSettings(R"({"ip": "127.0.0.5", "receiveTimeoutMs": 0,
                         "reconnectReadsHeader": false})");
    EXPECT_EQ(ClientManager::receiveTimeoutMs, 0);
    EXPECT_FALSE(ClientManager::reconnectReadsHeader);
}

TEST_F(ClientManagerLifecycle, AnAbsurdTimeoutIsNoLimitOrALongOne) {
    for (const std::string number : {"-1e300", "1e300", "-1"}) {
        initFromSettings(R"({"ip": "127.0.0.5", "receiveTimeoutMs": )" + number + "}");
        EXPECT_LT(ClientManager::receiveTimeoutMs, 0) << number;
        ClientManager::Destroy();
    }
    initFromSettings(R"({"ip": "127.0.0.5", "receiveTimeoutMs": 2147483647})");
    EXPECT_EQ(ClientManager::Update(), -2);
}

TEST_F(ClientManagerLifecycle, AnUnreadableSettingsTextMeansTheDefaults) {
    for (const std::string text :
         {"{\"ip\": \"127.0.0.5\"", "", "nonsense", "{\"port\": 5000 /* comment */}"}) {
        initFromSettings(text);
        EXPECT_EQ(client().ip, "localhost") << text;
        EXPECT_EQ(client().port, "27016") << text;
        for (const std::string& message : messages()) {
            EXPECT_EQ(message.find("pars"), std::string::npos) << message;
        }
        ClientManager::Destroy();
    }
}

} // namespace
