#include "server/RawClient.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {

constexpr int patience = 60000; // milliseconds

std::size_t product(std::uint32_t x, std::uint32_t y, std::uint32_t channels,
                    std::uint32_t bytesPerChannel) {
    return std::size_t{x} * y * channels * bytesPerChannel;
}

} // namespace

RawClient::RawClient() : descriptor_(::socket(AF_INET, SOCK_STREAM, 0)) {}

RawClient::RawClient(std::uint16_t port, int receiveBuffer) : RawClient() {
    if (receiveBuffer != 0)
        ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    connect(port);
}

RawClient RawClient::from(const std::string& address, std::uint16_t port) {
    RawClient client;
    sockaddr_in source{};
    source.sin_family = AF_INET;
    if (::inet_pton(AF_INET, address.c_str(), &source.sin_addr) != 1 ||
        ::bind(client.descriptor_, reinterpret_cast<const sockaddr*>(&source), sizeof source) != 0)
        throw std::runtime_error("cannot connect from " + address);
    client.connect(port);
    return client;
}

void RawClient::connect(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error(std::string("cannot connect: ") + std::strerror(errno));
}

RawClient::~RawClient() {
    close();
}

RawClient::RawClient(RawClient&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), frameBytes_(other.frameBytes_) {}

void RawClient::close() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = -1;
}

void RawClient::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
}

bool RawClient::readable(int milliseconds) {
    pollfd entry{descriptor_, POLLIN, 0};
    return ::poll(&entry, 1, milliseconds) > 0;
}

std::optional<std::size_t> RawClient::readSome(std::byte* into, std::size_t size) {
    if (!readable(patience))
        return std::nullopt;
    const ssize_t count = ::recv(descriptor_, into, size, 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void RawClient::readInto(Bytes& bytes) {
    std::size_t have = 0;
    while (have < bytes.size()) {
        const std::optional<std::size_t> count = readSome(bytes.data() + have, bytes.size() - have);
        if (!count)
            throw std::runtime_error("nothing came for a minute");
        if (*count == 0)
            throw std::runtime_error("the connection ended");
        have += *count;
    }
}

Bytes RawClient::read(std::size_t size) {
    Bytes bytes(size);
    readInto(bytes);
    return bytes;
}

QVR::ProtocolHeader RawClient::readHeader() {
    const Bytes bytes = read(sizeof(QVR::ProtocolHeader));
    QVR::ProtocolHeader h;
    std::memcpy(&h, bytes.data(), sizeof h);
    frameBytes_ = h.touchCount * sizeof(QVR::NetworkTouch) +
                  product(h.colorX, h.colorY, h.colorChannels, h.colorDepth) +
                  product(h.depthX, h.depthY, h.depthChannels, h.depthDepth) +
                  product(h.processedX, h.processedY, h.processedChannels, h.processedDepth);
    return h;
}

Bytes RawClient::readFrame() {
    return read(frameBytes_);
}

void RawClient::readFrame(Bytes& frame) {
    frame.resize(frameBytes_);
    readInto(frame);
}

bool RawClient::waitUntilClosed() {
    Bytes bytes(65536);
    for (;;) {
        const std::optional<std::size_t> count = readSome(bytes.data(), bytes.size());
        if (!count)
            return false;
        if (*count == 0)
            return true;
    }
}

std::size_t RawClient::bytesUntilClosed() {
    Bytes bytes(65536);
    std::size_t sum = 0;
    for (;;) {
        const std::optional<std::size_t> count = readSome(bytes.data(), bytes.size());
        if (!count)
            throw std::runtime_error("nothing came for a minute");
        if (*count == 0)
            return sum;
        sum += *count;
    }
}

bool RawClient::send(const Bytes& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

QVR::ProtocolHeader wordsHeader(std::uint32_t words) {
    QVR::ProtocolHeader header;
    header.protocolID = 1;
    header.endianTest = 0x01020304;
    header.oneMeterValue = 1000;
    header.processedX = words * sizeof(std::uint64_t);
    header.processedY = 1;
    header.processedChannels = 1;
    header.processedDepth = 1;
    return header;
}

void fillWords(std::byte* frame, std::size_t size, std::uint32_t number) {
    for (std::size_t i = 0; i < size / sizeof(std::uint64_t); ++i) {
        const std::uint64_t word = (std::uint64_t{number} << 32U) + i;
        std::memcpy(frame + i * sizeof word, &word, sizeof word);
    }
}

std::uint32_t numberOf(const Bytes& frame) {
    std::uint64_t first = 0;
    std::memcpy(&first, frame.data(), sizeof first);
    Bytes expected(frame.size());
    fillWords(expected.data(), expected.size(), static_cast<std::uint32_t>(first >> 32U));
    if (frame != expected)
        throw std::runtime_error("the frame is shifted or torn");
    return static_cast<std::uint32_t>(first >> 32U);
}

} // namespace support
