#include "support/LoopbackPeer.h"

#include <array>
#include <string>

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using support::LoopbackPeer;

int connectTo(unsigned int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

std::string readOnce(int descriptor) {
    std::array<char, 64> bytes{};
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), 0);
    return size > 0 ? std::string(bytes.data(), static_cast<std::size_t>(size)) : "";
}

TEST(LoopbackPeer, SendsPiecesThatArriveOneByOne) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.sendInPieces("abcdefg", {1, 2});
    });
    const int client = connectTo(peer.portNumber());
    EXPECT_EQ(readOnce(client), "a");
    EXPECT_EQ(readOnce(client), "bc");
    EXPECT_EQ(readOnce(client), "defg");
    EXPECT_EQ(peer.finish(), "");
    close(client);
}

TEST(LoopbackPeer, SaysWhyAScriptFailed) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.receive(3);
    });
    const int client = connectTo(peer.portNumber());
    EXPECT_EQ(send(client, "ab", 2, 0), 2);
    close(client);
    EXPECT_EQ(peer.finish(), "receive: the client has gone");
}

TEST(LoopbackPeer, InterruptsAScriptThatIsStillWaiting) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) { line.accept(); });
}

TEST(LoopbackPeer, WaitsForTheTest) {
    bool passed = false;
    LoopbackPeer peer([&passed](LoopbackPeer::Line& line) {
        line.waitForTest();
        passed = true;
    });
    peer.proceed();
    EXPECT_EQ(peer.finish(), "");
    EXPECT_TRUE(passed);
}

TEST(LoopbackPeer, KeepsWhatTheClientSentUntilItClosed) {
    std::string got;
    LoopbackPeer peer([&got](LoopbackPeer::Line& line) {
        line.accept();
        got = line.waitUntilClosed();
    });
    const int client = connectTo(peer.portNumber());
    EXPECT_EQ(send(client, "bye", 3, 0), 3);
    close(client);
    EXPECT_EQ(peer.finish(), "");
    EXPECT_EQ(got, "bye");
}

TEST(LoopbackPeer, KnowsAPortWhereNobodyListens) {
    EXPECT_EQ(connectTo(static_cast<unsigned int>(std::stoul(support::unusedPort()))), -1);
}

} // namespace
