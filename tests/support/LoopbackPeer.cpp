#include "support/LoopbackPeer.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds patience{60};

int checked(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string(what) + " failed");
    }
    return result;
}

sockaddr_in loopbackAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

sockaddr* generic(sockaddr_in& address) {
    return reinterpret_cast<sockaddr*>(&address);
}

unsigned int portOf(int descriptor, bool otherEnd) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    const int result = otherEnd ? getpeername(descriptor, generic(address), &size)
                                : getsockname(descriptor, generic(address), &size);
    return result == 0 && address.sin_family == AF_INET ? ntohs(address.sin_port) : 0;
}

// The client's descriptor, found by its port among those of this process; -1 when it is closed.
int clientDescriptor(int server) {
    const unsigned int port = portOf(server, true);
    const unsigned int serverPort = portOf(server, false);
    for (int descriptor = 0; port != 0 && descriptor < 1024; ++descriptor) {
        if (portOf(descriptor, false) == port && portOf(descriptor, true) == serverPort) {
            return descriptor;
        }
    }
    return -1;
}

bool everythingRead(int server) {
    // What has not arrived yet cannot have been read.
    int underway = 0;
    if (ioctl(server, TIOCOUTQ, &underway) == 0 && underway > 0) {
        return false;
    }
    const int client = clientDescriptor(server);
    int unread = 0;
    return client < 0 || (ioctl(client, FIONREAD, &unread) == 0 && unread == 0);
}

} // namespace

LoopbackPeer::LoopbackPeer(Script script) {
    listenOnFreePort();
    checked(pipe(interrupt_), "pipe");
    checked(pipe(proceed_), "pipe");
    thread_ = std::thread([this, steps = std::move(script)] { run(steps); });
}

LoopbackPeer::~LoopbackPeer() {
    if (thread_.joinable()) {
        const char stop = 1;
        if (write(interrupt_[1], &stop, 1) == 1) {
            thread_.join();
        }
    }
    line_.close();
    for (const int descriptor :
         {listener_, interrupt_[0], interrupt_[1], proceed_[0], proceed_[1]}) {
        ::close(descriptor);
    }
}

void LoopbackPeer::listenOnFreePort() {
    listener_ = checked(socket(AF_INET, SOCK_STREAM, 0), "socket");
    sockaddr_in address = loopbackAddress();
    checked(bind(listener_, generic(address), sizeof address), "bind");
    checked(listen(listener_, 8), "listen");
    portNumber_ = portOf(listener_, false);
}

void LoopbackPeer::run(const Script& script) {
    try {
        script(line_);
    } catch (const std::exception& problem) {
        failure_ = problem.what();
    }
}

void LoopbackPeer::proceed() {
    const char one = 1;
    checked(static_cast<int>(write(proceed_[1], &one, 1)), "proceed");
}

std::string LoopbackPeer::finish() {
    if (thread_.joinable()) {
        thread_.join();
    }
    return failure_;
}

void LoopbackPeer::Line::await(int descriptor, short events, const char* what) {
    std::array<pollfd, 2> watched{{{descriptor, events, 0}, {peer_.interrupt_[0], POLLIN, 0}}};
    constexpr int limit = std::chrono::milliseconds(patience).count();
    const int ready = poll(watched.data(), watched.size(), limit);
    if (ready <= 0 || watched[1].revents != 0) {
        throw std::runtime_error(std::string(what) +
                                 (ready == 0 ? ": waited too long" : ": interrupted"));
    }
}

void LoopbackPeer::Line::accept() {
    close();
    await(peer_.listener_, POLLIN, "accept");
    descriptor_ = checked(::accept(peer_.listener_, nullptr, nullptr), "accept");
    const int one = 1;
    setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

void LoopbackPeer::Line::send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        await(descriptor_, POLLOUT, "send");
        const ssize_t result = ::send(descriptor_, bytes.data() + sent, bytes.size() - sent,
                                      MSG_DONTWAIT | MSG_NOSIGNAL);
        sent += static_cast<std::size_t>(checked(static_cast<int>(result), "send"));
    }
}

void LoopbackPeer::Line::sendInPieces(const std::string& bytes,
                                      const std::vector<std::size_t>& sizes) {
    std::size_t sent = 0;
    for (const std::size_t size : sizes) {
        send(bytes.substr(sent, size));
        sent += size;
        waitUntilRead();
    }
    if (sent < bytes.size()) {
        send(bytes.substr(sent));
    }
}

void LoopbackPeer::Line::trickle(const std::string& bytes, std::chrono::milliseconds pause) {
    for (const char byte : bytes) {
        std::array<pollfd, 2> watched{{{descriptor_, POLLIN, 0}, {peer_.interrupt_[0], POLLIN, 0}}};
        if (::send(descriptor_, &byte, 1, MSG_DONTWAIT | MSG_NOSIGNAL) != 1 ||
            poll(watched.data(), watched.size(), static_cast<int>(pause.count())) != 0) {
            return;
        }
    }
}

void LoopbackPeer::Line::waitUntilRead() {
    const Clock::time_point end = Clock::now() + patience;
    while (!everythingRead(descriptor_)) {
        // No event tells when the other end has read: look again every millisecond, unless the
        // test is over.
        pollfd interrupted{peer_.interrupt_[0], POLLIN, 0};
        if (poll(&interrupted, 1, 1) != 0 || Clock::now() > end) {
            throw std::runtime_error("waitUntilRead: interrupted or waited too long");
        }
    }
}

std::string LoopbackPeer::Line::waitUntilClosed() {
    std::string bytes;
    std::array<char, 256> piece{};
    for (;;) {
        await(descriptor_, POLLIN, "waitUntilClosed");
        const ssize_t size = ::recv(descriptor_, piece.data(), piece.size(), 0);
        if (size <= 0) {
            return bytes;
        }
        bytes.append(piece.data(), static_cast<std::size_t>(size));
    }
}

std::string LoopbackPeer::Line::receive(std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t received = 0;
    while (received < size) {
        await(descriptor_, POLLIN, "receive");
        const ssize_t piece = ::recv(descriptor_, bytes.data() + received, size - received, 0);
        if (piece <= 0) {
            throw std::runtime_error("receive: the client has gone");
        }
        received += static_cast<std::size_t>(piece);
    }
    return bytes;
}

void LoopbackPeer::Line::waitForTest() {
    await(peer_.proceed_[0], POLLIN, "waitForTest");
    char one = 0;
    checked(static_cast<int>(read(peer_.proceed_[0], &one, 1)), "waitForTest");
}

void LoopbackPeer::Line::close() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void LoopbackPeer::Line::reset() {
    const linger dropAtOnce{1, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &dropAtOnce, sizeof dropAtOnce);
    close();
}

std::string unusedPort() {
    const int descriptor = checked(socket(AF_INET, SOCK_STREAM, 0), "socket");
    sockaddr_in address = loopbackAddress();
    const int bound = bind(descriptor, generic(address), sizeof address);
    const unsigned int port = portOf(descriptor, false);
    ::close(descriptor);
    checked(bound, "bind");
    return std::to_string(port);
}

} // namespace support
