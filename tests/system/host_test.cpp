// qvr-host and qvr-demo as a user runs them.
#include "demo/ChildProcess.h"
#include "demo/TouchRecords.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using demo::ChildProcess;
using demo::Command;
using Arguments = std::vector<std::string>;

bool waitUntil(const std::function<bool()>& done, double seconds = 20) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

class HostProgram : public testing::Test {
  protected:
    void SetUp() override {
        fs::copy(fs::path(EXAMPLES) / "simulated" / "QVR_calibration", folder / "QVR_calibration");
    }

    std::string file(const std::string& name) const { return (folder / name).string(); }
    std::string text(const std::string& name) const {
        std::ifstream stream(file(name));
        std::stringstream content;
        content << stream.rdbuf();
        return content.str();
    }
    bool wrote(const std::string& name, const std::string& part) const {
        return text(name).find(part) != std::string::npos;
    }

    std::unique_ptr<ChildProcess> start(const char* program, const Arguments& arguments,
                                        const std::string& output) const {
        return std::make_unique<ChildProcess>(
            Command{program, arguments, {"QVR_VOLUMES=" + folder.string()}, file(output)});
    }
    // Runs to the end; -1 when it does not come.
    int run(const char* program, const Arguments& arguments) const {
        const auto child = start(program, arguments, "out");
        if (!waitUntil([&] { return child->ending().has_value(); }, 60)) {
            return -1;
        }
        return child->ending()->bySignal ? -child->ending()->code : child->ending()->code;
    }

    // A server on the simulated camera; small pictures, so that slow machines keep up.
    std::unique_ptr<ChildProcess> startServer(const std::string& port = "0") {
        auto server =
            start(SERVER_PROGRAM,
                  {"--camera", "simulated", "--port", port, "--no-color", "--keep-running",
                   "--frames", "20000", "--touch-log", file("server.jsonl")},
                  "server");
        const bool listening = waitUntil([&] {
            const std::string output = text("server");
            const std::size_t place = output.find("listening on ");
            const std::size_t end = output.find('\n', place);
            if (place == std::string::npos || end == std::string::npos) {
                return server->ending().has_value();
            }
            address = output.substr(place + 13, end - place - 13);
            return true;
        });
        EXPECT_TRUE(listening && !server->ending()) << text("server");
        return server;
    }
    std::unique_ptr<ChildProcess> startHost(const std::string& name,
                                            const Arguments& more = {}) const {
        Arguments arguments = {"--plain", "--server", address, "--touch-log",
                               file(name + ".jsonl")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return start(HOST_PROGRAM, arguments, name);
    }
    std::size_t frames(const std::string& name) const {
        const auto log = demo::readHostLog(file(name + ".jsonl"));
        return static_cast<std::size_t>(
            std::count_if(log.frames.begin(), log.frames.end(),
                          [](const demo::HostFrame& frame) { return frame.result == 0; }));
    }

    support::TemporaryFolder temporary;
    fs::path folder = temporary.path();
    std::string address;
};

TEST_F(HostProgram, ExplainsItself) {
    EXPECT_EQ(run(HOST_PROGRAM, {"--help"}), 0);
    for (const char* part :
         {"--plugin FILE", "--server HOST:PORT", "--seconds", "--frames", "--save DIR", "--plain",
          "--touch-log FILE", "--map", "--fps", "--check DIR", "--verbose", "Exit codes:"}) {
        EXPECT_TRUE(wrote("out", part)) << part;
    }
    EXPECT_EQ(run(HOST_PROGRAM, {"--version"}), 0);
    EXPECT_TRUE(wrote("out", "qvr-host "));
}

TEST_F(HostProgram, RefusesWrongOptions) {
    for (const Arguments& arguments :
         {Arguments{"--nonsense"}, Arguments{"--server", "host:0"}, Arguments{"--server", ":5"},
          Arguments{"--server", "host:65536"}, Arguments{"--frames", "0"},
          Arguments{"--surface", "1,2"}, Arguments{"--fps", "-1"}}) {
        EXPECT_EQ(run(HOST_PROGRAM, arguments), 2) << arguments[0];
        EXPECT_TRUE(wrote("out", "see qvr-host --help")) << text("out");
    }
}

TEST_F(HostProgram, TellsOfAMissingPlugin) {
    EXPECT_EQ(run(HOST_PROGRAM, {"--plugin", "/nowhere/x.so"}), 3);
    EXPECT_EQ(text("out"), "qvr-host: plug-in not found: /nowhere/x.so; build it (target "
                           "qvr_touch) or name its file with --plugin FILE\n");
}

TEST_F(HostProgram, TellsOfAPluginThatLacksAFunction) {
    EXPECT_EQ(run(HOST_PROGRAM, {"--plugin", INCOMPLETE_PLUGIN}), 3);
    EXPECT_TRUE(wrote("out", " has no function update; ")) << text("out");
}

TEST_F(HostProgram, SaysWhatToDoWithoutAServer) {
    EXPECT_EQ(run(HOST_PROGRAM, {"--server", "127.0.0.1:1", "--seconds", "0.3"}), 4);
    EXPECT_TRUE(wrote("out", "waiting for a camera server at 127.0.0.1:1; start one with "
                             "qvr-server"))
        << text("out");
    EXPECT_TRUE(wrote("out", "qvr-host: no frame came from 127.0.0.1:1; start a server"));
}

TEST_F(HostProgram, TellsOfFilesThatCannotBeWritten) {
    EXPECT_EQ(run(HOST_PROGRAM, {"--touch-log", "/nowhere/log"}), 5);
    EXPECT_EQ(run(HOST_PROGRAM, {"--plugin", SCRIPTED_PLUGIN, "--server", "x:2", "--frames", "1",
                                 "--save", "/proc/nowhere"}),
              5);
}

TEST_F(HostProgram, LeavesOnATerminationSignalWhileTheServerStalls) {
    const auto host = start(HOST_PROGRAM, {"--plugin", SCRIPTED_PLUGIN, "--server", "x:3"}, "out");
    ASSERT_TRUE(waitUntil([&] { return wrote("out", "connected to x:3"); }));
    const demo::Ending ending = host->end(); // asks with SIGTERM first
    EXPECT_EQ(ending.describe(), "exit code 0");
    EXPECT_TRUE(wrote("out", "1 frames, 3 touches"));
}

TEST_F(HostProgram, TwoHostsGetTheSameTouches) {
    const auto server = startServer();
    const auto one = startHost("one");
    const auto two = startHost("two");
    const auto touched = [&](const std::string& name) { return wrote(name, "down  slot"); };
    ASSERT_TRUE(waitUntil([&] { return touched("one") && touched("two"); }, 40)) << text("one");
    ASSERT_TRUE(waitUntil([&] { return frames("one") >= 40 && frames("two") >= 40; }, 40));
    one->end();
    two->end();
    server->end();
    // Each may skip frames, but what it holds is what the server sent.
    const auto sent = demo::readServerLog(file("server.jsonl")).frames;
    for (const char* name : {"one", "two"}) {
        const auto received = demo::readHostLog(file(std::string(name) + ".jsonl")).frames;
        std::size_t touches = 0;
        for (const demo::HostFrame& frame : received) {
            touches += frame.touches.size();
            for (const demo::Touch& touch : frame.touches) {
                EXPECT_TRUE(std::any_of(sent.begin(), sent.end(), [&](const auto& each) {
                    return std::any_of(each.touches.begin(), each.touches.end(),
                                       [&](const demo::ServerTouch& other) {
                                           return other.touch.slot == touch.slot &&
                                                  other.touch.position == touch.position;
                                       });
                })) << name;
            }
        }
        EXPECT_GT(touches, 0u) << name;
    }
}

TEST_F(HostProgram, IsServedAgainAfterItWasKilled) {
    const auto server = startServer();
    {
        const auto host = startHost("first");
        ASSERT_TRUE(waitUntil([&] { return frames("first") >= 3; }));
        kill(host->id(), SIGKILL);
    }
    const auto again = startHost("second", {"--frames", "5"});
    ASSERT_TRUE(waitUntil([&] { return again->ending().has_value(); }, 30)) << text("second");
    EXPECT_EQ(again->ending()->describe(), "exit code 0");
    EXPECT_FALSE(server->ending());
}

TEST_F(HostProgram, SurvivesARestartedServer) {
    auto server = startServer();
    const auto host = startHost("host");
    ASSERT_TRUE(waitUntil([&] { return frames("host") >= 3; }));
    kill(server->id(), SIGKILL);
    server->end();
    ASSERT_TRUE(waitUntil([&] { return wrote("host", "connection lost, trying again"); }));
    server = startServer(address.substr(address.rfind(':') + 1));
    const std::size_t before = frames("host");
    ASSERT_TRUE(waitUntil([&] { return frames("host") >= before + 10; })) << text("host");
    EXPECT_FALSE(host->ending());
    // The new stream is read in step: its header is not taken for touches.
    ASSERT_TRUE(waitUntil([&] { return wrote("host", "down  slot"); }, 40));
    for (const demo::HostFrame& frame : demo::readHostLog(file("host.jsonl")).frames) {
        for (const demo::Touch& touch : frame.touches) {
            EXPECT_TRUE(touch.position[0] > -100 && touch.position[0] < 500) << touch.position[0];
        }
    }
    EXPECT_EQ(host->end().describe(), "exit code 0");
}

// The connection stays open, but nothing comes until the process goes on.
TEST_F(HostProgram, GoesOnAfterAServerThatHungForAWhile) {
    const auto server = startServer();
    const auto host = startHost("host");
    ASSERT_TRUE(waitUntil([&] { return frames("host") >= 3; }));
    kill(server->id(), SIGSTOP);
    EXPECT_TRUE(waitUntil([&] { return wrote("host", "connection lost, trying again"); }));
    kill(server->id(), SIGCONT);
    const std::size_t before = frames("host");
    EXPECT_TRUE(waitUntil([&] { return frames("host") >= before + 10; })) << text("host");
    EXPECT_EQ(host->end().describe(), "exit code 0");
}

// The live picture needs a terminal, which tmux plays.
class HostTerminal : public HostProgram {
  protected:
    void SetUp() override {
        HostProgram::SetUp();
        if (run("/bin/sh", {"-c", "command -v tmux"}) != 0) {
            GTEST_SKIP() << "tmux is not installed";
        }
        tmux("new-session -d -x 110 -y 30 \"env LC_ALL=C.UTF-8 sh\"");
    }
    void TearDown() override {
        tmux("kill-server");
        HostProgram::TearDown();
    }
    void tmux(const std::string& command) const {
        run("/bin/sh", {"-c", "tmux -f /dev/null -S '" + file("socket") + "' " + command});
    }
    std::string screen() const {
        tmux("capture-pane -p > '" + file("screen") + "'");
        return text("screen");
    }
    bool shows(const std::string& part) const {
        return waitUntil([&] { return screen().find(part) != std::string::npos; }, 10);
    }
    void startInTerminal(const std::string& arguments) const {
        tmux("send-keys \"clear; " HOST_PROGRAM " " + arguments + "; echo code \\$?\" Enter");
    }
};

TEST_F(HostTerminal, DrawsTouchesAndGivesTheTerminalBack) {
    startInTerminal("--plugin " SCRIPTED_PLUGIN " --server x:2");
    EXPECT_TRUE(shows("connected to x:2")) << screen();
    EXPECT_TRUE(shows("3 touches")) << screen();
    EXPECT_TRUE(shows("(3)")) << screen();
    EXPECT_TRUE(shows("slot        x         y         z       age")) << screen();
    tmux("resize-window -x 60 -y 16");
    EXPECT_TRUE(waitUntil([&] {
        const std::string now = screen();
        return now.find("slot        x") == std::string::npos &&
               now.find("q leave") != std::string::npos;
    })) << screen();
    tmux("send-keys q");
    EXPECT_TRUE(shows("code 0")) << screen();
    EXPECT_EQ(screen().find("q leave"), std::string::npos);
}

TEST_F(HostTerminal, SaysWhatToDoWithoutAServer) {
    startInTerminal("--server 127.0.0.1:1 --seconds 2");
    EXPECT_TRUE(shows("No camera server answers at")) << screen();
    EXPECT_TRUE(shows("qvr-server --camera simulated")) << screen();
    EXPECT_TRUE(shows("code 4")) << screen();
}

TEST_F(HostTerminal, LeavesOnControlCWhileTheServerStalls) {
    startInTerminal("--plugin " SCRIPTED_PLUGIN " --server x:3");
    EXPECT_TRUE(shows("3 touches")) << screen();
    tmux("send-keys C-c");
    EXPECT_TRUE(shows("1 frames, 3 touches")) << screen();
}

class DemoProgram : public HostProgram {
  protected:
    int runDemo(Arguments arguments) const {
        const Arguments usual = {"--examples", std::string(EXAMPLES) + "/simulated", "--save",
                                 file("pictures")};
        arguments.insert(arguments.end(), usual.begin(), usual.end());
        return run(DEMO_PROGRAM, arguments);
    }
};

TEST_F(DemoProgram, FindsTheTouchesOfTheSimulatedScene) {
    // Unoptimised and instrumented builds see fewer frames, so that smoothing lags further behind.
    EXPECT_EQ(runDemo({"--tolerance", "25"}), 0) << text("out");
    EXPECT_TRUE(wrote("out", "frames received")) << text("out");
    EXPECT_TRUE(wrote("out", "All is well."));
    for (const char* name : {"touches.png", "depth.png", "processed.png", "color.png"}) {
        EXPECT_TRUE(fs::exists(folder / "pictures" / name)) << name;
    }
}

TEST_F(DemoProgram, FailsWhenTouchesAreOffByMoreThanTheTolerance) {
    EXPECT_EQ(runDemo({"--tolerance", "0.001", "--seconds", "3"}), 1) << text("out");
    EXPECT_TRUE(wrote("out", "The demo failed: touches are off by ")) << text("out");
}

TEST_F(DemoProgram, FailsWithTheServersReason) {
    EXPECT_EQ(runDemo({"--camera", "images:/nowhere"}), 1);
    EXPECT_TRUE(wrote("out", "The demo failed: the camera server ended at once (exit code "))
        << text("out");
    EXPECT_TRUE(wrote("out", "/nowhere"));
}

TEST_F(DemoProgram, FailsWithoutSettings) {
    EXPECT_EQ(run(DEMO_PROGRAM, {"--examples", "/nowhere"}), 1);
    EXPECT_TRUE(wrote("out", "The demo failed: no settings (*.json) in /nowhere")) << text("out");
}

TEST_F(DemoProgram, RefusesWrongOptions) {
    EXPECT_EQ(run(DEMO_PROGRAM, {"--seconds", "0"}), 2);
    EXPECT_EQ(run(DEMO_PROGRAM, {"--nonsense"}), 2);
    EXPECT_EQ(run(DEMO_PROGRAM, {"--help"}), 0);
    EXPECT_TRUE(wrote("out", "Exit codes:"));
}

} // namespace
