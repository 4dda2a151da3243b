// What goes to files and pipes: the plain view, the touch log, the plug-in's messages.
#include "host/PlainView.h"
#include "host/PluginMessages.h"
#include "host/TouchLog.h"

#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace {

using host::Connection;
using host::HostState;
using host::PluginMessages;
using host::Touch;
using host::TouchChange;
using host::TouchLog;

class PlainViewLines : public testing::Test {
  protected:
    void SetUp() override {
        state.server = "127.0.0.1:27016";
        file.reset(std::tmpfile());
        ASSERT_NE(file, nullptr);
        view = std::make_unique<host::PlainView>(file.get());
    }

    // What was written since the last call.
    std::string written() {
        std::fseek(file.get(), read, SEEK_SET);
        std::string text;
        for (int letter = std::fgetc(file.get()); letter != EOF; letter = std::fgetc(file.get())) {
            text += static_cast<char>(letter);
        }
        read += static_cast<long>(text.size());
        std::fseek(file.get(), 0, SEEK_END);
        return text;
    }

    struct Close {
        void operator()(std::FILE* each) const { std::fclose(each); }
    };
    std::unique_ptr<std::FILE, Close> file;
    std::unique_ptr<host::PlainView> view;
    HostState state;
    long read = 0;
};

TEST_F(PlainViewLines, SayWhatToDoWithoutAServer) {
    view->show(state);
    EXPECT_EQ(written(), "    0.000 s  waiting for a camera server at 127.0.0.1:27016; start one "
                         "with qvr-server (--camera simulated needs no camera)\n");
    state.now = 1;
    view->show(state);
    EXPECT_EQ(written(), "");
}

TEST_F(PlainViewLines, TellEachChangeOnce) {
    state.connection = Connection::connected;
    state.now = 1.5;
    state.changes = {{TouchChange::Kind::down, {3, 1, 2.5f, -3}}};
    view->show(state);
    EXPECT_EQ(written(), "    1.500 s  connected to 127.0.0.1:27016\n"
                         "    1.500 s  down  slot 3  x 1.000  y 2.500  z -3.000\n");
    state.now = 2;
    state.changes = {{TouchChange::Kind::move, {3, 9, 2.5f, -3}}};
    view->show(state);
    EXPECT_EQ(written(), "    2.000 s  move  slot 3  x 9.000  y 2.500  z -3.000\n");
    state.changes.clear();
    view->show(state);
    EXPECT_EQ(written(), "");
}

TEST_F(PlainViewLines, LiftTouchesBeforeTheyTellOfTheLoss) {
    state.connection = Connection::connected;
    view->show(state);
    written();
    state.connection = Connection::lost;
    state.now = 3;
    state.changes = {{TouchChange::Kind::up, {3, 9, 2.5f, -3}}};
    view->show(state);
    EXPECT_EQ(written(), "    3.000 s  up    slot 3  x 9.000  y 2.500  z -3.000\n"
                         "    3.000 s  connection lost, trying again\n");
}

TEST_F(PlainViewLines, PassOnAMessageOnce) {
    view->show(state);
    written();
    state.message = "WARNING: something";
    view->show(state);
    view->show(state);
    EXPECT_EQ(written(), "    0.000 s  WARNING: something\n");
}

TEST(TouchLogLine, HoldsFrameTimeResultAndTouches) {
    HostState state;
    state.frames = 12;
    state.now = 1.25;
    state.touches = {{0, 0.1f, -2, 4532.4f}, {4, 1, 2, 3}};
    EXPECT_EQ(TouchLog::line(state),
              R"({"frame":12,"time":1.250000,"result":0,"touches":[)"
              R"({"slot":0,"x":0.100000001,"y":-2,"z":4532.3999},{"slot":4,"x":1,"y":2,"z":3}]})");
}

TEST(TouchLogLine, TellsOfFailuresAndOfWhatIsNoNumber) {
    HostState state;
    state.result = -101;
    EXPECT_EQ(TouchLog::line(state), R"({"frame":0,"time":0.000000,"result":-101,"touches":[]})");
    state.touches = {{0, std::numeric_limits<float>::quiet_NaN(), 0, 0}};
    EXPECT_NE(TouchLog::line(state).find("\"x\":null"), std::string::npos);
}

TEST(TouchLogFile, SaysWhyItCannotBeWritten) {
    std::string problem;
    EXPECT_EQ(TouchLog::open("/nowhere/log", problem), nullptr);
    EXPECT_EQ(problem, "cannot write the touch log /nowhere/log: No such file or directory");
}

class Messages : public testing::Test {
  protected:
    void SetUp() override {
        host::PluginFunctions plugin;
        plugin.registerDebugCallback = [](void (*)(const char*)) {};
        PluginMessages::attach(plugin, false);
    }
};

TEST_F(Messages, ShowWarningsAndErrorsInOneLine) {
    PluginMessages::receive("Connecting to localhost:27016");
    EXPECT_EQ(PluginMessages::notable(), "");
    PluginMessages::receive("Could not read data from: a\nFile appears empty.\n");
    EXPECT_EQ(PluginMessages::notable(), "Could not read data from: a File appears empty.");
    PluginMessages::receive(nullptr);
}

TEST_F(Messages, ShowATextTheFirstTimeOnly) {
    PluginMessages::receive("WARNING: one");
    PluginMessages::receive("WARNING: two");
    PluginMessages::receive("WARNING: one");
    EXPECT_EQ(PluginMessages::notable(), "WARNING: two");
}

TEST_F(Messages, LeaveOutWhatEveryAttemptRepeats) {
    PluginMessages::receive("ERROR!  The networkClient could not connect!  Returned: -1.000000");
    PluginMessages::receive("Unable to connect to server");
    EXPECT_EQ(PluginMessages::notable(), "");
}

} // namespace
