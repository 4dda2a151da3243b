// The network half of the server: listens, keeps the clients, and gives all of them the newest
// frame.
#pragma once

#include "AllowedPeers.h"
#include "Connection.h"
#include "FrameLayout.h"
#include "FramePool.h"
#include "HandlerMemory.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

namespace server {

struct BroadcasterSettings {
    boost::asio::ip::tcp::endpoint endpoint; // port 0: the system chooses one
    AllowedPeers allowed = AllowedPeers::thisMachine();
    std::size_t maxClients = 16;
    std::chrono::milliseconds clientTimeout{10000};
    // Silence after which the camera counts as lost, at least; see cameraSilence().
    std::chrono::milliseconds cameraTimeout{1000};
};

// Counters since the start; readable from any thread.
struct BroadcasterCounters {
    std::atomic<std::size_t> clients{0};
    std::atomic<bool> abandoned{false}; // the last client left or was dropped, none came since
    std::atomic<std::uint64_t> skippedFrames{0};  // summed over the clients
    std::atomic<std::uint64_t> refusedClients{0}; // for want of a place
    std::atomic<std::uint64_t> refusedPeers{0};   // for their address
    std::atomic<std::uint64_t> droppedClients{0}; // that took nothing for the client time-out
};

// The public functions are for the camera's thread and never wait for a client; the rest runs on
// the thread that runs the context. Must be destroyed when that thread has ended.
class Broadcaster {
  public:
    using Clock = Connection::Clock;
    enum class Weight {
        detail,   // for those who ask for it
        provoked, // to be shown, but others can make it happen again and again
        notice,   // to be shown each time
    };
    // How a line for the log gets out; called on the network thread.
    using Report = std::function<void(const std::string& text, Weight weight)>;

    // Binds and listens; clients are accepted from the first announce(). Throws
    // boost::system::system_error when the address cannot be had.
    Broadcaster(boost::asio::io_context& context, const BroadcasterSettings& settings,
                Report report);
    Broadcaster(const Broadcaster&) = delete;
    Broadcaster& operator=(const Broadcaster&) = delete;

    // Where it listens, with the port that the system chose.
    boost::asio::ip::tcp::endpoint endpoint() const { return acceptor_.local_endpoint(); }

    // Sets what later connections are told and frames look like. Clients that were told something
    // else are disconnected, so that they ask again. `framePeriod`: time from frame to frame.
    void announce(const QVR::ProtocolHeader& header, std::chrono::nanoseconds framePeriod);

    // A buffer for the next frame, or null when the network is so far behind that this frame had
    // better be left out.
    FrameRef acquire() { return pool_ ? pool_->acquire() : FrameRef(); }
    // Makes `frame` the newest one. The next is not to be published while its bytes are lent.
    void publish(FrameRef frame);

    // Until the next publish(), the last images go on at the frame rate with no touch active, so
    // that no host hangs in a read or holds a finger that nobody sees. Begins by itself when
    // frames stay away for cameraSilence(). Loss and return are reported once each. `lastGood`:
    // when the camera was last well.
    void cameraLost(Clock::time_point lastGood);

    // The longest pause between frames of a camera that is well.
    static std::chrono::nanoseconds cameraSilence(std::chrono::milliseconds cameraTimeout,
                                                  std::chrono::nanoseconds framePeriod);

    const BroadcasterCounters& counters() const { return counters_; }

  private:
    void adopt(const QVR::ProtocolHeader& header, std::shared_ptr<FramePool> pool,
               std::chrono::nanoseconds framePeriod);
    void accept();
    void admit(Connection::Socket socket);
    bool mayConnect(const Connection::Socket& socket);
    void remove(const std::shared_ptr<Connection>& connection);
    void distribute();
    void keepFramesFree();
    void loseCamera(Clock::time_point lastGood);
    void reportLoss();
    void reportReturn();
    void sendIdleFrame();
    void scheduleTick();
    void tick();
    void lookAfterCamera(Clock::time_point now);
    void dropStalled(Clock::time_point now);
    void count();

    boost::asio::io_context& context_;
    BroadcasterSettings settings_;
    Report report_;
    std::shared_ptr<HandlerMemory> publications_; // every pooled frame may be on its way
    boost::asio::ip::tcp::acceptor acceptor_;
    boost::asio::steady_timer timer_;
    boost::asio::steady_timer acceptPause_;
    BroadcasterCounters counters_;

    // Of the camera's thread.
    std::shared_ptr<FramePool> pool_;
    QVR::ProtocolHeader announced_;
    bool hasAnnounced_ = false;

    // Of the network thread.
    std::shared_ptr<FramePool> networkPool_;
    QVR::ProtocolHeader header_;
    FrameLayout layout_;
    std::chrono::nanoseconds framePeriod_{};
    FrameFeed feed_;
    std::vector<std::shared_ptr<Connection>> connections_;
    std::set<boost::asio::ip::address> strangers_; // that were refused and named
    std::uint64_t skippedByFormer_ = 0;
    Clock::time_point lastFrame_; // or announcement
    bool hasDelivered_ = false;
    Clock::time_point nextIdleFrame_;
    FrameRef idleFrame_;
    bool cameraLost_ = false;
    bool lossReported_ = false;
    Clock::time_point lastGood_; // before the loss
};

} // namespace server
