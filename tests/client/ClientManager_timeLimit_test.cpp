// The time that an update has, when it is limited.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/FakeNetworkClient.h"
#include "client/plugin.h"
#include "support/FullListener.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using client_test::FakeNetworkClient;
using client_test::noCalibrationFile;
using QVR::ClientManager;
using support::bytesOf;
using support::LoopbackPeer;
using testing::Contains;
using testing::ElementsAre;

constexpr int shortTime = 50; // milliseconds; what must fail waits for ever otherwise
constexpr int longTime = 60000;

class ClientManagerTimeLimit : public client_test::ClientFixture {};

TEST_F(ClientManagerTimeLimit, IsOffAtLoad) {
    EXPECT_EQ(ClientManager::receiveTimeoutMs, 0);
}

TEST_F(ClientManagerTimeLimit, IsSetFromCAsWell) {
    setReceiveTimeout(123);
    EXPECT_EQ(ClientManager::receiveTimeoutMs, 123);
}

// By how many bytes of the frame the server gets stuck.
class StalledFrame : public ClientManagerTimeLimit, public testing::WithParamInterface<int> {};

TEST_P(StalledFrame, EndsTheUpdateAndTheConnection) {
    const std::string frame(280, '\0');
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + frame);
        line.send(frame.substr(0, static_cast<std::size_t>(GetParam())));
        line.waitUntilClosed();
    });
    initWith(peer);
    ClientManager::receiveTimeoutMs = longTime;
    ASSERT_EQ(ClientManager::Update(), 0);
    ClientManager::debugLogging = true;
    ClientManager::receiveTimeoutMs = shortTime;
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_THAT(messages(), ElementsAre(noCalibrationFile, "Data reception did not end in time.",
                                        "Client manager ProcessServerFrame() failed with -51"));
    EXPECT_FALSE(ClientManager::isConnected());
    EXPECT_EQ(peer.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(AfterBytes, StalledFrame, testing::Values(0, 1, 279));

TEST_F(ClientManagerTimeLimit, AServerThatNeverSendsItsHeaderEndsInitAndUpdate) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitUntilClosed();
        line.accept();
        line.waitUntilClosed();
    });
    ClientManager::receiveTimeoutMs = shortTime;
    ClientManager::reconnectReadsHeader = true;
    initWith(peer);
    EXPECT_FALSE(ClientManager::isConnected());
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port(),
                                        "Data reception did not end in time.",
                                        "Could not read ProtocolHeader: -51"));
    EXPECT_EQ(peer.finish(), "");
}

// Every byte comes in good time, the frame does not.
TEST_F(ClientManagerTimeLimit, ASteadyTrickleGainsNoTime) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
        line.trickle(std::string(280, '\0'), std::chrono::milliseconds(5));
    });
    initWith(peer);
    ClientManager::receiveTimeoutMs = 2 * shortTime;
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerTimeLimit, AConnectionThatIsNeverTakenUpEndsInTime) {
    const support::FullListener listener;
    ClientManager::receiveTimeoutMs = shortTime;
    ClientManager::Init("127.0.0.1", listener.port());
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -2);
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to 127.0.0.1:" + std::to_string(listener.port()),
                            "Unable to connect to server",
                            "ERROR!  The networkClient could not connect!  Returned: -1"));
}

TEST_F(ClientManagerTimeLimit, AServerThatIsDownIsReportedAsEver) {
    ClientManager::receiveTimeoutMs = longTime;
    initWithoutServer();
    EXPECT_EQ(ClientManager::Update(), -2);
}

TEST_F(ClientManagerTimeLimit, AFrameInPiecesThatComesInTimeIsAFrame) {
    std::vector<QVR::NetworkTouch> touches(10);
    touches[0] = {1, 1.0, 2.0, 3.0};
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
        line.sendInPieces(bytesOf(touches), {1, 2, 100});
    });
    ClientManager::receiveTimeoutMs = longTime;
    initWith(peer);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(peer.finish(), "");
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), 1.0);
}

TEST_F(ClientManagerTimeLimit, CoversOneUpdateAndNothingAfterIt) {
    initWithoutServer();
    QVR::NetworkClient* real = client().networkClient;
    FakeNetworkClient fake;
    fake.connected = false;
    fake.connectResult = -1;
    client().networkClient = &fake;
    ClientManager::receiveTimeoutMs = 1;
    ClientManager::Update();
    EXPECT_THAT(fake.calls, ElementsAre("deadline", "connect 127.0.0.1 " + client().port, "close",
                                        "cleanup", "no deadline"));
    fake.calls.clear();
    for (const int off : {0, -1}) {
        ClientManager::receiveTimeoutMs = off;
        ClientManager::Update();
    }
    EXPECT_THAT(fake.calls, testing::Not(Contains(testing::HasSubstr("deadline"))));
    client().networkClient = real;
}

} // namespace
