// One client: its socket, what is still to be sent to it, and how long it has not taken any.
#pragma once

#include "Frame.h"
#include "HandlerMemory.h"
#include "serverClient/frameProtocol.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <boost/asio/ip/tcp.hpp>

namespace server {

// The newest frame and its number, counted from 1; shared by all connections.
struct FrameFeed {
    FrameRef frame;
    std::uint64_t sequence = 0;
};

// Sends the header and then whole frames, the newest each time: a client that takes longer for
// a frame than the camera misses the frames between, never a part of one. Lives on the network
// thread. Only sends that cannot block are used, so nobody but this connection ever points into
// a shared frame, whose rest can be moved out of the way at any time.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    using Clock = std::chrono::steady_clock;
    using Socket = boost::asio::ip::tcp::socket;
    // Called once, from the connection's executor, after it closed on its own account.
    using GoneHandler = std::function<void(const std::shared_ptr<Connection>&)>;

    Connection(Socket socket, const FrameFeed& feed, GoneHandler gone);

    // Sends `header`, then follows the feed.
    void start(const QVR::ProtocolHeader& header, std::size_t frameBytes);

    // Sends as much as the socket takes now; to be called when the feed has a new frame.
    void pump();

    // The number of the shared frame that is still being sent, or 0 when there is none.
    std::uint64_t sharedFrameInUse() const { return shared_ != nullptr ? sequence_ : 0; }
    // Copies the rest of that frame into the connection's own buffer and lets go of it.
    void releaseSharedFrame();

    // How long bytes have been waiting without the client taking any; 0 when none are waiting.
    Clock::duration stalledFor(Clock::time_point now) const;

    // Frames that were published but not sent to this client.
    std::uint64_t skippedFrames() const { return skipped_ + missedMeanwhile(); }
    const std::string& peer() const { return peer_; }

    // Closes the socket without calling the gone handler.
    void close();

  private:
    bool takeNewest();
    std::size_t writeSome(boost::system::error_code& error);
    std::uint64_t missedMeanwhile() const;
    void waitUntilWritable();
    void watchForClosing();
    void fail();

    std::shared_ptr<HandlerMemory> writeWait_ = std::make_shared<HandlerMemory>(1);
    Socket socket_;
    const FrameFeed& feed_;
    GoneHandler gone_;
    std::string peer_;
    QVR::ProtocolHeader header_;
    std::array<std::byte, 4096> received_;

    std::size_t pending_ = 0;            // bytes still to be sent: the last ones of
    FrameUse shared_;                    // this when there is one, else of
    std::span<const std::byte> private_; // this, which lies in header_ or own_
    std::vector<std::byte> own_;
    std::size_t frameBytes_ = 0;
    std::uint64_t sequence_ = 0;
    std::uint64_t skipped_ = 0;
    Clock::time_point lastProgress_;
    bool waiting_ = false;
    bool closed_ = false;
};

} // namespace server
