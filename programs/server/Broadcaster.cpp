#include "Broadcaster.h"

#include "exposure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>

namespace server {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using namespace std::chrono_literals;

namespace {

// One being filled, the newest, two to be filled next, and two that clients may lag behind in
// before their rest is copied away.
constexpr std::size_t pooledFrames = 6;
constexpr std::size_t framesKeptFree = 2;

// A camera that starts takes its time to the first frame.
constexpr std::chrono::nanoseconds startingTime = 5s;

constexpr std::chrono::nanoseconds shortestTick = 2ms;
constexpr std::chrono::nanoseconds longestTick = 100ms;

// A hostile network has more addresses than we have memory and readers of the log.
constexpr std::size_t mostNamedStrangers = 64;

std::string seconds(std::chrono::duration<double> duration) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.1f s", duration.count());
    return text.data();
}

bool same(const QVR::ProtocolHeader& a, const QVR::ProtocolHeader& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

Broadcaster::Broadcaster(asio::io_context& context, const BroadcasterSettings& settings,
                         Report report)
    : context_(context), settings_(settings), report_(std::move(report)),
      publications_(std::make_shared<HandlerMemory>(pooledFrames)),
      acceptor_(context, settings.endpoint), timer_(context), acceptPause_(context) {}

std::chrono::nanoseconds Broadcaster::cameraSilence(std::chrono::milliseconds cameraTimeout,
                                                    std::chrono::nanoseconds framePeriod) {
    return std::max<std::chrono::nanoseconds>(cameraTimeout, 3 * framePeriod);
}

void Broadcaster::announce(const QVR::ProtocolHeader& header,
                           std::chrono::nanoseconds framePeriod) {
    if (!hasAnnounced_ || !same(header, announced_))
        pool_ = std::make_shared<FramePool>(FrameLayout(header).frameBytes(), pooledFrames);
    hasAnnounced_ = true;
    announced_ = header;
    asio::post(context_, [this, header, pool = pool_, framePeriod]() mutable {
        adopt(header, std::move(pool), framePeriod);
    });
}

// In use at once, so that nobody takes the frame for sent before each client was offered it.
void Broadcaster::publish(FrameRef frame) {
    asio::post(context_, KeptHandler(publications_, [this, use = useOf(std::move(frame))] {
                   feed_.frame = use.get();
                   hasDelivered_ = true;
                   cameraLost_ = false;
                   reportReturn();
                   idleFrame_.reset();
                   lastFrame_ = Clock::now();
                   distribute();
               }));
}

void Broadcaster::cameraLost(Clock::time_point lastGood) {
    asio::post(context_, [this, lastGood] {
        loseCamera(lastGood);
        reportLoss();
    });
}

void Broadcaster::loseCamera(Clock::time_point lastGood) {
    if (std::exchange(cameraLost_, true))
        return;
    lastGood_ = lastGood;
    nextIdleFrame_ = Clock::now();
}

void Broadcaster::reportLoss() {
    if (std::exchange(lossReported_, true))
        return;
    report_("WARNING: the camera is lost (no good frame for " + seconds(Clock::now() - lastGood_) +
                "); clients stay connected while it is tried again",
            Weight::notice);
}

void Broadcaster::reportReturn() {
    if (std::exchange(lossReported_, false))
        report_("the camera is back after " + seconds(Clock::now() - lastGood_), Weight::notice);
}

void Broadcaster::adopt(const QVR::ProtocolHeader& header, std::shared_ptr<FramePool> pool,
                        std::chrono::nanoseconds framePeriod) {
    const bool first = networkPool_ == nullptr;
    framePeriod_ = framePeriod;
    lastFrame_ = Clock::now();
    if (pool != networkPool_) {
        if (!connections_.empty())
            report_("the images have changed; disconnecting all clients so that they ask anew",
                    Weight::notice);
        for (const auto& connection : connections_) {
            skippedByFormer_ += connection->skippedFrames();
            connection->close();
        }
        connections_.clear();
        networkPool_ = std::move(pool);
        header_ = header;
        layout_ = FrameLayout(header);
        idleFrame_.reset();
        feed_.frame.reset();
        count();
        if (!settings_.endpoint.address().is_loopback())
            report_(exposureWarning(endpoint(), header_, settings_.allowed), Weight::notice);
    }
    if (first) {
        accept();
        scheduleTick();
    }
}

void Broadcaster::accept() {
    acceptor_.async_accept([this](const error_code& error, tcp::socket socket) {
        if (error == asio::error::operation_aborted)
            return;
        if (!error) {
            admit(std::move(socket));
            accept();
            return;
        }
        // Out of descriptors, most likely: the ones in use go on, later clients may have luck.
        report_("cannot accept a client: " + error.message(), Weight::provoked);
        acceptPause_.expires_after(200ms);
        acceptPause_.async_wait([this](const error_code& cancelled) {
            if (!cancelled)
                accept();
        });
    });
}

bool Broadcaster::mayConnect(const tcp::socket& socket) {
    error_code gone;
    const asio::ip::address peer = socket.remote_endpoint(gone).address();
    if (gone)
        return false;
    if (settings_.allowed.admits(peer))
        return true;
    ++counters_.refusedPeers;
    if (strangers_.size() < mostNamedStrangers && strangers_.insert(peer).second) {
        report_("a client from " + peer.to_string() + " was refused: only these may connect: " +
                    settings_.allowed.text() + " (see --allow)",
                Weight::provoked);
        if (strangers_.size() == mostNamedStrangers)
            report_("clients from other addresses that are refused will not be named",
                    Weight::provoked);
    }
    return false;
}

void Broadcaster::admit(tcp::socket socket) {
    if (!mayConnect(socket))
        return;
    if (connections_.size() >= settings_.maxClients) {
        ++counters_.refusedClients;
        report_("a client was refused: all " + std::to_string(settings_.maxClients) +
                    " places are taken (see --max-clients)",
                Weight::provoked);
        return;
    }
    auto connection = std::make_shared<Connection>(
        std::move(socket), feed_,
        [this](const std::shared_ptr<Connection>& gone) { remove(gone); });
    connections_.push_back(connection);
    counters_.abandoned = false;
    count();
    report_("client " + connection->peer() + " connected", Weight::detail);
    connection->start(header_, layout_.frameBytes());
}

void Broadcaster::remove(const std::shared_ptr<Connection>& connection) {
    const auto place = std::find(connections_.begin(), connections_.end(), connection);
    if (place == connections_.end())
        return;
    report_("client " + connection->peer() + " has gone", Weight::detail);
    skippedByFormer_ += connection->skippedFrames();
    connections_.erase(place);
    counters_.abandoned = connections_.empty();
    count();
}

void Broadcaster::distribute() {
    ++feed_.sequence;
    for (const auto& connection : connections_)
        connection->pump();
    keepFramesFree();
    count();
}

// The frame that laggards hold longest goes first; they keep their rest of it themselves.
void Broadcaster::keepFramesFree() {
    while (networkPool_->freeCount() < framesKeptFree) {
        std::uint64_t oldest = feed_.sequence;
        for (const auto& connection : connections_) {
            const std::uint64_t used = connection->sharedFrameInUse();
            if (used != 0)
                oldest = std::min(oldest, used);
        }
        if (oldest == feed_.sequence)
            return;
        for (const auto& connection : connections_)
            if (connection->sharedFrameInUse() == oldest)
                connection->releaseSharedFrame();
    }
}

void Broadcaster::sendIdleFrame() {
    if (!idleFrame_) {
        FrameRef frame = networkPool_->acquire();
        if (!frame)
            return;
        const std::span<const std::byte> last =
            feed_.frame ? std::as_const(*feed_.frame).bytes() : std::span<const std::byte>();
        layout_.compose({}, last, frame->bytes());
        layout_.clearTouches(frame->bytes());
        idleFrame_ = std::move(frame);
    }
    feed_.frame = idleFrame_;
    distribute();
}

void Broadcaster::scheduleTick() {
    timer_.expires_after(std::clamp(framePeriod_, shortestTick, longestTick));
    timer_.async_wait([this](const error_code& cancelled) {
        if (!cancelled)
            tick();
    });
}

void Broadcaster::tick() {
    const Clock::time_point now = Clock::now();
    // A camera that lends its pictures is alive, and they are not for the frames that follow.
    if (!feed_.frame || !feed_.frame->isLent())
        lookAfterCamera(now);
    dropStalled(now);
    count();
    scheduleTick();
}

void Broadcaster::lookAfterCamera(Clock::time_point now) {
    const auto silence = cameraSilence(settings_.cameraTimeout, framePeriod_);
    if (now - lastFrame_ > silence)
        loseCamera(lastFrame_);
    if (cameraLost_ && (hasDelivered_ || now - lastGood_ > startingTime))
        reportLoss();
    if (cameraLost_ && now >= nextIdleFrame_) {
        nextIdleFrame_ = std::max(nextIdleFrame_ + framePeriod_, now);
        sendIdleFrame();
    }
}

void Broadcaster::dropStalled(Clock::time_point now) {
    const auto stalled = [&](const std::shared_ptr<Connection>& connection) {
        if (connection->stalledFor(now) < settings_.clientTimeout)
            return false;
        ++counters_.droppedClients;
        report_("client " + connection->peer() + " has stopped reading and is dropped",
                Weight::provoked);
        skippedByFormer_ += connection->skippedFrames();
        connection->close();
        return true;
    };
    if (std::erase_if(connections_, stalled) != 0)
        counters_.abandoned = connections_.empty();
}

void Broadcaster::count() {
    std::uint64_t skipped = skippedByFormer_;
    for (const auto& connection : connections_)
        skipped += connection->skippedFrames();
    counters_.skippedFrames = skipped;
    counters_.clients = connections_.size();
}

} // namespace server
