// Which frames make a pair, and who waits for whom.
#include "realsense/sdk/SoftwareCamera.h"
#include "sdk/frame_mailbox.h"

#include <chrono>
#include <future>

#include <gtest/gtest.h>

using namespace camera_test;
using namespace std::chrono_literals;
using camera::sdk::FrameMailbox;
using Outcome = FrameMailbox::Outcome;

namespace {

constexpr std::chrono::nanoseconds patiently = 1h;

class FrameMailboxTest : public testing::Test {
  protected:
    FrameMailboxTest() {
        sensors = device.device().query_sensors();
        sensors[0].open(device.depthProfile());
        sensors[1].open(device.colorProfile());
    }
    ~FrameMailboxTest() override {
        mailbox->close();
        for (auto& sensor : sensors) {
            sensor.stop();
            sensor.close();
        }
    }

    void open(camera::EnabledStreams enabled = {true, true}, bool lossless = false,
              std::chrono::nanoseconds patience = patiently) {
        mailbox = std::make_shared<FrameMailbox>(enabled, patience, lossless);
        mailbox->open();
        mailbox->holdUp();
        for (auto& sensor : sensors) {
            sensor.start([this](rs2::frame frame) { mailbox->put(std::move(frame)); });
        }
    }
    void depth(std::uint64_t number) {
        device.injectDepth(number, std::vector<std::uint16_t>(8 * 6, 1));
    }
    void color(std::uint64_t number) {
        device.injectColor(number, std::vector<std::uint8_t>(16 * 10 * 3, 1));
    }

    // The numbers of the next pair; -1 for a frame that is missing.
    std::pair<int, int> next() {
        EXPECT_EQ(take(1min), Outcome::Frame);
        const auto number = [](const rs2::frame& frame) {
            return frame ? static_cast<int>(frame.get_frame_number()) : -1;
        };
        return {number(mailbox->depth()), number(mailbox->color())};
    }
    Outcome take(std::chrono::nanoseconds longest) {
        return mailbox->take(std::chrono::steady_clock::now() + longest);
    }

    SoftwareScript script;
    SoftwareDevice device{script};
    std::vector<rs2::sensor> sensors;
    std::shared_ptr<FrameMailbox> mailbox;
};

using Pair = std::pair<int, int>;

TEST_F(FrameMailboxTest, PairsFramesOfOneTime) {
    open();
    for (std::uint64_t number = 0; number < 3; ++number) {
        depth(number);
        color(number);
    }
    EXPECT_EQ(next(), Pair(0, 0));
    EXPECT_EQ(next(), Pair(1, 1));
    EXPECT_EQ(next(), Pair(2, 2));
    EXPECT_EQ(take(0s), Outcome::NoFrame);
}

TEST_F(FrameMailboxTest, PairsWithTheNearestFrameAndKeepsItForTheNextWhenItIsNearest) {
    open();
    color(0);
    color(4);
    for (std::uint64_t number = 1; number < 5; ++number) {
        depth(number);
    }
    EXPECT_EQ(next(), Pair(1, 0));
    EXPECT_EQ(next(), Pair(2, 4)) << "of two that are equally near the newer one";
    EXPECT_EQ(next(), Pair(3, 4));
    EXPECT_EQ(next(), Pair(4, 4));
}

TEST_F(FrameMailboxTest, WaitsForTheOtherFrameOfAPair) {
    open();
    depth(0);
    auto pair = std::async(std::launch::async, [&] { return next(); });
    EXPECT_EQ(pair.wait_for(50ms), std::future_status::timeout);
    color(0);
    EXPECT_EQ(pair.get(), Pair(0, 0));
}

TEST_F(FrameMailboxTest, GoesOnWithoutTheOtherFrameWhenItDoesNotComeInTime) {
    open({true, true}, false, 20ms);
    color(0);
    depth(0);
    EXPECT_EQ(next(), Pair(0, 0));
    depth(1);
    EXPECT_EQ(next(), Pair(1, 0));
}

TEST_F(FrameMailboxTest, GivesTheFirstPairAllTheTimeThereIs) {
    open({true, true}, false, 0ns);
    depth(0);
    EXPECT_EQ(take(50ms), Outcome::Frame);
    EXPECT_FALSE(mailbox->color()) << "but no more than that";
}

TEST_F(FrameMailboxTest, DropsTheOldestFramesThatNobodyTakes) {
    open();
    for (std::uint64_t number = 0; number < 20; ++number) {
        depth(number);
        color(number);
    }
    EXPECT_EQ(next(), Pair(16, 16));
    EXPECT_EQ(next(), Pair(17, 17));
    EXPECT_EQ(next(), Pair(18, 18));
    EXPECT_EQ(next(), Pair(19, 19));
    EXPECT_EQ(take(0s), Outcome::NoFrame);
}

TEST_F(FrameMailboxTest, KeepsEveryFrameWhenLossless) {
    open({true, true}, true);
    auto feeder = std::async(std::launch::async, [&] {
        for (std::uint64_t number = 0; number < 50; ++number) {
            color(number);
            depth(number);
        }
        mailbox->end();
    });
    for (int number = 0; number < 50; ++number) {
        EXPECT_EQ(next(), Pair(number, number));
    }
    EXPECT_EQ(take(1min), Outcome::End);
    feeder.get();
}

TEST_F(FrameMailboxTest, HoldsNobodyUpAndKeepsEveryFrameWhileTheDeviceStarts) {
    open({true, true}, true);
    mailbox->close();
    mailbox = std::make_shared<FrameMailbox>(camera::EnabledStreams{true, true}, patiently, true);
    mailbox->open();
    for (std::uint64_t number = 0; number < 20; ++number) {
        color(number);
        depth(number);
    }
    mailbox->holdUp();
    auto feeder = std::async(std::launch::async, [&] {
        color(20);
        depth(20);
    });
    EXPECT_EQ(feeder.wait_for(50ms), std::future_status::timeout);
    for (int number = 0; number <= 20; ++number) {
        EXPECT_EQ(next(), Pair(number, number));
    }
    feeder.get();
}

TEST_F(FrameMailboxTest, DoesNotWaitForWhatIsHeldUpBehindDepth) {
    open({true, true}, true);
    // Colour comes behind the depth frames that the mailbox does not take yet.
    auto feeder = std::async(std::launch::async, [&] {
        for (std::uint64_t number = 0; number < 6; ++number) {
            depth(number);
        }
        color(5);
    });
    EXPECT_EQ(next(), Pair(0, -1));
    EXPECT_EQ(next().first, 1);
    feeder.get();
}

TEST_F(FrameMailboxTest, LetsGoOfThoseWhoWaitWhenItIsClosed) {
    open({true, true}, true);
    auto feeder = std::async(std::launch::async, [&] {
        for (std::uint64_t number = 0; number < 20; ++number) {
            depth(number);
        }
    });
    EXPECT_EQ(feeder.wait_for(50ms), std::future_status::timeout);
    mailbox->close();
    feeder.get();
    EXPECT_EQ(take(0s), Outcome::NoFrame);
}

TEST_F(FrameMailboxTest, DeliversWhatCameBeforeTheEnd) {
    open();
    depth(0);
    mailbox->end();
    EXPECT_EQ(next(), Pair(0, -1));
    EXPECT_EQ(take(1min), Outcome::End);
}

TEST_F(FrameMailboxTest, DropsWhatComesBeforeItIsOpen) {
    open();
    mailbox->close();
    depth(0);
    color(0);
    mailbox->open();
    depth(1);
    color(1);
    EXPECT_EQ(next(), Pair(1, 1));
}

TEST_F(FrameMailboxTest, LeadsWithTheOnlyStream) {
    open({false, true});
    color(3);
    EXPECT_EQ(next(), Pair(-1, 3));
    color(4);
    EXPECT_EQ(next(), Pair(-1, 4));
}

} // namespace
