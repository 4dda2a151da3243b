#include "Frame.h"
#include "FramePool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using server::Frame;
using server::FrameParts;
using server::FramePool;
using server::FrameRef;
using server::FrameUse;
using server::useOf;
using Bytes = std::vector<std::byte>;

namespace {

constexpr std::size_t frameBytes = 12;

// Bytes that count from `first`.
Bytes counted(int first) {
    Bytes bytes(frameBytes);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = std::byte(static_cast<unsigned char>(first + static_cast<int>(i)));
    return bytes;
}

FrameParts partsOf(const Bytes& bytes) {
    const std::span<const std::byte> all(bytes);
    return {all.subspan(0, 3), all.subspan(3, 4), {}, all.subspan(7)};
}

Bytes readFrom(const Frame& frame, std::size_t offset) {
    return frame.read(offset, [](const FrameParts& parts) {
        Bytes bytes;
        for (const auto part : parts)
            bytes.insert(bytes.end(), part.begin(), part.end());
        return bytes;
    });
}

Bytes from(const Bytes& bytes, std::size_t offset) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end()};
}

class FrameTest : public testing::Test {
  protected:
    FrameTest() { std::copy(own.begin(), own.end(), frame->bytes().begin()); }

    const Bytes own = counted(100);
    const Bytes camera = counted(0);
    FramePool pool{frameBytes, 1};
    FrameRef frame = pool.acquire();
};

} // namespace

TEST_F(FrameTest, IsReadFromItsOwnBytesWhenNothingIsLent) {
    EXPECT_FALSE(frame->isLent());
    for (std::size_t offset = 0; offset <= frameBytes; ++offset)
        EXPECT_EQ(readFrom(*frame, offset), from(own, offset)) << offset;
}

TEST_F(FrameTest, IsReadFromWhatIsLentUntilThatIsTakenBack) {
    frame->lend(partsOf(camera));
    EXPECT_TRUE(frame->isLent());
    for (std::size_t offset = 0; offset <= frameBytes; ++offset)
        EXPECT_EQ(readFrom(*frame, offset), from(camera, offset)) << offset;
    frame->takeBack();
    EXPECT_FALSE(frame->isLent());
    EXPECT_EQ(readFrom(*frame, 5), from(own, 5));
}

TEST_F(FrameTest, TakingBackWaitsForWhoeverReads) {
    frame->lend(partsOf(camera));
    std::promise<void> reading;
    std::promise<void> goOn;
    std::atomic<bool> done{false};
    std::thread reader([&] {
        frame->read(0, [&](const FrameParts&) {
            reading.set_value();
            goOn.get_future().wait();
            done = true;
        });
    });
    reading.get_future().wait();
    auto takenBack = std::async(std::launch::async, [&] {
        frame->takeBack();
        return done.load();
    });
    EXPECT_EQ(takenBack.wait_for(50ms), std::future_status::timeout);
    goOn.set_value();
    EXPECT_TRUE(takenBack.get());
    reader.join();
}

TEST_F(FrameTest, IsSentWhenNobodyUsesItAnyMore) {
    EXPECT_TRUE(frame->waitUntilSent(Frame::Clock::now()));
    FrameUse first = useOf(frame);
    FrameUse second = useOf(frame);
    first.reset();
    EXPECT_FALSE(frame->waitUntilSent(Frame::Clock::now()));
    const auto start = Frame::Clock::now();
    EXPECT_FALSE(frame->waitUntilSent(start + 30ms));
    EXPECT_GE(Frame::Clock::now() - start, 30ms);
    std::thread sender([use = std::move(second)]() mutable {
        std::this_thread::sleep_for(20ms);
        use.reset();
    });
    EXPECT_TRUE(frame->waitUntilSent(Frame::Clock::now() + 60s));
    sender.join();
}

TEST_F(FrameTest, IsNotFreeWhileItIsUsed) {
    FrameUse use = useOf(frame);
    frame.reset();
    EXPECT_EQ(pool.freeCount(), 0U);
    EXPECT_EQ(readFrom(*use, 0), own);
    use.reset();
    EXPECT_EQ(pool.freeCount(), 1U);
}

// Whatever is read at any moment is one whole frame, and what was lent may change at once.
TEST_F(FrameTest, NeverShowsWhatWasTakenBack) {
    std::atomic<int> broken{0};
    std::atomic<bool> ended{false};
    std::thread reader([&] {
        while (!ended)
            for (std::size_t offset = 0; offset <= frameBytes; ++offset)
                broken += readFrom(*frame, offset) == from(own, offset) ? 0 : 1;
    });
    for (int turn = 0; turn < 2000; ++turn) {
        Bytes pictures = own;
        frame->lend(partsOf(pictures));
        std::this_thread::yield();
        frame->takeBack();
        pictures.assign(frameBytes, std::byte{0xee});
    }
    ended = true;
    reader.join();
    EXPECT_EQ(broken, 0);
}
