// The camera server while its camera breaks, and while it is told to end: the real program on a
// simulated camera that breaks as ordered.
#include "server/RawClient.h"
#include "support/TemporaryFolder.h"
#include "system/ServerProcess.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using support::Bytes;
using support::RawClient;
using support::ServerProcess;
using testing::ElementsAre;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

namespace {

class ServerFaults : public testing::Test {
  protected:
    ServerFaults() {
        folder.write("QVR_calibration/touch.json",
                     R"({"colorResX": 160, "colorResY": 120, "depthResX": 160, "depthResY": 120,)"
                     R"( "nearClipMeters": 0.2, "farClipMeters": 0.4})");
    }

    static std::vector<std::string> withCamera(const std::string& keys,
                                               const std::vector<std::string>& more = {}) {
        std::vector<std::string> all = {"--camera", "simulated:" + keys, "--keep-running"};
        if (more.empty() || more[0] != "--port")
            all.insert(all.end(), {"--port", "0"});
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    // What it said about its camera and its clients, without the times.
    static std::vector<std::string> story(const ServerProcess& server) {
        const std::string beginning = "qvr-server: ";
        std::vector<std::string> lines;
        std::istringstream errors(server.errors());
        for (std::string line; std::getline(errors, line);)
            if (line.starts_with(beginning))
                lines.push_back(line.substr(beginning.size(), line.find('(') - beginning.size()));
        return lines;
    }

    // Reads frames until `condition` holds; false when that takes 20 seconds.
    static bool readUntil(RawClient& client, const std::function<bool()>& condition) {
        for (const auto end = Clock::now() + 60s; Clock::now() < end;) {
            client.readFrame();
            if (condition())
                return true;
        }
        return false;
    }

    static bool endsSoon(ServerProcess& server) {
        const auto start = Clock::now();
        const bool clean = server.waitForEnd() == 0;
        EXPECT_LT(Clock::now() - start, 8s);
        return clean;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            names.insert(entry.path());
        return names;
    }

    support::TemporaryFolder folder;
};

const std::string lost = "WARNING: the camera is lost ";
const auto back = testing::StartsWith("the camera is back after ");
const std::string changed =
    "the images have changed; disconnecting all clients so that they ask anew";

} // namespace

TEST_F(ServerFaults, KeepsItsClientsThroughEveryLossAndSaysEachOnce) {
    ServerProcess server(folder.path(), withCamera("fault=vanish@30+fail@60+stall@90,lasting=1.5"));
    RawClient client(server.waitForPort());
    client.readHeader();
    EXPECT_TRUE(readUntil(client, [&] { return story(server).size() == 6; }));
    for (int i = 0; i < 60; ++i)
        client.readFrame();
    EXPECT_THAT(story(server), ElementsAre(lost, back, lost, back, lost, back));
    server.signal(SIGTERM);
    EXPECT_TRUE(endsSoon(server));
}

TEST_F(ServerFaults, OutlastsAWaitThatTheCameraLibraryGivesUp) {
    ServerProcess server(folder.path(), withCamera("fault=stall@30,lasting=6"));
    RawClient client(server.waitForPort());
    client.readHeader();
    ASSERT_TRUE(readUntil(client, [&] { return story(server).size() == 2; }));
    EXPECT_THAT(story(server), ElementsAre(lost, back));
    EXPECT_THAT(server.errors(), testing::ContainsRegex("is back after [6-9]\\.[0-9] s"));
}

TEST_F(ServerFaults, HasClientsAskAnewWhenTheCameraComesBackSmaller) {
    ServerProcess server(folder.path(), withCamera("fault=shrink@30,lasting=2"));
    const std::uint16_t port = server.waitForPort();
    for (const unsigned width : {160U, 80U}) {
        RawClient client(port);
        EXPECT_EQ(client.readHeader().depthX, width);
        EXPECT_EQ(client.readFrame().size(), 280U + width * width * 3U / 4U * 2U);
        EXPECT_TRUE(client.waitUntilClosed());
    }
    RawClient client(port);
    EXPECT_EQ(client.readHeader().depthX, 160U);
    EXPECT_TRUE(readUntil(client, [&] { return story(server).size() == 6; }));
    EXPECT_THAT(story(server), ElementsAre(lost, changed, back, lost, changed, back));
}

TEST_F(ServerFaults, EndsWhileItRetries) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        ServerProcess server(folder.path(), withCamera("fault=vanish@1,lasting=600"));
        RawClient client(server.waitForPort());
        client.readHeader();
        ASSERT_TRUE(readUntil(client, [&] { return !story(server).empty(); }));
        server.signal(number);
        EXPECT_TRUE(endsSoon(server)) << number;
        EXPECT_TRUE(client.waitUntilClosed());
    }
}

TEST_F(ServerFaults, EndsWhileTheCameraHangs) {
    ServerProcess server(folder.path(), withCamera("fault=stall@1,lasting=600"));
    RawClient client(server.waitForPort());
    client.readHeader();
    ASSERT_TRUE(readUntil(client, [&] { return !story(server).empty(); }));
    server.signal(SIGTERM);
    EXPECT_TRUE(endsSoon(server));
    EXPECT_TRUE(client.waitUntilClosed());
}

// At whatever moment of its start the signal comes, the port is free for the next one.
TEST_F(ServerFaults, LeavesNothingBehindWhenEndedWhileItStarts) {
    std::uint16_t port = 0;
    {
        ServerProcess first(folder.path(), withCamera(""));
        port = first.waitForPort();
    }
    const std::set<std::string> before = files();
    const auto arguments = withCamera("", {"--port", std::to_string(port)});
    for (auto delay = 0ms; delay <= 120ms; delay += 8ms) {
        ServerProcess server(folder.path(), arguments);
        std::this_thread::sleep_for(delay);
        server.signal(SIGTERM);
        const std::optional<int> code = server.waitForEnd();
        EXPECT_TRUE(code == 0 || server.endedBy(SIGTERM)) << delay.count() << server.errors();
    }
    EXPECT_EQ(files(), before);
    ServerProcess last(folder.path(), arguments);
    EXPECT_EQ(last.waitForPort(), port);
}

TEST_F(ServerFaults, LeavesNothingBehindWhenEndedWhileItServes) {
    const std::string log = folder.write("touches.jsonl", "");
    const std::set<std::string> before = files();
    std::string port = "0";
    for (int round = 0; round < 6; ++round) {
        ServerProcess server(
            folder.path(),
            withCamera("pace=off", {"--port", port, "--color", "--processed", "--touch-log", log}));
        const std::uint16_t number = server.waitForPort();
        port = std::to_string(number);
        RawClient stalled(number, 4096);
        RawClient reader(number);
        reader.readHeader();
        for (int i = 0; i < 3 + round; ++i)
            reader.readFrame();
        server.signal(round % 2 == 0 ? SIGINT : SIGTERM);
        EXPECT_TRUE(endsSoon(server));
        EXPECT_TRUE(reader.waitUntilClosed());
        std::ifstream file(log);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_TRUE(text.ends_with("}\n"));
    }
    EXPECT_EQ(files(), before);
}

TEST_F(ServerFaults, TakesAHangupForTheWishToEndAndABrokenPipeForNothing) {
    ServerProcess server(folder.path(), withCamera(""));
    RawClient client(server.waitForPort());
    client.readHeader();
    client.readFrame();
    server.signal(SIGPIPE);
    for (int i = 0; i < 30; ++i)
        client.readFrame();
    EXPECT_TRUE(server.running());
    server.signal(SIGHUP);
    EXPECT_TRUE(endsSoon(server));
}
