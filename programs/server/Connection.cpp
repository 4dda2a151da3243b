#include "Connection.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace server {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

std::string describe(const Connection::Socket& socket) {
    error_code error;
    const auto endpoint = socket.remote_endpoint(error);
    if (error)
        return "unknown";
    std::ostringstream text;
    text << endpoint;
    return text.str();
}

void setOption(Connection::Socket& socket, int level, int option, std::size_t bytes) {
    const int value = static_cast<int>(bytes);
    ::setsockopt(socket.native_handle(), level, option, &value, sizeof value);
}

// Frames are to wait here, where they can still be skipped, rather than in the system's send
// queue, which would take seconds of small frames. A quarter of a frame in advance keeps the
// line busy. Of a large frame the system is not to hold more than the processor's cache does: on
// this machine, the client copies out of that queue. Best effort: without it frames are older, not
// wrong.
void limitSendQueue(Connection::Socket& socket, std::size_t frameBytes) {
    constexpr std::size_t leastUnsent = 4096;
    constexpr std::size_t mostUnsent = std::size_t{128} * 1024;
    constexpr std::size_t mostInAll = std::size_t{512} * 1024;
    setOption(socket, IPPROTO_TCP, TCP_NOTSENT_LOWAT,
              std::clamp(frameBytes / 4, leastUnsent, mostUnsent));
    if (frameBytes > mostInAll)
        setOption(socket, SOL_SOCKET, SO_SNDBUF, mostInAll);
}

} // namespace

Connection::Connection(Socket socket, const FrameFeed& feed, GoneHandler gone)
    : socket_(std::move(socket)), feed_(feed), gone_(std::move(gone)), peer_(describe(socket_)),
      lastProgress_(Clock::now()) {}

void Connection::start(const QVR::ProtocolHeader& header, std::size_t frameBytes) {
    error_code error;
    socket_.non_blocking(true, error);
    if (error) {
        fail();
        return;
    }
    // Best effort, as above; a socket that is no longer connected shows at the first send.
    socket_.set_option(asio::ip::tcp::no_delay(true), error);
    socket_.set_option(asio::socket_base::keep_alive(true), error);
    limitSendQueue(socket_, frameBytes);

    frameBytes_ = frameBytes;
    header_ = header;
    private_ = std::as_bytes(std::span(&header_, 1));
    pending_ = private_.size();
    lastProgress_ = Clock::now();
    watchForClosing();
    pump();
}

void Connection::pump() {
    while (!closed_ && !waiting_) {
        if (pending_ == 0 && !takeNewest())
            return;
        error_code error;
        const std::size_t sent = writeSome(error);
        if (error == asio::error::would_block || error == asio::error::try_again) {
            waitUntilWritable();
            return;
        }
        if (error && error != asio::error::interrupted) {
            fail();
            return;
        }
        if (sent != 0)
            lastProgress_ = Clock::now();
        pending_ -= sent;
        if (pending_ == 0)
            shared_.reset();
    }
}

bool Connection::takeNewest() {
    if (!feed_.frame || feed_.sequence == sequence_ || frameBytes_ == 0)
        return false;
    skipped_ += missedMeanwhile();
    sequence_ = feed_.sequence;
    shared_ = useOf(feed_.frame);
    pending_ = frameBytes_;
    lastProgress_ = Clock::now();
    return true;
}

std::size_t Connection::writeSome(error_code& error) {
    if (!shared_)
        return socket_.write_some(asio::buffer(private_.last(pending_).data(), pending_), error);
    return shared_->read(frameBytes_ - pending_, [&](const FrameParts& parts) {
        std::array<asio::const_buffer, std::tuple_size_v<FrameParts>> buffers;
        std::transform(parts.begin(), parts.end(), buffers.begin(),
                       [](auto part) { return asio::buffer(part.data(), part.size()); });
        return socket_.write_some(buffers, error);
    });
}

// Frames that came and went since the one that was sent last; the newest may still be sent.
std::uint64_t Connection::missedMeanwhile() const {
    return sequence_ != 0 && feed_.sequence > sequence_ ? feed_.sequence - sequence_ - 1 : 0;
}

void Connection::releaseSharedFrame() {
    own_.reserve(frameBytes_);
    own_.clear();
    shared_->read(frameBytes_ - pending_, [&](const FrameParts& parts) {
        for (const auto part : parts)
            own_.insert(own_.end(), part.begin(), part.end());
    });
    private_ = own_;
    shared_.reset();
}

Connection::Clock::duration Connection::stalledFor(Clock::time_point now) const {
    return pending_ == 0 ? Clock::duration::zero() : now - lastProgress_;
}

void Connection::waitUntilWritable() {
    waiting_ = true;
    socket_.async_wait(Socket::wait_write, KeptHandler(writeWait_, [self = shared_from_this()](
                                                                       const error_code& error) {
                           self->waiting_ = false;
                           if (self->closed_)
                               return;
                           if (error)
                               self->fail();
                           else
                               self->pump();
                       }));
}

// Clients have nothing to say; reading is how their leaving is noticed at once.
void Connection::watchForClosing() {
    socket_.async_read_some(asio::buffer(received_),
                            [self = shared_from_this()](const error_code& error, std::size_t) {
                                if (self->closed_)
                                    return;
                                if (error)
                                    self->fail();
                                else
                                    self->watchForClosing();
                            });
}

void Connection::close() {
    closed_ = true;
    pending_ = 0;
    shared_.reset();
    error_code ignored;
    socket_.close(ignored);
}

// The handler runs later: the owner may be going through its connections right now.
void Connection::fail() {
    if (closed_)
        return;
    close();
    asio::post(socket_.get_executor(), [self = shared_from_this()] { self->gone_(self); });
}

} // namespace server
