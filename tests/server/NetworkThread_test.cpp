#include "NetworkThread.h"
#include "StopRequest.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using server::NetworkThread;
using server::StopRequest;

TEST(NetworkThread, TakesASignalForTheWishToEnd) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        boost::asio::io_context context;
        StopRequest stop;
        NetworkThread thread(context, stop);
        EXPECT_FALSE(stop.requested());
        std::raise(number);
        EXPECT_TRUE(stop.waitFor(10s));
        thread.join();
    }
}

TEST(NetworkThread, LeavesAnIgnoredHangupIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        boost::asio::io_context context;
        StopRequest stop;
        NetworkThread thread(context, stop);
        std::raise(SIGHUP);
        std::raise(SIGTERM);
        EXPECT_TRUE(stop.waitFor(10s));
        thread.join();
        EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
    }
}

TEST(NetworkThread, HandsOverWhatMadeItFail) {
    boost::asio::io_context context;
    StopRequest stop;
    NetworkThread thread(context, stop);
    boost::asio::post(context, [] { throw std::runtime_error("out of luck"); });
    EXPECT_TRUE(stop.waitFor(10s));
    EXPECT_THROW(thread.join(), std::runtime_error);
}

// A camera that never returns from its wait stands for the main thread here.
TEST(NetworkThreadDeathTest, LeavesWithoutACameraThatDoesNotAnswer) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto hang = [] {
        boost::asio::io_context context;
        StopRequest stop;
        const NetworkThread thread(context, stop);
        std::raise(SIGTERM);
        std::this_thread::sleep_for(30s);
        std::_Exit(9);
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(0),
                "WARNING: the camera does not answer; leaving without it");
}

TEST(StopRequest, CutsWaitsShort) {
    StopRequest stop;
    EXPECT_FALSE(stop.waitFor(1ms));
    std::thread other([&] { stop.request(); });
    EXPECT_TRUE(stop.waitFor(30s));
    other.join();
    EXPECT_TRUE(stop.requested());
}
