// A broadcaster with its network thread on a port of its own, fed with numbered frames.
#pragma once

#include "Broadcaster.h"
#include "server/RawClient.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

namespace support {

class RunningBroadcaster {
  public:
    explicit RunningBroadcaster(
        server::BroadcasterSettings settings = {},
        const boost::asio::ip::address& address = boost::asio::ip::address_v4::loopback())
        : work_(context_.get_executor()),
          broadcaster(context_, on(address, std::move(settings)),
                      [this](const std::string& text, server::Broadcaster::Weight weight) {
                          if (weight != server::Broadcaster::Weight::detail)
                              reports_.push_back(text);
                      }),
          thread_([this] { context_.run(); }) {}
    ~RunningBroadcaster() {
        context_.stop();
        thread_.join();
    }
    RunningBroadcaster(const RunningBroadcaster&) = delete;
    RunningBroadcaster& operator=(const RunningBroadcaster&) = delete;

  private:
    boost::asio::io_context context_;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
    std::vector<std::string> reports_;

  public:
    server::Broadcaster broadcaster;

    std::uint16_t port() const { return broadcaster.endpoint().port(); }

    void announce(const QVR::ProtocolHeader& header,
                  std::chrono::nanoseconds framePeriod = std::chrono::milliseconds(10)) {
        broadcaster.announce(header, framePeriod);
        settle();
    }

    // False when no buffer was free.
    bool publish(std::uint32_t number) {
        server::FrameRef frame = broadcaster.acquire();
        if (!frame)
            return false;
        fillWords(frame->bytes().data(), frame->bytes().size(), number);
        broadcaster.publish(std::move(frame));
        return true;
    }

    // The same, but what is sent is `bytes`, in three parts, until the frame takes them back.
    server::FrameRef publishLent(const Bytes& bytes) {
        server::FrameRef frame = broadcaster.acquire();
        const std::span<const std::byte> all(bytes);
        frame->lend({all.first(1000), all.subspan(1000, 9), {}, all.subspan(1009)});
        broadcaster.publish(frame);
        return frame;
    }

    // Returns when the network thread has done all that was asked of it before.
    void settle() {
        std::promise<void> done;
        boost::asio::post(context_, [&] { done.set_value(); });
        done.get_future().wait();
    }

    // Does `work` while the network thread does nothing.
    void whileNetworkRests(const std::function<void()>& work) {
        std::promise<void> resting;
        std::promise<void> worked;
        boost::asio::post(context_, [&] {
            resting.set_value();
            worked.get_future().wait();
        });
        resting.get_future().wait();
        work();
        worked.set_value();
        settle();
    }

    // The important reports so far.
    std::vector<std::string> reports() {
        std::promise<std::vector<std::string>> copy;
        boost::asio::post(context_, [&] { copy.set_value(reports_); });
        return copy.get_future().get();
    }

    // True when `condition` holds within a minute.
    static bool eventually(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    bool hasClients(std::size_t count) {
        return eventually([&] { return broadcaster.counters().clients == count; });
    }

  private:
    static server::BroadcasterSettings on(const boost::asio::ip::address& address,
                                          server::BroadcasterSettings settings) {
        settings.endpoint = {address, 0};
        return settings;
    }

    std::thread thread_;
};

} // namespace support
