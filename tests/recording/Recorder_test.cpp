#include "recording/Recorder.h"
#include "support/countedAllocations.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using recording::FrameInfo;
using recording::PictureView;
using recording::Recorder;
using recording::Tracking;

namespace {

// A disk that takes frames only when it is let.
class Disk {
  public:
    Recorder::Write write() {
        return [this](const FrameInfo& frame, const PictureView& pictures) {
            std::unique_lock lock(mutex_);
            ++begun_;
            changed_.notify_all();
            changed_.wait(lock, [this] { return open_; });
            if (full_)
                throw std::runtime_error("the disk is full");
            written.push_back(frame);
            depths.emplace_back(pictures.depth.begin(), pictures.depth.end());
            colors.emplace_back(pictures.color.begin(), pictures.color.end());
        };
    }
    void open(bool full = false) {
        const std::lock_guard lock(mutex_);
        open_ = true;
        full_ = full;
        changed_.notify_all();
    }
    void waitUntilBusy() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return begun_ != 0; });
    }

    // To be read when the recorder has finished.
    std::vector<FrameInfo> written;
    std::vector<std::vector<std::uint16_t>> depths;
    std::vector<std::vector<std::uint8_t>> colors;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int begun_ = 0;
    bool open_ = false;
    bool full_ = false;
};

constexpr std::size_t pixels = 6;
constexpr std::size_t buffers = 4;

class RecorderTest : public testing::Test {
  protected:
    explicit RecorderTest(std::uint64_t every = 1,
                          recording::WhenFull whenFull = recording::WhenFull::drop)
        : recorder(
              pixels, pixels * 3, buffers, every, disk.write(),
              [this](const std::string& why) { complaints.push_back(why); }, whenFull) {}
    // Whatever a test left waiting.
    ~RecorderTest() override { disk.open(); }

    void offer(int number) {
        FrameInfo frame;
        frame.number = static_cast<std::uint64_t>(number);
        depth.assign(pixels, static_cast<std::uint16_t>(number));
        color.assign(pixels * 3, static_cast<std::uint8_t>(number));
        Tracking before;
        before.cutoff = static_cast<std::uint16_t>(number);
        recorder.offer(frame, {depth, color}, before);
    }

    Disk disk;
    std::vector<std::string> complaints; // read when the recorder has finished
    std::vector<std::uint16_t> depth;
    std::vector<std::uint8_t> color;
    Recorder recorder;
};

class ThinningRecorderTest : public RecorderTest {
  protected:
    ThinningRecorderTest() : RecorderTest(3) {}
};

class WaitingRecorderTest : public RecorderTest {
  protected:
    WaitingRecorderTest() : RecorderTest(1, recording::WhenFull::wait) {}
};

} // namespace

TEST_F(RecorderTest, WritesEveryFrameInOrderWhenTheDiskKeepsUp) {
    disk.open();
    for (int number = 0; number < 50; ++number) {
        offer(number);
        while (recorder.written() + buffers <= static_cast<std::uint64_t>(number) + 1)
            std::this_thread::yield();
    }
    recorder.finish();
    ASSERT_EQ(disk.written.size(), 50U);
    for (std::size_t i = 0; i < 50; ++i) {
        EXPECT_EQ(disk.written[i].number, i);
        EXPECT_EQ(disk.written[i].dropped, 0U);
        EXPECT_FALSE(disk.written[i].tracking);
        EXPECT_EQ(disk.depths[i], std::vector<std::uint16_t>(pixels, static_cast<uint16_t>(i)));
        EXPECT_EQ(disk.colors[i], std::vector<std::uint8_t>(pixels * 3, static_cast<uint8_t>(i)));
    }
    EXPECT_EQ(recorder.dropped(), 0U);
    EXPECT_EQ(recorder.written(), 50U);
}

TEST_F(RecorderTest, LeavesFramesOutWhenTheDiskIsSlowAndSaysWhere) {
    offer(0);
    disk.waitUntilBusy();
    for (int number = 1; number < 20; ++number)
        offer(number);
    EXPECT_EQ(recorder.dropped(), 20U - buffers);
    disk.open();
    while (recorder.written() < buffers)
        std::this_thread::yield();
    offer(20);
    offer(21);
    recorder.finish();
    ASSERT_EQ(disk.written.size(), buffers + 2);
    EXPECT_EQ(disk.written[buffers - 1].number, buffers - 1);
    EXPECT_FALSE(disk.written[buffers - 1].tracking);
    EXPECT_EQ(disk.written[buffers].number, 20U);
    EXPECT_EQ(disk.written[buffers].dropped, 16U);
    ASSERT_TRUE(disk.written[buffers].tracking);
    EXPECT_EQ(disk.written[buffers].tracking->cutoff, 20);
    EXPECT_EQ(disk.written[buffers + 1].dropped, 0U);
    EXPECT_FALSE(disk.written[buffers + 1].tracking);
}

TEST_F(WaitingRecorderTest, LeavesNoFrameOutHoweverSlowTheDisk) {
    offer(0);
    disk.waitUntilBusy();
    for (int number = 1; number < static_cast<int>(buffers); ++number)
        offer(number);
    auto offering = std::async(std::launch::async, [this] {
        for (int number = static_cast<int>(buffers); number < 20; ++number)
            offer(number);
    });
    EXPECT_EQ(offering.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    disk.open();
    offering.get();
    recorder.finish();
    EXPECT_EQ(recorder.dropped(), 0U);
    ASSERT_EQ(disk.written.size(), 20U);
    EXPECT_EQ(disk.written.back().number, 19U);
    EXPECT_EQ(disk.written.back().dropped, 0U);
}

TEST_F(WaitingRecorderTest, WaitsForNoDiskThatHasFailed) {
    offer(0);
    disk.waitUntilBusy();
    auto offering = std::async(std::launch::async, [this] {
        for (int number = 1; number < 20; ++number)
            offer(number);
    });
    EXPECT_EQ(offering.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    disk.open(true);
    offering.get();
    recorder.finish();
    EXPECT_TRUE(recorder.failed());
    EXPECT_EQ(complaints, std::vector<std::string>{"the disk is full"});
}

TEST_F(ThinningRecorderTest, TakesTheFirstFrameAndThenOneInSoMany) {
    disk.open();
    for (int number = 0; number < 8; ++number)
        offer(number);
    recorder.finish();
    EXPECT_EQ(recorder.dropped(), 0U);
    ASSERT_EQ(disk.written.size(), 3U);
    EXPECT_EQ(disk.written[0].number, 0U);
    EXPECT_EQ(disk.written[0].dropped, 0U);
    EXPECT_FALSE(disk.written[0].tracking);
    for (const std::size_t later : {1U, 2U}) {
        EXPECT_EQ(disk.written[later].number, 3 * later);
        EXPECT_EQ(disk.written[later].dropped, 2U);
        ASSERT_TRUE(disk.written[later].tracking);
        EXPECT_EQ(disk.written[later].tracking->cutoff, 3 * later);
    }
}

TEST_F(ThinningRecorderTest, CountsAsDroppedOnlyWhatWasWanted) {
    offer(0);
    disk.waitUntilBusy();
    for (std::size_t number = 1; number < 3 * buffers + 6; ++number)
        offer(static_cast<int>(number));
    EXPECT_EQ(recorder.dropped(), 2U);
    disk.open();
    while (recorder.written() < buffers)
        std::this_thread::yield();
    offer(18);
    recorder.finish();
    ASSERT_EQ(disk.written.size(), buffers + 1);
    EXPECT_EQ(disk.written[buffers].number, 18U);
    EXPECT_EQ(disk.written[buffers].dropped, 8U);
}

TEST_F(RecorderTest, TakesFramesWithoutAllocatingAndWithoutWaitingForTheDisk) {
    offer(0);
    disk.waitUntilBusy();
    const int before = countedAllocations();
    for (int number = 1; number < 1000; ++number)
        offer(number);
    EXPECT_EQ(countedAllocations(), before);
    EXPECT_GT(before, 0);
}

TEST_F(RecorderTest, EndsOnceWhenTheDiskIsFull) {
    for (int number = 0; number < 3; ++number)
        offer(number);
    disk.open(true);
    while (!recorder.failed())
        std::this_thread::yield();
    offer(3);
    recorder.finish();
    EXPECT_EQ(complaints, std::vector<std::string>{"the disk is full"});
    EXPECT_EQ(recorder.written(), 0U);
    EXPECT_TRUE(disk.written.empty());
}

TEST_F(RecorderTest, WritesWhatItHasBeforeItEnds) {
    for (int number = 0; number < 3; ++number)
        offer(number);
    std::thread later([this] {
        disk.waitUntilBusy();
        disk.open();
    });
    recorder.finish();
    later.join();
    EXPECT_EQ(disk.written.size(), 3U);
    offer(3);
    EXPECT_EQ(recorder.written(), 3U);
}

TEST(RecorderMemory, IsBounded) {
    const auto bytes = [](std::size_t depthPixels, std::size_t colorBytes) {
        return Recorder::bufferCount(depthPixels, colorBytes) * (depthPixels * 2 + colorBytes);
    };
    EXPECT_EQ(Recorder::bufferCount(640 * 480, 640 * 480 * 3), 64U);
    EXPECT_LE(bytes(640 * 480, 1920 * 1080 * 3), std::size_t{128} * 1024 * 1024);
    EXPECT_GE(Recorder::bufferCount(640 * 480, 1920 * 1080 * 3), 16U);
    EXPECT_EQ(Recorder::bufferCount(8192 * 8192, 0), 4U) << "fewer could not overlap";
}
