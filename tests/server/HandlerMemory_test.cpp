#include "HandlerMemory.h"
#include "support/countedAllocations.h"

#include <array>
#include <cstdint>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

using server::HandlerMemory;

namespace {

constexpr std::size_t blockBytes = 256;

TEST(HandlerMemory, HandsOutEachBlockOnceAndAgainWhenItIsBack) {
    HandlerMemory memory(2);
    const int before = countedAllocations();
    void* const first = memory.allocate(blockBytes);
    void* const second = memory.allocate(1);
    EXPECT_NE(first, second);
    memory.deallocate(first);
    void* const third = memory.allocate(blockBytes);
    EXPECT_EQ(third, first);
    EXPECT_EQ(countedAllocations(), before);
    memory.deallocate(second);
    memory.deallocate(third);
}

TEST(HandlerMemory, TakesFromTheHeapWhatDoesNotFit) {
    HandlerMemory memory(1);
    const int before = countedAllocations();
    void* const large = memory.allocate(blockBytes + 1);
    EXPECT_EQ(countedAllocations(), before + 1);
    void* const block = memory.allocate(blockBytes);
    EXPECT_EQ(countedAllocations(), before + 1);
    void* const more = memory.allocate(1);
    EXPECT_EQ(countedAllocations(), before + 2);
    memory.deallocate(large);
    memory.deallocate(more);
    memory.deallocate(block);
    void* const again = memory.allocate(1);
    EXPECT_EQ(again, block);
    memory.deallocate(again);
}

TEST(HandlerMemory, IsAlignedForEverything) {
    HandlerMemory memory(3);
    for (int i = 0; i < 3; ++i) {
        void* const block = memory.allocate(blockBytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
    }
}

TEST(KeptHandler, RunsFromItsMemoryWhichOtherThreadsHandlersDoNot) {
    boost::asio::io_context context;
    const auto memory = std::make_shared<HandlerMemory>(1);
    int runs = 0;
    const int before = countedAllocations();
    for (int i = 0; i < 3; ++i) {
        boost::asio::post(context, server::KeptHandler(memory, [&] { ++runs; }));
        context.run();
        context.restart();
    }
    EXPECT_EQ(countedAllocations(), before);
    EXPECT_EQ(runs, 3);
    boost::asio::post(context, [&] { ++runs; });
    EXPECT_GT(countedAllocations(), before);
}

TEST(KeptHandler, MayBeLeftBehindInALoopThatEndsLast) {
    boost::asio::io_context context;
    auto memory = std::make_shared<HandlerMemory>(1);
    const std::weak_ptr<HandlerMemory> watched = memory;
    boost::asio::post(context, server::KeptHandler(memory, [] {}));
    memory.reset();
    EXPECT_FALSE(watched.expired());
}

} // namespace
