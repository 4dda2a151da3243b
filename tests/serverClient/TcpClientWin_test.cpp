// The client against real sockets on the loopback interface.
#include "serverClient/TcpClientWin.h"
#include "support/LogCapture.h"
#include "support/LoopbackPeer.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using support::LogCapture;
using support::LoopbackPeer;
using testing::ElementsAre;

class TcpClientWinTest : public testing::Test {
  protected:
    ~TcpClientWinTest() override { client.close(); }

    int connectTo(const LoopbackPeer& peer) {
        return client.connect("127.0.0.1", peer.port().c_str());
    }

    LogCapture log;
    QVR::TcpClientWin client;
    std::string buffer = std::string(64, '\0');
};

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

const std::string sixtyFourBytes =
    "0123456789abcdef0123456789ABCDEF0123456789ghijkl0123456789GHIJKL";

TEST_F(TcpClientWinTest, IsClosedAndInitialisedFromTheStart) {
    EXPECT_EQ(client.socket, -1);
    EXPECT_EQ(client.init(), 0);
    EXPECT_TRUE(client.isInit());
    EXPECT_FALSE(client.isConnected());
    EXPECT_TRUE(LogCapture::messages().empty());
}

TEST_F(TcpClientWinTest, ConnectsAndSaysWhereTo) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) { line.accept(); });
    EXPECT_EQ(connectTo(peer), 0);
    EXPECT_TRUE(client.isConnected());
    EXPECT_GE(client.socket, 0);
    EXPECT_EQ(client.lastResult, 0);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port()));
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, FindsLocalhostWhateverFamilyItResolvesToFirst) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) { line.accept(); });
    EXPECT_EQ(client.connect("localhost", peer.port().c_str()), 0);
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, ReportsThatNobodyListens) {
    const std::string port = support::unusedPort();
    EXPECT_EQ(client.connect("localhost", port.c_str()), -1);
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(client.socket, -1);
    EXPECT_EQ(client.lastResult, -1);
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre("Connecting to localhost:" + port, "Unable to connect to server"));
}

TEST_F(TcpClientWinTest, PrintsTheLookupFailureToStandardOutput) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    const int code = getaddrinfo("127.0.0.1", "no-port", &hints, &list);
    ASSERT_NE(code, 0);

    testing::internal::CaptureStdout();
    EXPECT_EQ(client.connect("127.0.0.1", "no-port"), -2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "getaddrinfo failed with error: " + std::to_string(code) + "\n");
    EXPECT_EQ(client.lastResult, code);
    EXPECT_FALSE(client.isConnected());
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Connecting to 127.0.0.1:no-port"));
}

TEST_F(TcpClientWinTest, ReportsAHostThatDoesNotResolve) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(client.connect("", "27016"), -2);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed,
              "getaddrinfo failed with error: " + std::to_string(client.lastResult) + "\n");
    EXPECT_NE(client.lastResult, 0);
}

TEST_F(TcpClientWinTest, UsesAnIPv4SocketEvenForAnIPv6Address) {
    const int listener = socket(AF_INET6, SOCK_STREAM, 0);
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    socklen_t size = sizeof address;
    if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0) {
        close(listener);
        GTEST_SKIP() << "no IPv6 loopback here";
    }
    listen(listener, 1);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    const std::string port = std::to_string(ntohs(address.sin6_port));
    EXPECT_EQ(client.connect("::1", port.c_str()), -1);
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre("Connecting to ::1:" + port, "Unable to connect to server"));
    close(listener);
}

TEST_F(TcpClientWinTest, ReceivesExactlyTheLengthAskedFor) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(sixtyFourBytes + "rest");
    });
    ASSERT_EQ(connectTo(peer), 0);
    ASSERT_EQ(peer.finish(), "");
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
    EXPECT_EQ(buffer, sixtyFourBytes);
    EXPECT_EQ(client.recv(buffer.data(), 4), 4);
    EXPECT_EQ(buffer.substr(0, 5), "rest4");
}

TEST_F(TcpClientWinTest, ReturnsTheSizeOfTheLastPiece) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.sendInPieces(sixtyFourBytes, {40});
    });
    ASSERT_EQ(connectTo(peer), 0);
    EXPECT_EQ(client.recv(buffer.data(), 64), 24);
    EXPECT_EQ(buffer, sixtyFourBytes);
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, ReadsNothingWithoutBufferOrLength) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send("data");
    });
    ASSERT_EQ(connectTo(peer), 0);
    EXPECT_EQ(client.recv(nullptr, 100), 100);
    EXPECT_EQ(client.recv(nullptr, -4), -4);
    EXPECT_EQ(client.recv(buffer.data(), 0), 0);
    EXPECT_EQ(client.recv(buffer.data(), -7), -7);
    EXPECT_EQ(client.recv(buffer.data(), 4), 4);
    EXPECT_EQ(buffer.substr(0, 4), "data");
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, GivesUpWhenThePeerHasClosed) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send("part");
        line.close();
    });
    ASSERT_EQ(connectTo(peer), 0);
    LogCapture::messages().clear();
    const int number = client.socket;
    EXPECT_EQ(client.recv(buffer.data(), 64), -50);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Data reception failed with timeout."));
    EXPECT_EQ(client.socket, number);
    EXPECT_TRUE(client.isConnected());
    EXPECT_FALSE(isOpen(number));
    EXPECT_EQ(client.close(), 0);
    EXPECT_EQ(client.socket, -1);
    EXPECT_FALSE(client.isConnected());
}

TEST_F(TcpClientWinTest, ReportsAConnectionThatWasReset) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitForTest(); // a connection reset too early is one that could not be made
        line.reset();
    });
    ASSERT_EQ(connectTo(peer), 0);
    peer.proceed();
    ASSERT_EQ(peer.finish(), "");
    LogCapture::messages().clear();
    const int number = client.socket;
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre("Can be good: rcvArr socket: " + std::to_string(number) +
                            " return: -1 error: " + std::to_string(ECONNRESET)));
    EXPECT_TRUE(client.isConnected());
    EXPECT_FALSE(isOpen(number));
}

TEST_F(TcpClientWinTest, NeverTouchesANumberThatAnotherOwnerHasGotSince) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.close();
        line.accept();
    });
    ASSERT_EQ(connectTo(peer), 0);
    ASSERT_EQ(client.recv(buffer.data(), 64), -50);

    // The host opens a socket of its own, which gets the number that has just become free.
    std::array<int, 2> pair{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
    ASSERT_EQ(pair[0], client.socket);
    ASSERT_EQ(write(pair[1], "secret", 6), 6);
    const std::string closedNumber = "Can be good: rcvArr socket: " + std::to_string(pair[0]) +
                                     " return: -1 error: " + std::to_string(EBADF);

    LogCapture::messages().clear();
    EXPECT_EQ(client.recv(buffer.data(), 6), -1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(closedNumber));
    EXPECT_EQ(client.send("x", 1), -1);
    EXPECT_EQ(client.sendInt(1), -1);
    int value = 0;
    EXPECT_EQ(client.rcvInt(&value), -1);
    EXPECT_EQ(connectTo(peer), 0);
    EXPECT_TRUE(isOpen(pair[0]));
    EXPECT_EQ(client.close(), 0);
    EXPECT_EQ(client.cleanup(), 0);
    EXPECT_TRUE(isOpen(pair[0]));
    EXPECT_EQ(read(pair[0], buffer.data(), 64), 6);
    EXPECT_EQ(buffer.substr(0, 6), "secret");
    close(pair[0]);
    close(pair[1]);
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, TakesOverADescriptorThatIsPutIn) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.close();
    });
    ASSERT_EQ(connectTo(peer), 0);
    ASSERT_EQ(client.recv(buffer.data(), 64), -50);
    client.close();
    std::array<int, 2> pair{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
    client.socket = pair[0];
    ASSERT_EQ(write(pair[1], "hello", 5), 5);
    EXPECT_EQ(client.recv(buffer.data(), 5), 5);
    EXPECT_EQ(client.close(), 0);
    EXPECT_FALSE(isOpen(pair[0]));
    close(pair[1]);
}

TEST_F(TcpClientWinTest, ConnectingAgainLetsTheOldConnectionGo) {
    LoopbackPeer first([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitUntilClosed();
    });
    LoopbackPeer second([](LoopbackPeer::Line& line) { line.accept(); });
    ASSERT_EQ(connectTo(first), 0);
    EXPECT_EQ(connectTo(second), 0);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(first.finish(), "");
    EXPECT_EQ(second.finish(), "");
}

TEST_F(TcpClientWinTest, CloseShutsTheConnectionDownForCopiesOfTheDescriptorToo) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitUntilClosed();
    });
    ASSERT_EQ(connectTo(peer), 0);
    const int copy = dup(client.socket);
    EXPECT_EQ(client.close(), 0);
    EXPECT_EQ(peer.finish(), "");
    close(copy);
}

TEST_F(TcpClientWinTest, CloseAndCleanupSucceedWithoutAConnection) {
    EXPECT_EQ(client.close(), 0);
    EXPECT_EQ(client.close(), 0);
    EXPECT_EQ(client.cleanup(), 0);
    EXPECT_EQ(client.socket, -1);
}

TEST_F(TcpClientWinTest, CleanupCloses) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitUntilClosed();
    });
    ASSERT_EQ(connectTo(peer), 0);
    EXPECT_EQ(client.cleanup(), 0);
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(TcpClientWinTest, SendsBytesAndBigEndianIntegers) {
    std::string got;
    LoopbackPeer peer([&got](LoopbackPeer::Line& line) {
        line.accept();
        got = line.receive(11);
    });
    ASSERT_EQ(connectTo(peer), 0);
    EXPECT_EQ(client.send("abc", 3), 3);
    EXPECT_EQ(client.lastResult, 3);
    EXPECT_EQ(client.sendInt(0x01020304), 4);
    EXPECT_EQ(client.sendInt(-2), 4);
    EXPECT_EQ(client.lastResult, 3);
    ASSERT_EQ(peer.finish(), "");
    EXPECT_EQ(got, std::string("abc\x01\x02\x03\x04\xFF\xFF\xFF\xFE"));
}

TEST_F(TcpClientWinTest, ReceivesBigEndianIntegers) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send("\x01\x02\x03\x04");
    });
    ASSERT_EQ(connectTo(peer), 0);
    ASSERT_EQ(peer.finish(), "");
    int value = 0;
    EXPECT_EQ(client.rcvInt(&value), 4);
    EXPECT_EQ(value, 0x01020304);
}

TEST_F(TcpClientWinTest, SendingToAClosedPeerFailsWithoutASignal) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.waitForTest(); // a connection reset too early is one that could not be made
        line.reset();
    });
    ASSERT_EQ(connectTo(peer), 0);
    peer.proceed();
    ASSERT_EQ(peer.finish(), "");
    client.send("a", 1);
    EXPECT_EQ(client.send("b", 1), -1);
    EXPECT_EQ(client.lastResult, -1);
}

TEST(NetworkClient, MakesAClosedTcpClient) {
    QVR::NetworkClient* client = QVR::NetworkClient::mkClient();
    ASSERT_NE(client, nullptr);
    auto* tcp = dynamic_cast<QVR::TcpClientWin*>(client);
    ASSERT_NE(tcp, nullptr);
    EXPECT_EQ(tcp->socket, -1);
    EXPECT_FALSE(client->isConnected());
    QVR::NetworkClient::freeClient(client);
    QVR::NetworkClient::freeClient(nullptr);
}

// The warning is about base classes that do not say how they are deleted; this one does.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
TEST(NetworkClient, MayBeDeletedByItsOwner) {
    QVR::NetworkClient* client = QVR::NetworkClient::mkClient();
    ASSERT_NE(client, nullptr);
    client->close();
    client->cleanup();
    delete client;
    client = nullptr;
    delete client;
}
#pragma GCC diagnostic pop

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class CountingClient final : public QVR::TcpClientWin {
  public:
    int close() override {
        ++closes;
        return TcpClientWin::close();
    }
    int closes = 0;
};
#pragma GCC diagnostic pop

TEST(NetworkClient, FreesClientsOfOtherKindsAsWell) {
    auto* client = new CountingClient;
    QVR::NetworkClient::freeClient(client);
}

TEST(TcpClientWinOverridden, IsClosedThroughItsTable) {
    const LogCapture log;
    CountingClient client;
    client.cleanup();
    EXPECT_EQ(client.closes, 1);
    EXPECT_EQ(client.connect("127.0.0.1", support::unusedPort().c_str()), -1);
    EXPECT_EQ(client.closes, 2);
}

TEST(NetworkClient, NeedsNoSocketLibrary) {
    EXPECT_EQ(QVR::socketsInit(), 0);
    QVR::socketsCleanUp();
    EXPECT_EQ(QVR::test_receiveB(nullptr, nullptr, 64), 0);
}

// A pointer to a virtual function holds its place in the table.
template <typename Function>
std::ptrdiff_t placeOf(Function function) {
    std::ptrdiff_t place = 0;
    static_assert(sizeof function >= sizeof place);
    std::memcpy(&place, &function, sizeof place);
    return place;
}

TEST(NetworkClient, KeepsTheOrderOfItsTable) {
    using QVR::NetworkClient;
    const std::vector<std::ptrdiff_t> places = {
        placeOf(&NetworkClient::init),       placeOf(&NetworkClient::connect),
        placeOf(&NetworkClient::send),       placeOf(&NetworkClient::close),
        placeOf(&NetworkClient::recv),       placeOf(&NetworkClient::cleanup),
        placeOf(&NetworkClient::sendInt),    placeOf(&NetworkClient::rcvInt),
        placeOf(&NetworkClient::isInit),     placeOf(&NetworkClient::isConnected),
        placeOf(&NetworkClient::setDeadline)};
    for (std::size_t slot = 0; slot < places.size(); ++slot) {
        const auto step = static_cast<std::ptrdiff_t>(slot * sizeof(void*));
        EXPECT_EQ(places[slot] - places[0], step) << "slot " << slot;
    }
}

} // namespace
