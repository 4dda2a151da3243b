#include "FrameLoan.h"
#include "FramePool.h"

#include <array>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using server::Frame;
using server::FrameLayout;
using server::FrameLoan;
using server::FrameRef;
using server::FrameUse;
using server::useOf;

namespace {

// No touches and four depth pixels.
QVR::ProtocolHeader depthHeader() {
    QVR::ProtocolHeader header;
    header.depthX = header.depthY = header.depthDepth = 2;
    header.depthChannels = 1;
    return header;
}

class FrameLoanTest : public testing::Test {
  protected:
    FrameLoan lend(Frame::Clock::time_point deadline = Frame::Clock::now()) {
        QVR::networkFrameData parts;
        parts.depth = picture.data();
        return {frame, layout, parts, *layout.inPlace(parts), deadline};
    }
    // The address of what a reader gets.
    const void* readAt() const {
        return frame->read(0, [](const server::FrameParts& parts) -> const void* {
            for (const auto part : parts)
                if (!part.empty())
                    return part.data();
            return nullptr;
        });
    }
    bool hasOwnCopy() const {
        return readAt() == frame->bytes().data() &&
               std::memcmp(readAt(), picture.data(), sizeof picture) == 0;
    }

    std::array<unsigned short, 4> picture = {1, 2, 3, 4};
    const FrameLayout layout{depthHeader()};
    server::FramePool pool{layout.frameBytes(), 1};
    FrameRef frame = pool.acquire();
};

} // namespace

TEST_F(FrameLoanTest, LendsThePicturesAndLeavesACopy) {
    {
        const FrameLoan loan = lend();
        EXPECT_EQ(readAt(), picture.data());
    }
    EXPECT_TRUE(hasOwnCopy());
}

TEST_F(FrameLoanTest, EndsOnceWhereverItWent) {
    {
        FrameLoan first = lend();
        const FrameLoan second = std::move(first);
        EXPECT_EQ(readAt(), picture.data());
    }
    EXPECT_TRUE(hasOwnCopy());
    frame.reset();
    EXPECT_EQ(pool.freeCount(), 1U);
    const FrameLoan ofNothing;
}

TEST_F(FrameLoanTest, WaitsForWhoeverSendsTheFrame) {
    FrameUse use = useOf(frame);
    std::thread sender;
    const auto start = Frame::Clock::now();
    {
        const FrameLoan loan = lend(start + 60s);
        sender = std::thread([&use] {
            std::this_thread::sleep_for(30ms);
            use.reset();
        });
    }
    EXPECT_GE(Frame::Clock::now() - start, 30ms);
    EXPECT_LT(Frame::Clock::now() - start, 50s);
    sender.join();
    EXPECT_TRUE(hasOwnCopy());
}

TEST_F(FrameLoanTest, WaitsNoLongerThanItMay) {
    const FrameUse use = useOf(frame);
    const auto start = Frame::Clock::now();
    { const FrameLoan loan = lend(start + 30ms); }
    EXPECT_GE(Frame::Clock::now() - start, 30ms);
    EXPECT_TRUE(hasOwnCopy());
}
