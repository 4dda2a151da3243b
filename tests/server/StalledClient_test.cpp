// What a client that stops reading costs everybody else.
#include "server/RawClient.h"
#include "server/RunningBroadcaster.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

// Resident memory of this process in bytes; 0 where the system does not say.
long residentBytes() {
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

// The number of a frame by its first and last word alone: the reader must not be what is slow.
std::uint32_t quickNumberOf(const support::Bytes& frame) {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::memcpy(&first, frame.data(), sizeof first);
    std::memcpy(&last, frame.data() + frame.size() - sizeof last, sizeof last);
    EXPECT_EQ(last - first, frame.size() / sizeof last - 1);
    return static_cast<std::uint32_t>(first >> 32U);
}

} // namespace

TEST(StalledClient, SlowsNobodyAndTakesNoMemory) {
    server::BroadcasterSettings settings;
    settings.clientTimeout = 60s;
    support::RunningBroadcaster running(settings);
    constexpr std::uint32_t words = 128 * 1024; // one MiB a frame
    running.announce(support::wordsHeader(words), 16ms);
    support::RawClient stalled(running.port());
    support::RawClient reader(running.port());
    reader.readHeader();
    ASSERT_TRUE(running.hasClients(2));

    std::atomic<bool> done{false};
    std::atomic<std::uint32_t> received{0};
    std::thread host([&] {
        // Freed memory stays in use under AddressSanitizer; a new buffer each time would count.
        support::Bytes frame;
        std::uint32_t last = 0;
        while (!done || last == 0) {
            reader.readFrame(frame);
            const std::uint32_t number = quickNumberOf(frame);
            EXPECT_GT(number, last);
            last = number;
            ++received;
        }
    });

    const auto start = Clock::now();
    std::uint32_t published = 0;
    std::uint32_t leftOut = 0;
    long before = 0;
    for (auto next = start; next < start + 5s; next += 16ms) {
        std::this_thread::sleep_until(next);
        leftOut += running.publish(++published) ? 0U : 1U;
        if (published == 60)
            before = residentBytes();
    }
    const long grown = residentBytes() - before;
    done = true;
    running.publish(++published);
    host.join();

    // A busy machine may keep the network thread from running for a few frames.
    EXPECT_LT(leftOut, published / 10);
    EXPECT_GT(received, published * 3 / 4);
    EXPECT_GT(published, 250U);
    // The stalled client missed more than 200 MiB meanwhile.
    EXPECT_LT(grown, 16L << 20);
    EXPECT_EQ(running.broadcaster.counters().clients, 2U);
}
