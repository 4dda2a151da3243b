// The client against scripted results of the system calls, which this program replaces: what no
// real peer can be made to do at a chosen moment.
#include "serverClient/TcpClientWin.h"
#include "support/LogCapture.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <time.h>

namespace {

struct Result {
    long value = 0;
    int error = 0;
};

// What the next calls give, and what they were called with.
struct System {
    std::deque<Result> reads;
    int readCalls = 0;
    Result sent;
    std::vector<std::string> sends;
    int sendFlags = 0;
    bool refusesSockets = false;
    std::vector<std::string> sockets;   // "family type protocol" of each
    std::vector<long> sleeps;           // nanoseconds
    std::vector<std::string> lookups;   // "host port", then the hints
    std::vector<int> connectionResults; // one for each address that the lookup finds
    std::vector<int> connections;       // the address of each attempt, by its place in the list
    int listsFreed = 0;
    std::vector<std::string> shutdowns; // "descriptor direction" of each
    std::deque<Result> polls;
    std::vector<std::string> waits; // "descriptor events" of each
};

System& scripted() {
    static System state;
    return state;
}

// What the lookup finds: up to four addresses, told apart by their length.
std::array<addrinfo, 4>& addressList() {
    static std::array<addrinfo, 4> list;
    return list;
}

long answer(const Result& result) {
    errno = result.error;
    return result.value;
}

} // namespace

extern "C" {

ssize_t recv(int, void* buffer, size_t size, int) {
    ++scripted().readCalls;
    if (scripted().reads.empty()) {
        return answer({-1, EBADF});
    }
    const Result result = scripted().reads.front();
    scripted().reads.pop_front();
    if (result.value > 0) {
        std::memset(buffer, 'x', std::min(size, static_cast<std::size_t>(result.value)));
    }
    return answer(result);
}

ssize_t send(int, const void* buffer, size_t size, int flags) {
    scripted().sends.emplace_back(static_cast<const char*>(buffer), size);
    scripted().sendFlags = flags;
    return answer(scripted().sent);
}

int socket(int family, int type, int protocol) noexcept {
    scripted().sockets.push_back(std::to_string(family) + " " + std::to_string(type) + " " +
                                 std::to_string(protocol));
    return static_cast<int>(answer(scripted().refusesSockets ? Result{-1, EMFILE} : Result{900}));
}

int shutdown(int descriptor, int direction) noexcept {
    scripted().shutdowns.push_back(std::to_string(descriptor) + " " + std::to_string(direction));
    return 0;
}

int getaddrinfo(const char* host, const char* port, const addrinfo* hints, addrinfo** list) {
    scripted().lookups.push_back(std::string(host) + " " + port);
    for (const int hint : {hints->ai_flags, hints->ai_family, hints->ai_socktype,
                           hints->ai_protocol, static_cast<int>(hints->ai_addrlen)}) {
        scripted().lookups.push_back(std::to_string(hint));
    }
    const std::size_t count = scripted().connectionResults.size();
    if (count == 0) {
        return EAI_NONAME;
    }
    for (std::size_t place = 0; place < count; ++place) {
        addrinfo& entry = addressList().at(place);
        entry = {};
        entry.ai_family = AF_INET6;
        entry.ai_addrlen = static_cast<socklen_t>(place);
        entry.ai_next = place + 1 < count ? &addressList().at(place + 1) : nullptr;
    }
    *list = addressList().data();
    return 0;
}

void freeaddrinfo(addrinfo* list) noexcept {
    scripted().listsFreed += list == addressList().data() ? 1 : 100;
}

int connect(int, const sockaddr*, socklen_t place) {
    scripted().connections.push_back(static_cast<int>(place));
    const int result = scripted().connectionResults.at(place);
    return static_cast<int>(answer({result, ECONNREFUSED}));
}

int poll(pollfd* watched, nfds_t, int) {
    scripted().waits.push_back(std::to_string(watched->fd) + " " + std::to_string(watched->events));
    if (scripted().polls.empty()) {
        return 1;
    }
    const Result result = scripted().polls.front();
    scripted().polls.pop_front();
    return static_cast<int>(answer(result));
}

int nanosleep(const timespec* duration, timespec*) {
    scripted().sleeps.push_back(duration->tv_sec * 1'000'000'000L + duration->tv_nsec);
    return 0;
}

} // extern "C"

namespace {

using support::LogCapture;
using testing::ElementsAre;

class TcpClientWinCalls : public testing::Test {
  protected:
    TcpClientWinCalls() {
        scripted() = System{};
        client.socket = 900; // closing it fails, harmlessly
    }

    LogCapture log;
    QVR::TcpClientWin client;
    std::string buffer = std::string(64, '\0');
};

TEST_F(TcpClientWinCalls, EndsWithTheFourThousandAndFirstEmptyRead) {
    scripted().reads.assign(4001, Result{0});
    EXPECT_EQ(client.recv(buffer.data(), 64), -50);
    EXPECT_EQ(scripted().readCalls, 4001);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Data reception failed with timeout."));
}

TEST_F(TcpClientWinCalls, BearsFourThousandEmptyReads) {
    scripted().reads.assign(4000, Result{0});
    scripted().reads.push_back({64});
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
    EXPECT_TRUE(LogCapture::messages().empty());
}

TEST_F(TcpClientWinCalls, CountsEmptyReadsAcrossPieces) {
    scripted().reads.assign(3000, Result{0});
    scripted().reads.push_back({1});
    scripted().reads.insert(scripted().reads.end(), 1001, Result{0});
    scripted().reads.push_back({63});
    EXPECT_EQ(client.recv(buffer.data(), 64), -50);
    EXPECT_EQ(scripted().readCalls, 4002);
}

TEST_F(TcpClientWinCalls, CountsEmptyReadsAnewInEachCall) {
    scripted().reads.assign(4000, Result{0});
    scripted().reads.push_back({64});
    scripted().reads.insert(scripted().reads.end(), 4000, Result{0});
    scripted().reads.push_back({64});
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
}

TEST_F(TcpClientWinCalls, ReportsTheErrorNumberOfAFailedRead) {
    scripted().reads = {{10}, {-1, ETIMEDOUT}};
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Can be good: rcvArr socket: 900 return: -1 "
                                                    "error: " +
                                                    std::to_string(ETIMEDOUT)));
    EXPECT_EQ(client.socket, 900);
    EXPECT_TRUE(client.isConnected());
}

TEST_F(TcpClientWinCalls, NoticesASystemThatGivesMoreThanWasAskedFor) {
    scripted().reads = {{40}, {40}};
    // In the builds that assert, what follows happens in a process of its own.
    QVR::Logger::RegisterDebugCallback([](const char* message) { std::fputs(message, stderr); });
    EXPECT_DEBUG_DEATH(client.recv(buffer.data(), 64), "rcvArr n_rcvd 80 != nbytes 64");
}

TEST_F(TcpClientWinCalls, AnIntegerIsOneRead) {
    scripted().reads = {{2}, {2}};
    int value = -1;
    EXPECT_EQ(client.rcvInt(&value), 2);
    EXPECT_EQ(scripted().readCalls, 1);
}

TEST_F(TcpClientWinCalls, WaitsTenMillisecondsOnceWhenTheSendBufferIsFull) {
    scripted().sent = {-1, EAGAIN};
    EXPECT_EQ(client.send("abc", 3), -1);
    EXPECT_THAT(scripted().sends, ElementsAre("abc"));
    EXPECT_THAT(scripted().sleeps, ElementsAre(10'000'000L));
    EXPECT_EQ(client.lastResult, -1);
}

TEST_F(TcpClientWinCalls, AnIntegerWaitsLikewiseAndLeavesTheLastResult) {
    scripted().sent = {-1, EAGAIN};
    client.lastResult = 7;
    EXPECT_EQ(client.sendInt(1), -1);
    EXPECT_THAT(scripted().sends, ElementsAre(std::string("\0\0\0\1", 4)));
    EXPECT_THAT(scripted().sleeps, ElementsAre(10'000'000L));
    EXPECT_EQ(client.lastResult, 7);
}

TEST_F(TcpClientWinCalls, DoesNotWaitAfterOtherErrors) {
    scripted().sent = {-1, EPIPE};
    EXPECT_EQ(client.send("abc", 3), -1);
    EXPECT_EQ(client.sendInt(1), -1);
    scripted().sent = {3, EAGAIN};
    EXPECT_EQ(client.send("abc", 3), 3);
    EXPECT_TRUE(scripted().sleeps.empty());
}

#ifdef MSG_NOSIGNAL
TEST_F(TcpClientWinCalls, AsksForNoSignalWithEverySend) {
    client.send("a", 1);
    EXPECT_EQ(scripted().sendFlags, MSG_NOSIGNAL);
    scripted().sendFlags = 0;
    client.sendInt(1);
    EXPECT_EQ(scripted().sendFlags, MSG_NOSIGNAL);
}
#endif

TEST_F(TcpClientWinCalls, ShutsBothDirectionsDownOnceAConnectionEnds) {
    const std::string bothWays = "900 " + std::to_string(SHUT_RDWR);
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    EXPECT_THAT(scripted().shutdowns, ElementsAre(bothWays));
    client.close();
    EXPECT_THAT(scripted().shutdowns, ElementsAre(bothWays));

    client.socket = 900;
    client.close();
    EXPECT_THAT(scripted().shutdowns, ElementsAre(bothWays, bothWays));
}

TEST_F(TcpClientWinCalls, OwnsANumberAgainThatANewConnectionGets) {
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    scripted().connectionResults = {0};
    EXPECT_EQ(client.connect("camera.local", "27016"), 0);
    EXPECT_EQ(client.socket, 900);
    scripted().shutdowns.clear();
    client.close();
    EXPECT_EQ(scripted().shutdowns.size(), 1u);
}

TEST_F(TcpClientWinCalls, WaitsForEveryPieceWhenThereIsADeadline) {
    client.setDeadline(QVR::NetworkClient::Clock::now() + std::chrono::hours(1));
    scripted().reads = {{40}, {24}};
    EXPECT_EQ(client.recv(buffer.data(), 64), 24);
    const std::string readable = "900 " + std::to_string(POLLIN);
    EXPECT_THAT(scripted().waits, ElementsAre(readable, readable));

    client.setDeadline(std::nullopt);
    scripted().reads = {{64}};
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
    EXPECT_EQ(scripted().waits.size(), 2u);
}

TEST_F(TcpClientWinCalls, ReadsNothingOnceTheDeadlineHasPassed) {
    client.setDeadline(QVR::NetworkClient::Clock::now());
    scripted().reads = {{64}};
    EXPECT_EQ(client.recv(buffer.data(), 64), -51);
    EXPECT_EQ(scripted().readCalls, 0);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Data reception did not end in time."));
    EXPECT_EQ(scripted().shutdowns.size(), 1u);
    client.close();
    EXPECT_EQ(scripted().shutdowns.size(), 1u);
}

// The signals of a garbage collector reach a host many times a second.
TEST_F(TcpClientWinCalls, WaitsOnAfterASignal) {
    client.setDeadline(QVR::NetworkClient::Clock::now() + std::chrono::hours(1));
    scripted().polls = {{-1, EINTR}, {-1, EINTR}, {1}};
    scripted().reads = {{64}};
    EXPECT_EQ(client.recv(buffer.data(), 64), 64);
    EXPECT_EQ(scripted().waits.size(), 3u);
}

TEST_F(TcpClientWinCalls, SignalsGainAWaitNoTime) {
    client.setDeadline(QVR::NetworkClient::Clock::now() + std::chrono::milliseconds(1));
    scripted().polls.assign(std::size_t{1} << 20, {-1, EINTR});
    EXPECT_EQ(client.recv(buffer.data(), 64), -51);
    EXPECT_EQ(scripted().readCalls, 0);
}

TEST_F(TcpClientWinCalls, AWaitThatFailsEndsTheConnection) {
    client.setDeadline(QVR::NetworkClient::Clock::now() + std::chrono::hours(1));
    scripted().polls = {{-1, ENOMEM}};
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Can be good: rcvArr socket: 900 return: -1 "
                                                    "error: " +
                                                    std::to_string(ENOMEM)));
}

TEST_F(TcpClientWinCalls, DoesNotWaitForAConnectionThatIsGone) {
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    client.setDeadline(QVR::NetworkClient::Clock::now() + std::chrono::hours(1));
    EXPECT_EQ(client.recv(buffer.data(), 64), -1);
    EXPECT_TRUE(scripted().waits.empty());
}

TEST_F(TcpClientWinCalls, LooksUpStreamsOverTcpOfAnyFamily) {
    client.socket = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(client.connect("camera.local", "27016"), -2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "getaddrinfo failed with error: " + std::to_string(EAI_NONAME) + "\n");
    EXPECT_THAT(scripted().lookups,
                ElementsAre("camera.local 27016", "0", std::to_string(AF_UNSPEC),
                            std::to_string(SOCK_STREAM), std::to_string(IPPROTO_TCP), "0"));
    EXPECT_EQ(client.lastResult, EAI_NONAME);
    EXPECT_TRUE(scripted().sockets.empty());
    EXPECT_EQ(scripted().listsFreed, 0);
}

TEST_F(TcpClientWinCalls, TriesAddressesInOrderUntilOneAccepts) {
    client.socket = -1;
    scripted().connectionResults = {-1, -1, 0, 0};
    EXPECT_EQ(client.connect("camera.local", "27016"), 0);
    EXPECT_THAT(scripted().connections, ElementsAre(0, 1, 2));
    const std::string internetStream =
        std::to_string(AF_INET) + " " + std::to_string(SOCK_STREAM) + " 0";
    EXPECT_THAT(scripted().sockets, ElementsAre(internetStream, internetStream, internetStream));
    EXPECT_EQ(client.lastResult, 0);
    EXPECT_EQ(client.socket, 900);
    EXPECT_EQ(scripted().listsFreed, 1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Connecting to camera.local:27016"));
}

TEST_F(TcpClientWinCalls, IsClosedWhenNoAddressAccepts) {
    client.socket = -1;
    scripted().connectionResults = {-1, -1};
    EXPECT_EQ(client.connect("camera.local", "27016"), -1);
    EXPECT_THAT(scripted().connections, ElementsAre(0, 1));
    EXPECT_EQ(client.lastResult, -1);
    EXPECT_EQ(client.socket, -1);
    EXPECT_EQ(scripted().listsFreed, 1);
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre("Connecting to camera.local:27016", "Unable to connect to server"));
}

TEST_F(TcpClientWinCalls, ReportsThatThereIsNoSocketToBeHad) {
    client.socket = -1;
    scripted().connectionResults = {0, 0};
    scripted().refusesSockets = true;
    testing::internal::CaptureStdout();
    EXPECT_EQ(client.connect("127.0.0.1", "9"), -2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Could not create socket : " + std::to_string(EMFILE));
    EXPECT_EQ(client.socket, -1);
    EXPECT_EQ(client.lastResult, 0);
    EXPECT_EQ(scripted().sockets.size(), 1u);
    EXPECT_TRUE(scripted().connections.empty());
    EXPECT_EQ(scripted().listsFreed, 1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("Connecting to 127.0.0.1:9"));
}

} // namespace
