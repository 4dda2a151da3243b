// A frame on its way from the camera to the clients allocates nothing once everything is sized.
#include "CameraLoop.h"
#include "StopRequest.h"
#include "server/CameraFixture.h"
#include "server/RawClient.h"
#include "server/RunningBroadcaster.h"
#include "support/countedAllocations.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using support::Bytes;
using support::RawClient;
using support::RunningBroadcaster;

namespace {

server::BroadcasterSettings patient() {
    server::BroadcasterSettings settings;
    settings.clientTimeout = 60s;
    settings.cameraTimeout = 60s;
    return settings;
}

// The number of a frame as its first and its last word say it; 0 when they disagree.
std::uint32_t ends(const Bytes& frame) {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::memcpy(&first, frame.data(), sizeof first);
    std::memcpy(&last, frame.data() + frame.size() - sizeof last, sizeof last);
    return first >> 32U == last >> 32U ? static_cast<std::uint32_t>(first >> 32U) : 0;
}

// Publishes and reads `count` frames, one after another; false when anything went wrong.
template <std::size_t clientCount>
bool pass(RunningBroadcaster& running, std::array<RawClient, clientCount>& clients, Bytes& frame,
          std::uint32_t count) {
    static std::uint32_t number = 0;
    bool good = true;
    for (std::uint32_t i = 0; i < count; ++i) {
        ++number;
        good = running.publish(number) && good;
        for (RawClient& client : clients) {
            client.readFrame(frame);
            good = ends(frame) == number && good;
        }
    }
    return good;
}

void expectNoAllocations(std::uint32_t words, int receiveBuffer) {
    RunningBroadcaster running(patient());
    // The shortest ticks, so that they are counted, too.
    running.announce(support::wordsHeader(words), 1ms);
    std::array<RawClient, 3> clients{RawClient(running.port(), receiveBuffer),
                                     RawClient(running.port(), receiveBuffer),
                                     RawClient(running.port(), receiveBuffer)};
    RawClient stalled(running.port(), 4096);
    ASSERT_TRUE(running.hasClients(4));
    for (RawClient& client : clients)
        client.readHeader();
    Bytes frame;
    // More frames than are pooled, so that the stalled client has got its own copy of its first.
    ASSERT_TRUE(pass(running, clients, frame, 10));

    const int before = countedAllocations();
    const bool good = pass(running, clients, frame, 30);
    std::this_thread::sleep_for(20ms);
    const int after = countedAllocations();

    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
    EXPECT_TRUE(good);
}

TEST(BroadcasterAllocations, FramesThatTheSystemTakesAtOnceNeedNone) {
    expectNoAllocations(36, 0);
}

// All clients wait for their sockets at the same time then.
TEST(BroadcasterAllocations, FramesThatHaveToWaitForTheirClientsNeedNone) {
    expectNoAllocations(500'000, 65536);
}

class CameraLoopAllocations : public support::CameraFixture {};

TEST_F(CameraLoopAllocations, AFrameNeedsNoneFromTheCameraToTheClient) {
    writeDocument(R"("downsampleDepthX": 80, "downsampleDepthY": 60)");
    camera.finger = true;
    server::Options options;
    options.color = options.depth = options.processed = options.touch = true;
    options.keepRunning = true;
    server::StopRequest stop;
    RunningBroadcaster network(patient());
    server::CameraLoop loop(options, stop, nullptr);
    loop.open();
    std::thread thread([&] { loop.run(network.broadcaster); });

    int before = 0;
    int after = -1;
    QVR::NetworkTouch touch;
    {
        RawClient client(network.port());
        const QVR::ProtocolHeader header = client.readHeader();
        EXPECT_EQ(header.depthX, 80U);
        EXPECT_EQ(header.colorX, 160U);
        Bytes frame;
        for (int i = 0; i < 10; ++i)
            client.readFrame(frame);
        before = countedAllocations();
        for (int i = 0; i < 30; ++i)
            client.readFrame(frame);
        after = countedAllocations();
        std::copy_n(frame.begin(), sizeof touch, reinterpret_cast<std::byte*>(&touch));
    }
    stop.request();
    thread.join();

    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
    EXPECT_EQ(touch.active, 1);
}

} // namespace
