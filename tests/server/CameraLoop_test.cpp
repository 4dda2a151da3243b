#include "CameraLoop.h"
#include "ServerLog.h"
#include "StopRequest.h"
#include "TouchLog.h"
#include "server/CameraFixture.h"
#include "server/RawClient.h"
#include "server/RunningBroadcaster.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>

using namespace std::chrono_literals;
using server::CameraLoop;
using server::Options;
using support::FakeCamera;
using support::RawClient;
using support::RunningBroadcaster;
using testing::HasSubstr;
using testing::Not;
using Clock = std::chrono::steady_clock;

namespace {

server::BroadcasterSettings networkSettings() {
    server::BroadcasterSettings settings;
    settings.cameraTimeout = CameraLoop::cameraTimeout;
    return settings;
}

// A client that sees touches only, raw.
Options touchesOnly() {
    Options options;
    options.depth = false;
    options.rawTouches = true;
    return options;
}

// The loop on a thread of its own, with everything around it but the program.
class Running {
  public:
    explicit Running(const Options& options, server::TouchLog* touchLog = nullptr)
        : network(networkSettings()), options_(options), loop_(options_, stop, touchLog) {
        loop_.open();
        thread_ = std::thread([this] {
            loop_.run(network.broadcaster);
            ended_ = true;
        });
    }
    ~Running() {
        stop.request();
        FakeCamera::get().hanging = false;
        if (thread_.joinable())
            thread_.join();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    RawClient client() {
        RawClient client(network.port());
        client.readHeader();
        return client;
    }
    bool ended() const { return ended_; }
    bool endsByItself() const {
        return RunningBroadcaster::eventually([this] { return ended_.load(); });
    }

    server::StopRequest stop;
    RunningBroadcaster network;

  private:
    Options options_;
    CameraLoop loop_;
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

QVR::NetworkTouch firstTouch(RawClient& client) {
    const support::Bytes frame = client.readFrame();
    QVR::NetworkTouch touch;
    std::memcpy(&touch, frame.data(), sizeof touch);
    return touch;
}

// True when the first touch becomes (in)active within a minute.
bool waitForTouch(RawClient& client, bool active) {
    const auto end = Clock::now() + 60s;
    while (Clock::now() < end)
        if (firstTouch(client).active == (active ? 1 : 0))
            return true;
    return false;
}

class CameraLoopTest : public support::CameraFixture {
  protected:
    CameraLoopTest() { writeDocument(); }
};

} // namespace

TEST_F(CameraLoopTest, EndsAfterTheFramesAskedFor) {
    Options options = touchesOnly();
    options.frames = 5;
    const Running running(options);
    EXPECT_TRUE(running.endsByItself());
    EXPECT_EQ(camera.waits, 5);
}

TEST_F(CameraLoopTest, EndsWhenAsked) {
    Running running(touchesOnly());
    RawClient client = running.client();
    client.readFrame();
    EXPECT_FALSE(running.ended());
    running.stop.request();
    EXPECT_TRUE(running.endsByItself());
}

TEST_F(CameraLoopTest, EndsWithItsLastClient) {
    Running running(touchesOnly());
    {
        RawClient first = running.client();
        {
            RawClient second = running.client();
            second.readFrame();
        }
        ASSERT_TRUE(running.network.hasClients(1));
        for (int i = 0; i < 20; ++i)
            first.readFrame();
        EXPECT_FALSE(running.ended());
    }
    EXPECT_TRUE(running.endsByItself());
}

TEST_F(CameraLoopTest, StaysWhenToldToKeepRunning) {
    Options options = touchesOnly();
    options.keepRunning = true;
    Running running(options);
    running.client().readFrame();
    ASSERT_TRUE(running.network.hasClients(0));
    RawClient next = running.client();
    for (int i = 0; i < 20; ++i)
        next.readFrame();
    EXPECT_FALSE(running.ended());
}

TEST_F(CameraLoopTest, StaysWhenTheDocumentSaysSo) {
    writeDocument(R"("streaming": {"autoClose": false})");
    Running running(touchesOnly());
    running.client().readFrame();
    ASSERT_TRUE(running.network.hasClients(0));
    RawClient next = running.client();
    for (int i = 0; i < 20; ++i)
        next.readFrame();
    EXPECT_FALSE(running.ended());
}

TEST_F(CameraLoopTest, SendsTheTouchesItFinds) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    const QVR::NetworkTouch touch = firstTouch(client);
    EXPECT_NEAR(touch.x, FakeCamera::fingerColumn, 2.0);
    EXPECT_NEAR(touch.y, FakeCamera::fingerRow, 2.0);
    EXPECT_NEAR(touch.z, FakeCamera::fingerDepth, 5.0);
    camera.finger = false;
    EXPECT_TRUE(waitForTouch(client, false));
}

TEST_F(CameraLoopTest, SendsImagesInTheOrderOfTheHeader) {
    camera.finger = true;
    Options options;
    options.color = true;
    options.processed = true;
    Running running(options);
    RawClient client = running.client();
    const support::Bytes frame = client.readFrame();
    constexpr std::size_t pixels = 160 * 120;
    ASSERT_EQ(frame.size(), 280 + pixels * 6);
    EXPECT_EQ(frame[280], std::byte{0x40});
    EXPECT_EQ(frame[280 + pixels * 3 - 1], std::byte{0x40});
    constexpr std::size_t middle = FakeCamera::fingerRow * 160 + FakeCamera::fingerColumn;
    unsigned short depth = 0;
    std::memcpy(&depth, frame.data() + 280 + pixels * 3 + middle * 2, sizeof depth);
    EXPECT_EQ(depth, FakeCamera::fingerDepth);
    EXPECT_EQ(frame[280 + pixels * 5 + middle], std::byte{16});
    EXPECT_EQ(frame[280 + pixels * 5], std::byte{0});
}

// The camera writes over its pictures as soon as it is asked for the next ones, or for those that
// do not come. Of the clients, one takes a frame at once and one takes longer than it is waited
// for.
TEST_F(CameraLoopTest, SendsNoPictureThatTheCameraTookBack) {
    Options options;
    options.color = true;
    options.processed = true;
    Running running(options);
    RawClient fast = running.client();
    RawClient slow(running.network.port(), 4096);
    slow.readHeader();
    const support::Bytes expected(160 * 120 * 3, std::byte{0x40});
    const auto colorOf = [&](const support::Bytes& frame) {
        const auto first = frame.begin() + 280;
        return support::Bytes(first, first + static_cast<std::ptrdiff_t>(expected.size()));
    };
    for (int turn = 0; turn < 30; ++turn) {
        if (turn % 10 == 5)
            camera.failingWaits = 2;
        EXPECT_EQ(colorOf(fast.readFrame()), expected) << turn;
        support::Bytes frame = slow.read(100'000);
        std::this_thread::sleep_for(10ms);
        const support::Bytes rest = slow.read(slow.frameBytes() - frame.size());
        frame.insert(frame.end(), rest.begin(), rest.end());
        EXPECT_EQ(colorOf(frame), expected) << turn;
    }
}

TEST_F(CameraLoopTest, IsNotHeldByAClientThatDoesNotRead) {
    Options options;
    options.color = true;
    Running running(options);
    RawClient stalled(running.network.port(), 4096);
    stalled.readHeader();
    stalled.read(1000);
    const int before = camera.waits;
    EXPECT_TRUE(RunningBroadcaster::eventually([&] { return camera.waits >= before + 30; }));
    EXPECT_TRUE(running.network.hasClients(1));
}

TEST_F(CameraLoopTest, KeepsClientsAndTouchesOverABadFrame) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    testing::internal::CaptureStderr();
    camera.failingWaits = 3;
    while (camera.failingWaits > 0)
        EXPECT_EQ(firstTouch(client).active, 1);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(firstTouch(client).active, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(camera.startCount, 1);
}

TEST_F(CameraLoopTest, GetsALostCameraBackAndKeepsItsClients) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    testing::internal::CaptureStderr();
    camera.plugged = false;
    ASSERT_TRUE(waitForTouch(client, false));
    // Frames go on at the frame rate, and no finger is held.
    const auto start = Clock::now();
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(firstTouch(client).active, 0);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_GT(Clock::now() - start, 300ms);

    camera.plugged = true;
    EXPECT_TRUE(waitForTouch(client, true));
    running.stop.request();
    EXPECT_TRUE(running.endsByItself());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(
        running.network.reports(),
        testing::ElementsAre(testing::MatchesRegex(
                                 "WARNING: the camera is lost \\(no good frame for 1\\.[0-9] s\\); "
                                 "clients stay connected while it is tried again"),
                             testing::MatchesRegex("the camera is back after [0-9]+\\.[0-9] s")));
}

TEST_F(CameraLoopTest, SendsFramesWhileTheCameraHangs) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    camera.hanging = true;
    ASSERT_TRUE(waitForTouch(client, false));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(firstTouch(client).active, 0);
    EXPECT_THAT(running.network.reports(), testing::ElementsAre(HasSubstr("the camera is lost")));
    camera.hanging = false;
    EXPECT_TRUE(waitForTouch(client, true));
    EXPECT_THAT(running.network.reports(), testing::ElementsAre(HasSubstr("the camera is lost"),
                                                                HasSubstr("the camera is back")));
}

TEST_F(CameraLoopTest, TriesALostCameraLessAndLessOften) {
    Running running(touchesOnly());
    RawClient client = running.client();
    client.readFrame();
    testing::internal::CaptureStderr();
    camera.plugged = false;
    std::vector<Clock::time_point> tries;
    while (tries.size() < 4) {
        client.readFrame();
        if (camera.searches > static_cast<int>(tries.size()) + 1)
            tries.push_back(Clock::now());
    }
    EXPECT_GE(tries[1] - tries[0], 450ms);
    EXPECT_GE(tries[2] - tries[1], 950ms);
    EXPECT_GE(tries[3] - tries[2], 1950ms);
    testing::internal::GetCapturedStderr();
}

TEST_F(CameraLoopTest, SaysOnceThatTheDocumentCannotBeUsedAnyMore) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    testing::internal::CaptureStderr();
    camera.plugged = false;
    ASSERT_TRUE(waitForTouch(client, false));
    volume.write("QVR_calibration/touch.json", "{");
    camera.plugged = true;
    const int before = camera.startCount;
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.startCount > before + 1; }));
    writeDocument();
    EXPECT_TRUE(waitForTouch(client, true));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_THAT(said, HasSubstr("touch.json is not valid JSON"));
    EXPECT_EQ(said.find("is not valid JSON"), said.rfind("is not valid JSON"));
}

TEST_F(CameraLoopTest, EndsWhileItWaitsForALostCamera) {
    Running running(touchesOnly());
    RawClient client = running.client();
    testing::internal::CaptureStderr();
    camera.plugged = false;
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.searches > 1; }));
    client.close();
    EXPECT_TRUE(running.endsByItself());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(running.network.reports(), testing::ElementsAre(HasSubstr("the camera is lost")));
    EXPECT_EQ(camera.startCount, 1);
}

TEST_F(CameraLoopTest, TriesAgainWhenAReturningCameraFailsHalfway) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    testing::internal::CaptureStderr();
    camera.plugged = false;
    ASSERT_TRUE(waitForTouch(client, false));
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.searches > 1; }));
    camera.failingScale = 3; // after the pipeline is up
    camera.plugged = true;
    EXPECT_TRUE(waitForTouch(client, true));
    EXPECT_EQ(camera.failingScale, 0);
    EXPECT_EQ(camera.startCount, 3);
    testing::internal::GetCapturedStderr();
}

TEST_F(CameraLoopTest, KeepsPatienceAtTheRateThatAReturningCameraHas) {
    camera.finger = true;
    Running running(touchesOnly());
    RawClient client = running.client();
    ASSERT_TRUE(waitForTouch(client, true));
    testing::internal::CaptureStderr();
    camera.plugged = false;
    ASSERT_TRUE(waitForTouch(client, false));
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.searches > 1; }));
    writeDocument(R"("streaming": {"fps": 1})");
    camera.plugged = true;
    ASSERT_TRUE(waitForTouch(client, true));
    // A frame that fails after little more than a second is no loss at one frame a second.
    camera.hanging = true;
    camera.failingWaits = 1;
    std::this_thread::sleep_for(1200ms);
    camera.hanging = false;
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.failingWaits == 0; }));
    camera.waits = 0;
    ASSERT_TRUE(RunningBroadcaster::eventually([&] { return camera.waits > 0; }));
    EXPECT_EQ(camera.startCount, 2);
    testing::internal::GetCapturedStderr();
}

TEST_F(CameraLoopTest, StopsTheCameraWhenClosed) {
    const Options options = touchesOnly();
    const server::StopRequest stop;
    CameraLoop loop(options, stop, nullptr);
    loop.close();
    loop.open();
    EXPECT_NE(QVR::cameraManager::get(), nullptr);
    loop.close();
    EXPECT_EQ(QVR::cameraManager::get(), nullptr);
}

TEST_F(CameraLoopTest, MakesClientsAskAnewWhenTheCameraComesBackDifferent) {
    Options options;
    options.keepRunning = true;
    Running running(options);
    RawClient client = running.client();
    client.readFrame();
    testing::internal::CaptureStderr();
    camera.width = 200;
    camera.height = 130;
    camera.plugged = false;
    ASSERT_TRUE(RunningBroadcaster::eventually([&] {
        client.readFrame();
        return camera.searches > 1;
    }));
    camera.plugged = true;
    EXPECT_TRUE(client.waitUntilClosed());
    RawClient next(running.network.port());
    const QVR::ProtocolHeader header = next.readHeader();
    EXPECT_EQ(header.depthX, 200U);
    EXPECT_EQ(header.depthY, 130U);
    EXPECT_EQ(next.readFrame().size(), 280U + 200U * 130U * 2U);
    EXPECT_FALSE(running.ended());
    testing::internal::GetCapturedStderr();
}

TEST_F(CameraLoopTest, WritesATouchLogLineForEveryFrame) {
    camera.finger = true;
    const support::TemporaryFolder folder;
    const std::string path = folder.path() + "/touches.jsonl";
    server::TouchLog touchLog(path);
    Options options = touchesOnly();
    options.frames = 6;
    options.touch = false; // the log does not depend on what is sent
    const Running running(options, &touchLog);
    ASSERT_TRUE(running.endsByItself());

    std::ifstream file(path);
    std::string text;
    std::vector<json11::Json> lines;
    while (std::getline(file, text)) {
        std::string error = "noError";
        lines.push_back(json11::Json::parse(text, error));
        ASSERT_EQ(error, "noError") << text;
    }
    ASSERT_EQ(lines.size(), 6U);
    double time = 0.0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i]["frame"].number_value(), static_cast<double>(i));
        EXPECT_GT(lines[i]["time"].number_value(), time);
        time = lines[i]["time"].number_value();
        EXPECT_EQ(lines[i]["truth"][0]["id"].number_value(), 5.0);
        EXPECT_EQ(lines[i]["truth"][0]["depth"].number_value(), FakeCamera::fingerDepth);
        EXPECT_EQ(lines[i]["touches"].array_items().size(), i == 0 ? 0U : 1U);
    }
    EXPECT_NEAR(lines[5]["touches"][0]["pixel"][0].number_value(), FakeCamera::fingerColumn, 2.0);
}

TEST_F(CameraLoopTest, WritesNoTruthThatNobodyKnows) {
    camera.truthKnown = false;
    const support::TemporaryFolder folder;
    const std::string path = folder.path() + "/touches.jsonl";
    server::TouchLog touchLog(path);
    Options options = touchesOnly();
    options.frames = 1;
    const Running running(options, &touchLog);
    ASSERT_TRUE(running.endsByItself());
    std::string line;
    std::getline(std::ifstream(path) >> std::ws, line);
    EXPECT_THAT(line, Not(HasSubstr("truth")));
    EXPECT_THAT(line, HasSubstr("\"touches\":[]"));
}
