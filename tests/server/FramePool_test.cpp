#include "FramePool.h"

#include <atomic>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using server::FramePool;
using server::FrameRef;

TEST(FramePool, HandsOutEachFrameOnceAndThenNone) {
    FramePool pool(16, 3);
    EXPECT_EQ(pool.freeCount(), 3U);
    std::vector<FrameRef> frames;
    std::set<const void*> different;
    for (int i = 0; i < 3; ++i) {
        frames.push_back(pool.acquire());
        ASSERT_TRUE(frames.back());
        EXPECT_EQ(frames.back()->bytes().size(), 16U);
        different.insert(frames.back().get());
    }
    EXPECT_EQ(different.size(), 3U);
    EXPECT_FALSE(pool.acquire());
    EXPECT_EQ(pool.freeCount(), 0U);
}

TEST(FramePool, TakesAFrameBackWithItsLastReference) {
    FramePool pool(16, 1);
    FrameRef first = pool.acquire();
    FrameRef second = first;
    first.reset();
    EXPECT_FALSE(pool.acquire());
    second.reset();
    EXPECT_EQ(pool.freeCount(), 1U);
    EXPECT_TRUE(pool.acquire());
}

TEST(FramePool, ReusesItsMemory) {
    FramePool pool(64, 2);
    const void* const first = pool.acquire()->bytes().data();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(pool.acquire()->bytes().data(), first);
}

TEST(FramePool, FramesOutliveIt) {
    FrameRef frame;
    {
        FramePool pool(8, 2);
        frame = pool.acquire();
    }
    std::memset(frame->bytes().data(), 7, frame->bytes().size());
    EXPECT_EQ(frame->bytes()[7], std::byte{7});
}

// What one thread writes into a frame is never seen changing by another that still holds it.
TEST(FramePool, NeverGivesAFrameToTwoThreads) {
    FramePool pool(4096, 3);
    std::atomic<int> torn{0};
    const auto work = [&](unsigned char mark) {
        for (int i = 0; i < 2000; ++i) {
            const FrameRef frame = pool.acquire();
            if (!frame)
                continue;
            std::memset(frame->bytes().data(), mark, frame->bytes().size());
            const FrameRef reader = frame;
            for (const std::byte byte : reader->bytes())
                torn += byte == std::byte{mark} ? 0 : 1;
        }
    };
    std::vector<std::thread> threads;
    for (unsigned char mark = 1; mark <= 4; ++mark)
        threads.emplace_back(work, mark);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(pool.freeCount(), 3U);
}
