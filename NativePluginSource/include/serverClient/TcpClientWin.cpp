#include "serverClient/TcpClientWin.h"

#include "foundation/Logger.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace QVR {

namespace {

constexpr int peerClosed = -50;
constexpr int outOfTime = -51;

// A closed peer shows as reads of nothing; a server that is being restarted shows as a few.
constexpr int emptyReadLimit = 4000;

// A write to a closed peer must come back as an error, never as a signal that ends the host.
// Some platforms say so once per socket, the others with every send.
#ifdef SO_NOSIGPIPE
constexpr int sendFlags = 0;

void suppressPipeSignal(int descriptor) {
    const int one = 1;
    if (setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &one, sizeof one) < 0) {
        std::puts("ERROR SO_NOSIGPIPE failed. Not good at all");
    }
}
#else
constexpr int sendFlags = MSG_NOSIGNAL;

void suppressPipeSignal(int) {}
#endif

void waitWhenFull(int result) {
    if (result < 0 && errno == EAGAIN) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace

int TcpClientWin::init() {
    return 0;
}

bool TcpClientWin::isInit() {
    return true;
}

bool TcpClientWin::isConnected() {
    return socket >= 0;
}

int TcpClientWin::cleanup() {
    close();
    return 0;
}

int TcpClientWin::close() {
    releaseDescriptor();
    socket = -1;
    releasedDescriptor_ = -1;
    return 0;
}

int TcpClientWin::liveDescriptor() const {
    return socket == releasedDescriptor_ ? -1 : socket;
}

void TcpClientWin::releaseDescriptor() {
    const int descriptor = liveDescriptor();
    if (descriptor < 0) {
        return;
    }
    shutdown(descriptor, SHUT_RDWR);
    ::close(descriptor);
    releasedDescriptor_ = descriptor;
}

int TcpClientWin::connect(const char* host, const char* port) {
    Logger::Log("Connecting to " + std::string(host) + ":" + port);

    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    lastResult = getaddrinfo(host, port, &hints, &list);
    if (lastResult != 0) {
        std::printf("getaddrinfo failed with error: %d\n", lastResult);
        return -2;
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> addresses(list, freeaddrinfo);

    // A connection that is still open would be lost with its number.
    releaseDescriptor();
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        // IPv4 whatever the entry says: the server listens there, and an IPv6 entry of
        // "localhost" fails at once and gives way to the next.
        socket = ::socket(AF_INET, SOCK_STREAM, 0);
        releasedDescriptor_ = -1;
        suppressPipeSignal(socket);
        if (socket < 0) {
            std::printf("Could not create socket : %d", errno);
            return -2;
        }
        lastResult = connectInTime(entry->ai_addr, entry->ai_addrlen);
        if (lastResult == 0) {
            break;
        }
        close();
    }

    if (socket >= 0) {
        return 0;
    }
    Logger::Log("Unable to connect to server");
    return -1;
}

int TcpClientWin::send(const char* buffer, int length) {
    const auto size = static_cast<std::size_t>(length);
    lastResult = static_cast<int>(::send(liveDescriptor(), buffer, size, sendFlags));
    waitWhenFull(lastResult);
    return lastResult;
}

int TcpClientWin::sendInt(int value) {
    const std::uint32_t bigEndian = htonl(static_cast<std::uint32_t>(value));
    const auto result =
        static_cast<int>(::send(liveDescriptor(), &bigEndian, sizeof bigEndian, sendFlags));
    waitWhenFull(result);
    return result;
}

int TcpClientWin::rcvInt(int* value) {
    std::uint32_t bigEndian = 0;
    const auto result = static_cast<int>(::recv(liveDescriptor(), &bigEndian, sizeof bigEndian, 0));
    *value = static_cast<int>(ntohl(bigEndian));
    return result;
}

int TcpClientWin::recv(char* buffer, int length) {
    if (buffer == nullptr || length < 1) {
        return length;
    }
    int received = 0;
    int emptyReads = 0;
    int piece = 0;
    do {
        const auto missing = static_cast<std::size_t>(length - received);
        piece = receiveInTime(buffer + received, missing);
        if (piece == outOfTime) {
            Logger::Log("Data reception did not end in time.");
            releaseDescriptor();
            return outOfTime;
        }
        if (piece < 0) {
            const int error = errno;
            Logger::Log("Can be good: rcvArr socket: " + std::to_string(socket) +
                        " return: " + std::to_string(piece) + " error: " + std::to_string(error));
            releaseDescriptor();
            return piece;
        }
        if (piece == 0) {
            if (emptyReads >= emptyReadLimit) {
                Logger::Log("Data reception failed with timeout.");
                releaseDescriptor();
                return peerClosed;
            }
            ++emptyReads;
        }
        received += piece;
    } while (received < length);

    if (received != length) {
        // Only a system that hands out more than it was asked for gets here.
        Logger::Log("rcvArr n_rcvd " + std::to_string(received) + " != nbytes " +
                    std::to_string(length));
        assert(received == length);
    }
    return piece;
}

void TcpClientWin::setDeadline(std::optional<Clock::time_point> deadline) {
    deadline_ = deadline;
}

int TcpClientWin::awaitInTime(short event) const {
    using std::chrono::milliseconds;
    constexpr milliseconds longest{std::numeric_limits<int>::max()};
    pollfd watched{socket, event, 0};
    int ready = 0;
    do {
        // Asked even when something is there already: bytes that never run out end in time too.
        const auto left = std::chrono::ceil<milliseconds>(*deadline_ - Clock::now());
        if (left <= milliseconds::zero()) {
            return outOfTime;
        }
        ready = poll(&watched, 1, static_cast<int>(std::min(left, longest).count()));
        // Hosts stop their threads by signals, to collect garbage or to take a profile. A read
        // goes on after those, a poll never does.
    } while (ready < 0 && errno == EINTR);
    return ready > 0 ? 0 : ready == 0 ? outOfTime : -1;
}

int TcpClientWin::connectInTime(const sockaddr* address, unsigned int addressSize) const {
    if (!deadline_) {
        return ::connect(socket, address, addressSize);
    }
    const int flags = fcntl(socket, F_GETFL);
    fcntl(socket, F_SETFL, flags | O_NONBLOCK);
    int result = ::connect(socket, address, addressSize);
    if (result < 0 && errno == EINPROGRESS) {
        int error = 0;
        socklen_t size = sizeof error;
        const bool connected = awaitInTime(POLLOUT) == 0 &&
                               getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 &&
                               error == 0;
        result = connected ? 0 : -1;
    }
    fcntl(socket, F_SETFL, flags);
    return result;
}

int TcpClientWin::receiveInTime(char* buffer, std::size_t size) const {
    const int descriptor = liveDescriptor();
    if (deadline_ && descriptor >= 0) {
        const int wait = awaitInTime(POLLIN);
        if (wait != 0) {
            return wait;
        }
    }
    return static_cast<int>(::recv(descriptor, buffer, size, 0));
}

void NetworkClient::setDeadline(std::optional<Clock::time_point>) {}

NetworkClient* NetworkClient::mkClient() {
    return new (std::nothrow) TcpClientWin;
}

void NetworkClient::freeClient(NetworkClient* client) {
    ::operator delete(dynamic_cast<void*>(client));
}

void NetworkClient::operator delete(NetworkClient* client, std::destroying_delete_t) {
    freeClient(client);
}

int socketsInit() {
    return 0;
}

void socketsCleanUp() {}

int test_receiveB(NetworkClient*, char*, int) {
    return 0;
}

} // namespace QVR
