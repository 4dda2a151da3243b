#include "Broadcaster.h"
#include "server/RawClient.h"
#include "server/RunningBroadcaster.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <deque>
#include <set>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using support::Bytes;
using support::numberOf;
using support::RawClient;
using support::RunningBroadcaster;
using support::wordsHeader;
using Clock = std::chrono::steady_clock;

namespace {

server::BroadcasterSettings patient() {
    server::BroadcasterSettings settings;
    settings.clientTimeout = 60s;
    settings.cameraTimeout = 60s;
    return settings;
}

// Two touches, the first of them active, and one depth pixel.
QVR::ProtocolHeader touchHeader() {
    QVR::ProtocolHeader header;
    header.protocolID = 1;
    header.touchCount = 2;
    header.depthX = header.depthY = header.depthChannels = 1;
    header.depthDepth = 2;
    return header;
}

struct TouchFrame {
    QVR::NetworkTouch touches[2];
    unsigned short depth = 0;
};

void publishTouch(RunningBroadcaster& running, double x, unsigned short depth) {
    server::FrameRef frame = running.broadcaster.acquire();
    ASSERT_TRUE(frame);
    QVR::NetworkTouch touches[2];
    touches[0] = {1, x, 2.0, 3.0};
    std::memcpy(frame->bytes().data(), touches, sizeof touches);
    std::memcpy(frame->bytes().data() + sizeof touches, &depth, sizeof depth);
    running.broadcaster.publish(std::move(frame));
}

Bytes frameOf(std::size_t size, std::uint32_t number) {
    Bytes bytes(size);
    support::fillWords(bytes.data(), size, number);
    return bytes;
}

void append(Bytes& to, const Bytes& more) {
    to.insert(to.end(), more.begin(), more.end());
}

TouchFrame readTouch(RawClient& client) {
    const Bytes bytes = client.readFrame();
    TouchFrame frame;
    std::memcpy(frame.touches, bytes.data(), sizeof frame.touches);
    std::memcpy(&frame.depth, bytes.data() + sizeof frame.touches, sizeof frame.depth);
    return frame;
}

} // namespace

TEST(Broadcaster, SendsTheHeaderAndThenFrames) {
    RunningBroadcaster running(patient());
    const QVR::ProtocolHeader sent = wordsHeader(100);
    running.announce(sent);
    RawClient client(running.port());
    const QVR::ProtocolHeader header = client.readHeader();
    EXPECT_EQ(std::memcmp(&header, &sent, sizeof sent), 0);
    for (std::uint32_t number = 1; number <= 5; ++number) {
        ASSERT_TRUE(running.publish(number));
        EXPECT_EQ(numberOf(client.readFrame()), number);
    }
    EXPECT_EQ(running.broadcaster.counters().skippedFrames, 0U);
}

TEST(Broadcaster, GivesANewClientTheNewestFrameAtOnce) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(100));
    running.publish(1);
    running.publish(2);
    running.settle();
    RawClient client(running.port());
    client.readHeader();
    EXPECT_EQ(numberOf(client.readFrame()), 2U);
    EXPECT_FALSE(client.readable(30));
}

TEST(Broadcaster, GivesAllClientsTheSameBytes) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(50000));
    std::deque<RawClient> clients;
    for (int i = 0; i < 3; ++i)
        clients.emplace_back(running.port()).readHeader();
    ASSERT_TRUE(running.hasClients(3));
    for (std::uint32_t number = 1; number <= 20; ++number) {
        ASSERT_TRUE(running.publish(number));
        std::vector<std::thread> readers;
        std::vector<Bytes> frames(clients.size());
        for (std::size_t i = 0; i < clients.size(); ++i)
            readers.emplace_back([&, i] { frames[i] = clients[i].readFrame(); });
        for (std::thread& reader : readers)
            reader.join();
        EXPECT_EQ(numberOf(frames[0]), number);
        EXPECT_EQ(frames[1], frames[0]);
        EXPECT_EQ(frames[2], frames[0]);
    }
}

TEST(Broadcaster, SkipsWholeFramesForASlowReader) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(100000));
    RawClient client(running.port(), 65536);
    client.readHeader();
    ASSERT_TRUE(running.hasClients(1));
    std::uint32_t last = 0;
    std::uint32_t received = 0;
    std::uint32_t published = 0;
    while (published < 200) {
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(running.publish(++published));
            running.settle();
        }
        const std::uint32_t number = numberOf(client.readFrame());
        EXPECT_GT(number, last);
        last = number;
        ++received;
    }
    while (last != published) {
        const std::uint32_t number = numberOf(client.readFrame());
        EXPECT_GT(number, last);
        last = number;
        ++received;
    }
    EXPECT_LT(received, 60U);
    EXPECT_TRUE(RunningBroadcaster::eventually(
        [&] { return running.broadcaster.counters().skippedFrames == published - received; }));
}

// Touches alone are so small that the system's send queue would take minutes of them.
TEST(Broadcaster, KeepsSmallFramesFromAgeingInTheSendQueue) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(35));
    RawClient client(running.port(), 4096);
    client.readHeader();
    ASSERT_TRUE(running.hasClients(1));
    constexpr std::uint32_t published = 5000;
    for (std::uint32_t number = 1; number <= published; ++number) {
        ASSERT_TRUE(running.publish(number));
        running.settle();
    }
    EXPECT_GT(running.broadcaster.counters().skippedFrames, published - 500);
    std::uint32_t last = 0;
    while (last != published)
        last = numberOf(client.readFrame());
}

TEST(Broadcaster, LeavesBuffersFreeHoweverManyClientsLag) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(200000));
    std::deque<RawClient> clients;
    for (std::uint32_t i = 0; i < 16; ++i) {
        clients.emplace_back(running.port(), 4096).readHeader();
        ASSERT_TRUE(running.hasClients(i + 1));
        // Each of them stays behind in another frame.
        ASSERT_TRUE(running.publish(i + 1));
        running.settle();
    }
    for (std::uint32_t number = 17; number <= 60; ++number) {
        ASSERT_TRUE(running.publish(number));
        running.settle();
    }
    for (RawClient& client : clients) {
        std::uint32_t last = 0;
        while (last != 60) {
            const std::uint32_t number = numberOf(client.readFrame());
            EXPECT_GT(number, last);
            last = number;
        }
    }
}

TEST(Broadcaster, UsesTheSameFewBuffersHoweverManyClientsReadOrLag) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(100000));
    std::set<const void*> buffers;
    {
        std::vector<server::FrameRef> held;
        while (server::FrameRef frame = running.broadcaster.acquire()) {
            buffers.insert(frame->bytes().data());
            held.push_back(std::move(frame));
            ASSERT_LT(held.size(), 16U);
        }
    }
    std::uint32_t number = 0;
    const auto publishOne = [&] {
        server::FrameRef frame = running.broadcaster.acquire();
        ASSERT_TRUE(frame);
        EXPECT_TRUE(buffers.contains(frame->bytes().data()));
        support::fillWords(frame->bytes().data(), frame->bytes().size(), ++number);
        running.broadcaster.publish(std::move(frame));
        running.settle();
    };
    std::deque<RawClient> laggards;
    std::deque<RawClient> readers;
    Bytes frame;
    const auto readAll = [&] {
        for (RawClient& reader : readers) {
            reader.readFrame(frame);
            EXPECT_EQ(numberOf(frame), number);
        }
    };
    for (std::size_t i = 0; i < 8; ++i) {
        readers.emplace_back(running.port()).readHeader();
        ASSERT_TRUE(running.hasClients(2 * i + 1));
        // A new client begins with the newest frame; this one is then read by all.
        if (number != 0)
            readers.back().readFrame(frame);
        laggards.emplace_back(running.port(), 4096).readHeader();
        ASSERT_TRUE(running.hasClients(2 * i + 2));
        publishOne();
        readAll();
    }
    for (int i = 0; i < 20; ++i) {
        publishOne();
        readAll();
    }
}

TEST(Broadcaster, DropsAClientThatStopsReadingAndNoOther) {
    server::BroadcasterSettings settings = patient();
    settings.clientTimeout = 300ms;
    RunningBroadcaster running(settings);
    running.announce(wordsHeader(100000));
    RawClient reader(running.port());
    RawClient stalled(running.port(), 4096);
    reader.readHeader();
    ASSERT_TRUE(running.hasClients(2));
    const auto start = Clock::now();
    std::uint32_t number = 0;
    while (running.broadcaster.counters().droppedClients == 0 && Clock::now() - start < 60s) {
        ASSERT_TRUE(running.publish(++number));
        EXPECT_EQ(numberOf(reader.readFrame()), number);
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_GE(Clock::now() - start, 300ms);
    EXPECT_EQ(running.broadcaster.counters().droppedClients, 1U);
    EXPECT_TRUE(running.hasClients(1));
    EXPECT_TRUE(stalled.waitUntilClosed());
    ASSERT_TRUE(running.publish(++number));
    EXPECT_EQ(numberOf(reader.readFrame()), number);
    EXPECT_FALSE(running.broadcaster.counters().abandoned);
    EXPECT_THAT(running.reports(),
                testing::ElementsAre(testing::EndsWith("has stopped reading and is dropped")));
}

TEST(Broadcaster, SendsWhatIsLentAndThenTheRestFromTheFrame) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(500'000));
    RawClient client(running.port(), 4096);
    client.readHeader();
    ASSERT_TRUE(running.hasClients(1));

    Bytes pictures = frameOf(client.frameBytes(), 5);
    const server::FrameRef frame = running.publishLent(pictures);
    Bytes bytes = client.read(3000);
    support::fillWords(frame->bytes().data(), frame->bytes().size(), 5);
    frame->takeBack();
    pictures.assign(pictures.size(), std::byte{0xee});

    RawClient late(running.port());
    late.readHeader();
    EXPECT_EQ(numberOf(late.readFrame()), 5U);
    append(bytes, client.read(client.frameBytes() - 3000));
    EXPECT_EQ(numberOf(bytes), 5U);
    ASSERT_TRUE(running.publish(6));
    EXPECT_EQ(numberOf(client.readFrame()), 6U);
    EXPECT_EQ(numberOf(late.readFrame()), 6U);
}

TEST(Broadcaster, KnowsWhenAFrameIsSentToAllWhoCouldTakeIt) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(500'000));
    RawClient client(running.port(), 4096);
    client.readHeader();
    RawClient laggard(running.port(), 4096);
    laggard.readHeader();
    ASSERT_TRUE(running.hasClients(2));
    ASSERT_TRUE(running.publish(4));
    EXPECT_EQ(numberOf(client.readFrame()), 4U);

    // The laggard has the frame before to read first; nobody waits for it.
    const Bytes pictures = frameOf(client.frameBytes(), 5);
    const server::FrameRef frame = running.publishLent(pictures);
    EXPECT_FALSE(frame->waitUntilSent(Clock::now() + 50ms));
    EXPECT_EQ(numberOf(client.readFrame()), 5U);
    EXPECT_TRUE(frame->waitUntilSent(Clock::now() + 60s));
    frame->takeBack();
}

TEST(Broadcaster, DoesNotTakeAFrameForSentThatNobodyWasOffered) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(1000));
    const Bytes pictures = frameOf(8000, 5);
    server::FrameRef frame;
    running.whileNetworkRests([&] {
        frame = running.publishLent(pictures);
        EXPECT_FALSE(frame->waitUntilSent(Clock::now() + 20ms));
    });
    EXPECT_TRUE(frame->waitUntilSent(Clock::now() + 60s));
    frame->takeBack();
}

TEST(Broadcaster, PutsNothingBehindAFrameThatIsLent) {
    server::BroadcasterSettings settings = patient();
    settings.cameraTimeout = 500ms;
    RunningBroadcaster running(settings);
    running.announce(wordsHeader(1000));
    RawClient client(running.port());
    client.readHeader();
    ASSERT_TRUE(running.hasClients(1));
    const Bytes pictures = frameOf(client.frameBytes(), 5);
    const server::FrameRef frame = running.publishLent(pictures);
    EXPECT_EQ(numberOf(client.readFrame()), 5U);
    EXPECT_FALSE(client.readable(1200));
    EXPECT_THAT(running.reports(), testing::IsEmpty());
    support::fillWords(frame->bytes().data(), frame->bytes().size(), 5);
    frame->takeBack();
    // With its pictures back, the camera is silent like any other.
    EXPECT_TRUE(client.readable(10000));
}

TEST(Broadcaster, KeepsAClientThatHasNothingToRead) {
    server::BroadcasterSettings settings = patient();
    settings.clientTimeout = 50ms;
    RunningBroadcaster running(settings);
    running.announce(wordsHeader(10));
    RawClient client(running.port());
    client.readHeader();
    EXPECT_FALSE(client.readable(200));
    running.publish(7);
    EXPECT_EQ(numberOf(client.readFrame()), 7U);
}

TEST(Broadcaster, NoticesAVanishedClientWithoutSendingAnything) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(10));
    {
        RawClient client(running.port());
        client.readHeader();
        ASSERT_TRUE(running.hasClients(1));
        EXPECT_FALSE(running.broadcaster.counters().abandoned);
    }
    EXPECT_TRUE(running.hasClients(0));
    EXPECT_TRUE(running.broadcaster.counters().abandoned);
    RawClient next(running.port());
    EXPECT_TRUE(running.hasClients(1));
    EXPECT_FALSE(running.broadcaster.counters().abandoned);
}

TEST(Broadcaster, IsNotAbandonedBeforeAClientCame) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(10));
    running.publish(1);
    running.settle();
    EXPECT_FALSE(running.broadcaster.counters().abandoned);
}

TEST(Broadcaster, RefusesOneClientTooMany) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(10));
    std::deque<RawClient> clients;
    for (int i = 0; i < 16; ++i)
        clients.emplace_back(running.port()).readHeader();
    RawClient refused(running.port());
    EXPECT_TRUE(refused.waitUntilClosed());
    EXPECT_EQ(running.broadcaster.counters().refusedClients, 1U);
    EXPECT_EQ(running.broadcaster.counters().clients, 16U);
    running.publish(1);
    for (RawClient& client : clients)
        EXPECT_EQ(numberOf(client.readFrame()), 1U);

    clients.pop_back();
    ASSERT_TRUE(running.hasClients(15));
    RawClient admitted(running.port());
    admitted.readHeader();
    EXPECT_EQ(numberOf(admitted.readFrame()), 1U);
}

#ifdef __linux__ // where every address of 127.0.0.0/8 is this machine's
TEST(Broadcaster, RefusesAStrangerAtOnceAndNamesItOnce) {
    server::BroadcasterSettings settings = patient();
    settings.allowed = {};
    ASSERT_TRUE(settings.allowed.add("127.0.0.1"));
    RunningBroadcaster running(settings);
    running.announce(wordsHeader(100));
    running.publish(1);
    for (int i = 0; i < 3; ++i) {
        RawClient stranger = RawClient::from("127.0.0.2", running.port());
        EXPECT_EQ(stranger.bytesUntilClosed(), 0U);
    }
    RawClient other = RawClient::from("127.0.0.3", running.port());
    EXPECT_EQ(other.bytesUntilClosed(), 0U);
    EXPECT_EQ(running.broadcaster.counters().refusedPeers, 4U);
    EXPECT_EQ(running.broadcaster.counters().clients, 0U);
    EXPECT_FALSE(running.broadcaster.counters().abandoned);
    const std::string end = " was refused: only these may connect: 127.0.0.1 (see --allow)";
    EXPECT_THAT(running.reports(), testing::ElementsAre("a client from 127.0.0.2" + end,
                                                        "a client from 127.0.0.3" + end));
    RawClient welcome(running.port());
    welcome.readHeader();
    EXPECT_EQ(numberOf(welcome.readFrame()), 1U);
}

TEST(Broadcaster, StopsNamingStrangersWhenThereAreMany) {
    server::BroadcasterSettings settings = patient();
    settings.allowed = {};
    RunningBroadcaster running(settings);
    running.announce(wordsHeader(100));
    for (int i = 1; i <= 80; ++i)
        RawClient::from("127.0.1." + std::to_string(i), running.port()).waitUntilClosed();
    EXPECT_EQ(running.broadcaster.counters().refusedPeers, 80U);
    const std::vector<std::string> reports = running.reports();
    ASSERT_EQ(reports.size(), 65U);
    EXPECT_EQ(reports.back(), "clients from other addresses that are refused will not be named");
}
#endif

TEST(Broadcaster, SaysAnewWhatItExposesWhenThatChanges) {
    RunningBroadcaster running(patient(), boost::asio::ip::address_v4::any());
    QVR::ProtocolHeader header = touchHeader();
    running.announce(header);
    running.announce(header);
    EXPECT_THAT(running.reports(),
                testing::ElementsAre(testing::HasSubstr("gets touches and depth images,")));
    header.colorX = header.colorY = header.colorChannels = header.colorDepth = 1;
    running.announce(header);
    EXPECT_THAT(running.reports(), testing::Contains(testing::HasSubstr(
                                       "gets touches, colour images and depth images,")));
}

TEST(Broadcaster, ThrowsAwayWhatClientsSend) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(1000));
    RawClient client(running.port());
    client.readHeader();
    EXPECT_TRUE(client.send(Bytes(4 << 20, std::byte{0x55})));
    running.publish(3);
    EXPECT_EQ(numberOf(client.readFrame()), 3U);
}

TEST(Broadcaster, SurvivesManyComingsAndGoings) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(20000));
    std::atomic<bool> done{false};
    std::thread camera([&] {
        for (std::uint32_t number = 1; !done; ++number) {
            running.publish(number);
            std::this_thread::sleep_for(1ms);
        }
    });
    RawClient faithful(running.port());
    faithful.readHeader();
    for (int i = 0; i < 300; ++i) {
        RawClient client(running.port());
        if (i % 3 != 0)
            client.readHeader();
        if (i % 3 == 2)
            numberOf(client.readFrame());
    }
    std::uint32_t last = 0;
    for (int i = 0; i < 20; ++i) {
        const std::uint32_t number = numberOf(faithful.readFrame());
        EXPECT_GT(number, last);
        last = number;
    }
    EXPECT_TRUE(running.hasClients(1));
    done = true;
    camera.join();
}

TEST(Broadcaster, SendsNothingButTheHeaderWhenFramesAreEmpty) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(0));
    RawClient client(running.port());
    client.readHeader();
    for (std::uint32_t number = 1; number <= 100; ++number) {
        ASSERT_TRUE(running.publish(number));
        running.settle();
    }
    EXPECT_FALSE(client.readable(30));
    EXPECT_EQ(running.broadcaster.counters().clients, 1U);
}

TEST(Broadcaster, GoesOnWithoutTouchesWhileTheCameraIsLost) {
    RunningBroadcaster running(patient());
    running.announce(touchHeader(), 5ms);
    RawClient client(running.port());
    client.readHeader();
    publishTouch(running, 0.5, 777);
    EXPECT_EQ(readTouch(client).touches[0].active, 1);

    const auto start = Clock::now();
    running.broadcaster.cameraLost(Clock::now());
    for (int i = 0; i < 20; ++i) {
        const TouchFrame frame = readTouch(client);
        EXPECT_EQ(frame.touches[0].active, 0);
        EXPECT_DOUBLE_EQ(frame.touches[0].x, -1.0);
        EXPECT_DOUBLE_EQ(frame.touches[0].y, -1.0);
        EXPECT_DOUBLE_EQ(frame.touches[0].z, -1.0);
        EXPECT_EQ(frame.touches[1].active, 0);
        EXPECT_EQ(frame.depth, 777);
    }
    // Twenty frames of 5 ms: paced, not poured.
    EXPECT_GE(Clock::now() - start, 90ms);

    EXPECT_THAT(running.reports(),
                testing::ElementsAre("WARNING: the camera is lost (no good frame for 0.0 s); "
                                     "clients stay connected while it is tried again"));

    publishTouch(running, 0.25, 778);
    TouchFrame frame = readTouch(client);
    while (frame.depth == 777)
        frame = readTouch(client);
    EXPECT_EQ(frame.touches[0].active, 1);
    EXPECT_DOUBLE_EQ(frame.touches[0].x, 0.25);
    EXPECT_EQ(frame.depth, 778);
    EXPECT_FALSE(client.readable(50));
    ASSERT_EQ(running.reports().size(), 2U);
    EXPECT_THAT(running.reports().back(),
                testing::MatchesRegex("the camera is back after [0-9]+\\.[0-9] s"));
}

TEST(Broadcaster, TakesALongSilenceOfTheCameraForItsLoss) {
    server::BroadcasterSettings settings = patient();
    settings.cameraTimeout = 100ms;
    RunningBroadcaster running(settings);
    running.announce(touchHeader(), 5ms);
    RawClient client(running.port());
    client.readHeader();
    publishTouch(running, 0.5, 777);
    EXPECT_EQ(readTouch(client).touches[0].active, 1);
    const auto start = Clock::now();
    EXPECT_EQ(readTouch(client).touches[0].active, 0);
    EXPECT_GE(Clock::now() - start, 80ms);
    EXPECT_THAT(running.reports(), testing::ElementsAre(testing::HasSubstr("the camera is lost")));
}

// The network notices the silence, then the camera's own thread gives up its wait.
TEST(Broadcaster, SaysOnceThatTheCameraIsLostWhoeverNoticesIt) {
    server::BroadcasterSettings settings = patient();
    settings.cameraTimeout = 50ms;
    RunningBroadcaster running(settings);
    running.announce(touchHeader(), 5ms);
    publishTouch(running, 0.5, 777);
    const auto lost = [&] { return running.reports().size() == 1; };
    ASSERT_TRUE(RunningBroadcaster::eventually(lost));
    running.broadcaster.cameraLost(Clock::now());
    running.broadcaster.cameraLost(Clock::now());
    running.settle();
    EXPECT_TRUE(lost());
    publishTouch(running, 0.5, 778);
    publishTouch(running, 0.5, 779);
    EXPECT_THAT(running.reports(),
                testing::ElementsAre(testing::HasSubstr("is lost"), testing::HasSubstr("is back")));
}

TEST(Broadcaster, GivesACameraThatStartsItsTime) {
    server::BroadcasterSettings settings = patient();
    settings.cameraTimeout = 20ms;
    RunningBroadcaster running(settings);
    running.announce(touchHeader(), 5ms);
    RawClient client(running.port());
    client.readHeader();
    // Hosts do not hang meanwhile.
    EXPECT_EQ(readTouch(client).touches[0].active, 0);
    EXPECT_THAT(running.reports(), testing::IsEmpty());
    publishTouch(running, 0.5, 777);
    EXPECT_THAT(running.reports(), testing::IsEmpty());
}

TEST(Broadcaster, SendsBlankFramesWhenTheCameraIsLostBeforeItsFirst) {
    RunningBroadcaster running(patient());
    running.announce(touchHeader(), 5ms);
    RawClient client(running.port());
    client.readHeader();
    running.broadcaster.cameraLost(Clock::now());
    const TouchFrame frame = readTouch(client);
    EXPECT_EQ(frame.touches[0].active, 0);
    EXPECT_DOUBLE_EQ(frame.touches[0].x, -1.0);
    EXPECT_EQ(frame.depth, 0);
}

TEST(Broadcaster, CountsACameraAsSilentAfterThreeFramesAtLeast) {
    EXPECT_EQ(server::Broadcaster::cameraSilence(1000ms, 10ms), 1000ms);
    EXPECT_EQ(server::Broadcaster::cameraSilence(1000ms, 1000ms), 3000ms);
}

TEST(Broadcaster, DisconnectsItsClientsWhenTheImagesChange) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(100));
    RawClient client(running.port());
    client.readHeader();
    running.publish(1);
    EXPECT_EQ(numberOf(client.readFrame()), 1U);

    running.announce(wordsHeader(200));
    EXPECT_TRUE(client.waitUntilClosed());
    EXPECT_FALSE(running.broadcaster.counters().abandoned);
    EXPECT_EQ(running.broadcaster.counters().clients, 0U);

    RawClient next(running.port());
    EXPECT_EQ(next.readHeader().processedX, 1600U);
    running.publish(2);
    EXPECT_EQ(numberOf(next.readFrame()), 2U);
}

TEST(Broadcaster, KeepsItsClientsWhenTheCameraComesBackUnchanged) {
    RunningBroadcaster running(patient());
    running.announce(wordsHeader(100));
    RawClient client(running.port());
    client.readHeader();
    running.announce(wordsHeader(100));
    running.publish(1);
    EXPECT_EQ(numberOf(client.readFrame()), 1U);
}

TEST(Broadcaster, CannotHaveAPortThatIsInUse) {
    RunningBroadcaster running(patient());
    server::BroadcasterSettings settings;
    settings.endpoint = running.broadcaster.endpoint();
    boost::asio::io_context context;
    EXPECT_THROW(server::Broadcaster(context, settings,
                                     [](const std::string&, server::Broadcaster::Weight) {}),
                 boost::system::system_error);
}
