#include "host/HostLoop.h"
#include "host/PluginMessages.h"

#include <csignal>
#include <memory>

#include <gtest/gtest.h>

namespace {

using host::Connection;
using host::HostState;

// The loop on the scripted plug-in, whose script the port chooses.
class HostLoopScripts : public testing::Test {
  protected:
    void SetUp() override {
        std::string problem;
        plugin = host::Plugin::load(SCRIPTED_PLUGIN, problem);
        ASSERT_NE(plugin, nullptr) << problem;
        host::PluginMessages::attach(plugin->functions(), false);
        options.updatesPerSecond = 1000;
    }

    bool run(unsigned port, std::optional<double> seconds = 20) {
        options.server = host::ServerAddress{"server", port};
        host::StopSwitch stop(seconds, [] { return true; });
        host::HostLoop loop(plugin->functions(), options, stop,
                            [this](const HostState& state, bool firstOfConnection) {
                                states.push_back(state);
                                connections += firstOfConnection ? 1 : 0;
                            });
        return loop.run();
    }

    std::size_t failures() const {
        std::size_t count = 0;
        for (const HostState& state : states) {
            count += state.result < 0 ? 1 : 0;
        }
        return count;
    }

    std::unique_ptr<host::Plugin> plugin;
    host::LoopOptions options;
    std::vector<HostState> states;
    int connections = 0;
};

TEST_F(HostLoopScripts, TellsTheStateBeforeTheFirstUpdate) {
    options.frames = 1;
    EXPECT_TRUE(run(2));
    ASSERT_EQ(states.size(), 2u);
    EXPECT_EQ(states[0].connection, Connection::waiting);
    EXPECT_EQ(states[0].server, "server:2");
    EXPECT_EQ(states[0].frames, 0u);
}

TEST_F(HostLoopScripts, ReadsTheSlotsThatAreInUse) {
    options.frames = 3;
    EXPECT_TRUE(run(2));
    const HostState& last = states.back();
    EXPECT_EQ(last.connection, Connection::connected);
    EXPECT_EQ(last.frames, 3u);
    ASSERT_EQ(last.touches.size(), 3u);
    EXPECT_EQ(last.touches[0].slot, 1);
    EXPECT_EQ(last.touches[1].slot, 3);
    EXPECT_EQ(last.touches[2].slot, 5);
    EXPECT_FLOAT_EQ(last.touches[0].z, 600);
    EXPECT_EQ(last.depthWidth, 320);
    EXPECT_EQ(last.depthHeight, 240);
    EXPECT_GT(last.frameRate, 1);
}

TEST_F(HostLoopScripts, ShutsTheClientDown) {
    options.frames = 1;
    run(2);
    EXPECT_FALSE(plugin->functions().hasDepthCamera());
}

TEST_F(HostLoopScripts, GivesUpWaitingForTheFirstFrame) {
    options.frames = 1;
    options.firstFrameSeconds = 0.3;
    EXPECT_FALSE(run(1));
    EXPECT_EQ(states.back().connection, Connection::waiting);
    EXPECT_EQ(states.back().result, -2);
}

TEST_F(HostLoopScripts, RetriesAboutTwiceASecondInTheEnd) {
    EXPECT_FALSE(run(1, 2.0));
    // 50, 100, 200, 400 and then 500 ms apart.
    EXPECT_GE(failures(), 4u);
    EXPECT_LE(failures(), 7u);
}

TEST_F(HostLoopScripts, LeavesOnTimeWhileAFrameDoesNotCome) {
    EXPECT_TRUE(run(3, 0.5));
    EXPECT_EQ(states.back().frames, 1u);
    EXPECT_EQ(failures(), 0u);
    EXPECT_GE(states.back().live.size(), 1u);
}

class HostLoopFailures : public HostLoopScripts, public testing::WithParamInterface<int> {};

TEST_P(HostLoopFailures, LiftAllTouchesAndTheLoopReadsOn) {
    options.frames = 15;
    EXPECT_TRUE(run(static_cast<unsigned>(100 - GetParam())));
    EXPECT_EQ(states.back().frames, 15u);
    EXPECT_EQ(connections, 2);
    ASSERT_EQ(failures(), 1u);
    const HostState& failed = states[11];
    EXPECT_EQ(failed.result, GetParam());
    EXPECT_EQ(failed.connection, Connection::lost);
    EXPECT_TRUE(failed.touches.empty());
    EXPECT_TRUE(failed.live.empty());
    ASSERT_EQ(failed.changes.size(), 3u);
    for (const host::TouchChange& change : failed.changes) {
        EXPECT_EQ(change.kind, host::TouchChange::Kind::up);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryResult, HostLoopFailures, testing::Values(-1, -2, -3, -100, -101));

TEST_F(HostLoopScripts, TriesAgainAfterAHeaderThatItDoesNotUnderstand) {
    options.frames = 2;
    EXPECT_TRUE(run(5));
    EXPECT_EQ(states[1].result, -3);
    EXPECT_EQ(states[1].frames, 0u);
    EXPECT_EQ(states[1].connection, Connection::waiting);
    EXPECT_EQ(states.back().frames, 2u);
    EXPECT_EQ(connections, 1);
}

TEST_F(HostLoopScripts, LoadsTheProjectionMapWhenAskedTo) {
    options.frames = 2;
    run(2);
    EXPECT_EQ(states.back().message, "");
    options.projectionMap = 7;
    run(2);
    EXPECT_EQ(states.back().message, "WARNING: asked for projection map 7");
}

TEST_F(HostLoopScripts, KeepsToTheUpdateRate) {
    options.updatesPerSecond = 20;
    run(2, 1.0);
    EXPECT_GE(states.back().frames, 5u);
    EXPECT_LE(states.back().frames, 21u);
}

TEST(StopSwitch, StopsOnATerminationSignal) {
    host::StopSwitch stop(std::nullopt, [] { return true; });
    EXPECT_FALSE(stop.stopAsked());
    kill(getpid(), SIGTERM);
    stop.pause(20);
    EXPECT_TRUE(stop.stopAsked());
}

TEST(StopSwitch, StopsWhenTheUserLeaves) {
    host::StopSwitch stop(std::nullopt, [] { return false; });
    stop.pause(20);
    EXPECT_TRUE(stop.stopAsked());
}

TEST(StopSwitch, PausesNoLongerThanAsked) {
    host::StopSwitch stop(std::nullopt, [] { return true; });
    stop.pause(0.01);
    EXPECT_FALSE(stop.stopAsked());
    stop.finish();
}

} // namespace
