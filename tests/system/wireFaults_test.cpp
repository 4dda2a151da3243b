// The real server and the real client, and what happens to the wire between them.
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "server/RawClient.h"
#include "support/LogCapture.h"
#include "support/LoopbackPeer.h"
#include "support/TemporaryVolume.h"
#include "support/streamBytes.h"
#include "system/ServerProcess.h"
#include "system/greyPng.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

using namespace std::chrono_literals;
using support::Bytes;
using support::LoopbackPeer;
using support::RawClient;
using support::ServerProcess;
using testing::Each;

namespace {

struct Size {
    unsigned width = 0;
    unsigned height = 0;
};

constexpr Size small{160, 120};
constexpr Size large{320, 240};

// The depth of every picture at (column, row): no two columns of a row are alike, and no two rows,
// so that a frame which is shifted or put together shows.
std::uint16_t depthAt(unsigned column, unsigned row) {
    return static_cast<std::uint16_t>(1000 + column * 7 + row * 11);
}

bool isThePicture(const std::function<std::uint16_t(std::size_t)>& value, Size size) {
    for (unsigned row = 0; row < size.height; ++row)
        for (unsigned column = 0; column < size.width; ++column)
            if (value(std::size_t{row} * size.width + column) != depthAt(column, row))
                return false;
    return true;
}

bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

std::size_t openDescriptors(pid_t process) {
    const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/fd";
    std::error_code ignored;
    const auto files = std::filesystem::directory_iterator(folder, ignored);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

class ServerAndClient : public testing::Test {
  protected:
    ServerAndClient() {
        setReconnectReadsHeader(true);
        setReceiveTimeout(10000);
    }
    ~ServerAndClient() override {
        shutDown();
        setReconnectReadsHeader(false);
        setReceiveTimeout(0);
    }

    // A server that plays one depth picture of this size over and over.
    std::unique_ptr<ServerProcess> startServer(Size size, const std::vector<std::string>& more = {},
                                               std::uint16_t port = 0) const {
        const std::string width = std::to_string(size.width);
        const std::string height = std::to_string(size.height);
        const std::string name = "images" + width;
        volume.write("QVR_calibration/touch.json",
                     R"({"colorResX": )" + width + R"(, "colorResY": )" + height +
                         R"(, "depthResX": )" + width + R"(, "depthResY": )" + height +
                         R"(, "nearClipMeters": 0.1, "farClipMeters": 2})");
        volume.write(name + "/0.png", "");
        support::writeGreyPng(volume.path(name + "/0.png"), size.width, size.height, 16, depthAt);
        std::vector<std::string> arguments = {"--camera", "images:" + volume.path(name), "--port",
                                              std::to_string(port), "--keep-running"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<ServerProcess>(volume.path(""), arguments);
    }

    static void connectTo(unsigned int port) { initClientWithCustomServer("127.0.0.1", port); }

    static bool lostConnection() { return update() < 0; }

    // The next frame has the picture of this size, as the client hands it to a host.
    static void expectPicture(Size size) {
        ASSERT_EQ(update(), 0);
        ASSERT_EQ(getDimX(), static_cast<int>(size.width));
        ASSERT_EQ(getDimY(), static_cast<int>(size.height));
        std::vector<unsigned char> texture(std::size_t{4} * size.width * size.height);
        setDepthTexture(texture.data());
        updateDepthTexture();
        setDepthTexture(nullptr);
        EXPECT_TRUE(isThePicture(
            [&texture](std::size_t pixel) {
                return static_cast<std::uint16_t>(texture[4 * pixel] | texture[4 * pixel + 1] << 8);
            },
            size));
    }

    // The same for a frame as it came: ten slots, then the picture.
    static bool hasPicture(const Bytes& frame, Size size) {
        const std::byte* depth = frame.data() + 10 * sizeof(QVR::NetworkTouch);
        return isThePicture(
            [depth](std::size_t pixel) {
                std::uint16_t value = 0;
                std::memcpy(&value, depth + 2 * pixel, sizeof value);
                return value;
            },
            size);
    }

    support::TemporaryVolume volume;
    support::LogCapture log;
};

class KilledServer : public ServerAndClient, public testing::WithParamInterface<Size> {};

TEST_P(KilledServer, WithinAFrameIsFoundAgainWhenItIsBack) {
    auto server = startServer(small);
    const std::uint16_t port = server->waitForPort();
    // Passes on a frame and a half, then kills the server: that the kill falls within a frame is
    // not left to chance.
    LoopbackPeer wire([&](LoopbackPeer::Line& line) {
        line.accept();
        RawClient upstream(port);
        line.send(support::bytesOf(upstream.readHeader()));
        const auto pass = [&](std::size_t size) {
            const Bytes bytes = upstream.read(size);
            line.send(std::string(reinterpret_cast<const char*>(bytes.data()), size));
        };
        pass(upstream.frameBytes());
        pass(upstream.frameBytes() / 2);
        server->signal(SIGKILL);
        upstream.waitUntilClosed();
        line.close();
    });
    connectTo(wire.portNumber());
    expectPicture(small);
    EXPECT_EQ(update(), -101);
    EXPECT_EQ(wire.finish(), "");
    prepareTouchCollection();
    for (int value = 0; value < 3 * getTouchPoolSize(); ++value)
        EXPECT_EQ(getTouchData(), -1.0f);
    EXPECT_EQ(server->waitForEnd(), std::nullopt);

    QVR::ClientManager::Get()->port = std::to_string(port);
    EXPECT_EQ(update(), -2);
    server = startServer(GetParam(), {}, port);
    EXPECT_EQ(server->waitForPort(), port);
    expectPicture(GetParam());
    expectPicture(GetParam());
}

INSTANTIATE_TEST_SUITE_P(SameAndOtherSizes, KilledServer, testing::Values(small, large),
                         [](const auto& test) {
                             return "Width" + std::to_string(test.param.width);
                         });

TEST_F(ServerAndClient, AServerThatHangsHoldsTheHostNoLongerThanItsTimeout) {
    const auto server = startServer(small);
    connectTo(server->waitForPort());
    expectPicture(small);
    server->signal(SIGSTOP);
    setReceiveTimeout(100);
    EXPECT_TRUE(eventually(lostConnection));
    // It still accepts, as far as the system does that for it.
    EXPECT_EQ(update(), -3);
    server->signal(SIGCONT);
    setReceiveTimeout(10000);
    expectPicture(small);
}

TEST_F(ServerAndClient, TwoHundredConnectionsInASecondLeaveNothingBehind) {
    const auto server = startServer(small);
    const std::uint16_t port = server->waitForPort();
    connectTo(port);
    expectPicture(small);
    const std::size_t before = openDescriptors(server->id());
    for (int i = 0; i < 200; ++i) {
        RawClient visitor(port);
        if (i % 4 == 1)
            visitor.send(Bytes(1000, std::byte{'x'}));
        if (i % 4 == 2)
            visitor.readable(1);
    }
    EXPECT_TRUE(eventually([&] { return openDescriptors(server->id()) <= before; }));
    for (int frame = 0; frame < 5; ++frame)
        expectPicture(small);
    EXPECT_TRUE(server->running());
}

TEST_F(ServerAndClient, AHostThatComesAndGoesLeavesNoDescriptorBehind) {
    const auto server = startServer(small);
    const std::uint16_t port = server->waitForPort();
    const std::size_t before = openDescriptors(::getpid());
    const std::size_t serversBefore = openDescriptors(server->id());
    for (int visit = 0; visit < 30; ++visit) {
        connectTo(port);
        expectPicture(small);
        QVR::ClientManager::Get()->closeClient();
        expectPicture(small);
        shutDown();
    }
    EXPECT_EQ(openDescriptors(::getpid()), before);
    EXPECT_TRUE(eventually([&] { return openDescriptors(server->id()) <= serversBefore; }));
}

TEST_F(ServerAndClient, AHundredIdleConnectionsTakeNothingFromAHost) {
    const auto server = startServer(small, {"--max-clients", "101"});
    const std::uint16_t port = server->waitForPort();
    std::vector<RawClient> idle;
    for (int i = 0; i < 100; ++i)
        idle.emplace_back(port, 4096);
    connectTo(port);
    for (int frame = 0; frame < 20; ++frame)
        expectPicture(small);
}

TEST_F(ServerAndClient, IdleConnectionsKeepAHostOutForTheClientTimeoutOnly) {
    const auto server = startServer(small, {"--max-clients", "16", "--client-timeout", "0.5"});
    const std::uint16_t port = server->waitForPort();
    std::vector<RawClient> idle;
    for (int i = 0; i < 100; ++i)
        idle.emplace_back(port, 4096);
    connectTo(port);
    EXPECT_TRUE(eventually([] { return update() == 0; }));
    expectPicture(small);
}

TEST_F(ServerAndClient, ManyReadersAndASlowOneGetWholePictures) {
    const auto server = startServer(small);
    const std::uint16_t port = server->waitForPort();
    constexpr int readers = 12;
    std::vector<int> wholePictures(readers, 0);
    std::vector<std::thread> threads;
    for (int reader = 0; reader < readers; ++reader) {
        threads.emplace_back([&wholePictures, reader, port] {
            RawClient client(port);
            client.readHeader();
            Bytes frame;
            for (int i = 0; i < 20; ++i) {
                client.readFrame(frame);
                wholePictures[static_cast<std::size_t>(reader)] += hasPicture(frame, small) ? 1 : 0;
            }
        });
    }
    // A little at a time, slower than the camera.
    RawClient slow(port, 4096);
    slow.readHeader();
    for (int i = 0; i < 3; ++i) {
        Bytes frame;
        while (frame.size() < slow.frameBytes()) {
            std::this_thread::sleep_for(2ms);
            const Bytes piece =
                slow.read(std::min<std::size_t>(500, slow.frameBytes() - frame.size()));
            frame.insert(frame.end(), piece.begin(), piece.end());
        }
        EXPECT_TRUE(hasPicture(frame, small));
    }
    connectTo(port);
    expectPicture(small);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(wholePictures, Each(20));
}

} // namespace
