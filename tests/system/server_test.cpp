// The camera server as people and hosts meet it: the real program on a folder of depth images.
#include "server/RawClient.h"
#include "support/TemporaryFolder.h"
#include "system/ServerProcess.h"
#include "system/greyPng.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>
#include <netinet/in.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using support::Bytes;
using support::RawClient;
using support::ServerProcess;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

namespace {

// Frames as texts, which a set can order.
std::string asText(const Bytes& bytes) {
    std::string text(bytes.size(), '\0');
    std::memcpy(text.data(), bytes.data(), bytes.size());
    return text;
}

constexpr unsigned width = 160;
constexpr unsigned height = 120;

// Settings and images: a flat fingertip that moves to the right over six images.
class Server : public testing::Test {
  protected:
    Server() {
        writeDocument("");
        for (unsigned i = 0; i < 6; ++i)
            writeImage("images/" + std::to_string(i) + ".png", 16, 40 + 4 * i);
    }

    void writeDocument(const std::string& streaming) const {
        folder.write("QVR_calibration/touch.json",
                     R"({"colorResX": 160, "colorResY": 120, "depthResX": 160, "depthResY": 120,)"
                     R"( "nearClipMeters": 0.1, "farClipMeters": 0.25, "touchDetection": {)"
                     R"("forwardFacing": {"borderClipTop": 0, "borderClipBottom": 0,)"
                     R"( "borderClipLeft": 0, "borderClipRight": 0}}, "streaming": {)" +
                         streaming + "}}");
    }

    void writeImage(const std::string& name, int bits, unsigned left) const {
        const std::string path = folder.write(name, "");
        support::writeGreyPng(path, width, height, bits, [&](unsigned column, unsigned row) {
            const bool finger = column >= left && column < left + 40 && row >= 40 && row < 80;
            return static_cast<std::uint16_t>(finger ? 1200 : 0);
        });
    }

    // `arguments` after the camera and a port of the system's choice.
    std::vector<std::string> withCamera(const std::vector<std::string>& arguments) const {
        std::vector<std::string> all = {"--camera", source(), "--port", "0"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return all;
    }
    std::string source() const { return "images:" + folder.path() + "/images"; }

    support::TemporaryFolder folder;
};

// A port that somebody listens on while this lives.
class TakenPort {
  public:
    TakenPort() : descriptor_(::socket(AF_INET, SOCK_STREAM, 0)) {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        auto* const generic = reinterpret_cast<sockaddr*>(&address_);
        if (::bind(descriptor_, generic, size) != 0 || ::listen(descriptor_, 1) != 0 ||
            ::getsockname(descriptor_, generic, &size) != 0)
            throw std::runtime_error("cannot listen");
    }
    ~TakenPort() { ::close(descriptor_); }
    TakenPort(const TakenPort&) = delete;
    TakenPort& operator=(const TakenPort&) = delete;

    std::uint16_t number() const { return ntohs(address_.sin_port); }

  private:
    int descriptor_;
    sockaddr_in address_{};
};

// What a person takes for at once, and a busy machine manages.
std::optional<int> endsSoon(ServerProcess& server) {
    const auto start = Clock::now();
    const std::optional<int> code = server.waitForEnd();
    EXPECT_LT(Clock::now() - start, 5s);
    return code;
}

} // namespace

TEST_F(Server, ExplainsItself) {
    ServerProcess help(folder.path(), {"--help"});
    EXPECT_EQ(help.waitForEnd(), 0);
    EXPECT_THAT(help.output(), HasSubstr("--touch-log FILE"));
    EXPECT_THAT(help.output(), HasSubstr("Exit codes:"));
    EXPECT_EQ(help.errors(), "");
    ServerProcess version(folder.path(), {"--version"});
    EXPECT_EQ(version.waitForEnd(), 0);
    EXPECT_THAT(version.output(), testing::MatchesRegex("qvr-server [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(Server, RefusesAnUnknownOption) {
    ServerProcess server(folder.path(), {"--colour"});
    EXPECT_EQ(server.waitForEnd(), 2);
    EXPECT_EQ(server.errors(), "qvr-server: The following argument was not expected: --colour\n"
                               "qvr-server --help lists the options.\n");
}

TEST_F(Server, SaysThatThePortIsInUse) {
    const TakenPort taken;
    const std::string port = std::to_string(taken.number());
    ServerProcess server(folder.path(), {"--camera", source(), "--port", port});
    EXPECT_EQ(server.waitForEnd(), 3);
    EXPECT_THAT(server.errors(), HasSubstr("qvr-server: cannot listen on 127.0.0.1, port " + port +
                                           ": Address already in use. Choose another with --port"));
    EXPECT_EQ(server.output(), "");
}

TEST_F(Server, SaysThatThereIsNoCamera) {
    ServerProcess server(folder.path(), {"--port", "0"});
    EXPECT_EQ(server.waitForEnd(), 4);
    EXPECT_THAT(server.errors(),
                testing::EndsWith("qvr-server: no camera that can be started. Connect a depth "
                                  "camera, or try --camera simulated\n"
                                  "The camera said: No depth cam found.\n"));
}

TEST_F(Server, RefusesSettingsThatItCannotRead) {
    const std::string path = folder.write("QVR_calibration/touch.json", "{\"streaming\": ");
    ServerProcess server(folder.path(), withCamera({}));
    EXPECT_EQ(server.waitForEnd(), 5);
    EXPECT_THAT(server.errors(), HasSubstr(path + " is not valid JSON: "));
    writeDocument(R"("port": 70000)");
    ServerProcess port(folder.path(), {"--camera", source()});
    EXPECT_EQ(port.waitForEnd(), 5);
    EXPECT_THAT(port.errors(), HasSubstr("\"port\" in touch.json is 70000"));
}

TEST_F(Server, RefusesASourceThatIsNone) {
    ServerProcess unknown(folder.path(), {"--camera", "nonsense"});
    EXPECT_EQ(unknown.waitForEnd(), 6);
    EXPECT_THAT(unknown.errors(), HasSubstr("camera source 'nonsense': "));
    const std::string missing = folder.path() + "/missing";
    ServerProcess folderMissing(folder.path(), {"--camera", "images:" + missing});
    EXPECT_EQ(folderMissing.waitForEnd(), 6);
    EXPECT_THAT(folderMissing.errors(), HasSubstr(missing));
}

TEST_F(Server, RefusesPicturesOfEightBits) {
    writeImage("eight/0.png", 8, 40);
    ServerProcess server(folder.path(), {"--camera", "images:" + folder.path() + "/eight"});
    EXPECT_EQ(server.waitForEnd(), 6);
    EXPECT_THAT(server.errors(), HasSubstr("eight/0.png"));
}

TEST_F(Server, RefusesPicturesOfAnotherSize) {
    support::writeGreyPng(folder.write("small/0.png", ""), 64, 48, 16,
                          [](unsigned, unsigned) { return std::uint16_t{900}; });
    ServerProcess server(folder.path(), {"--camera", "images:" + folder.path() + "/small"});
    EXPECT_EQ(server.waitForEnd(), 6);
    EXPECT_THAT(server.errors(),
                HasSubstr("does not start with the sizes and frame rate asked "
                          "for (160 x 120 colour, 160 x 120 depth, 60 frames a second)\n"
                          "The camera said: RealSense error calling rs_"));
}

TEST_F(Server, RefusesATouchLogThatItCannotWrite) {
    ServerProcess server(folder.path(), withCamera({"--touch-log", folder.path() + "/no/log"}));
    EXPECT_EQ(server.waitForEnd(), 2);
    EXPECT_THAT(server.errors(), HasSubstr("cannot write the touch log"));
}

TEST_F(Server, EndsCleanlyOnASignal) {
    for (const int number : {SIGINT, SIGTERM}) {
        ServerProcess server(folder.path(), withCamera({"--color", "--processed"}));
        RawClient client(server.waitForPort());
        client.readHeader();
        client.readFrame();
        server.signal(number);
        EXPECT_EQ(endsSoon(server), 0) << number;
        EXPECT_TRUE(client.waitUntilClosed());
    }
}

// The camera's frames are a second apart.
TEST_F(Server, EndsCleanlyWhileItWaitsForTheCamera) {
    writeDocument(R"("fps": 1)");
    ServerProcess server(folder.path(), withCamera({"--keep-running"}));
    server.waitForPort();
    server.signal(SIGTERM);
    EXPECT_EQ(endsSoon(server), 0);
}

TEST_F(Server, EndsAfterTheFramesAskedForAndLogsThem) {
    const std::string log = folder.path() + "/touches.jsonl";
    ServerProcess server(folder.path(), withCamera({"--frames", "12", "--touch-log", log}));
    EXPECT_EQ(server.waitForEnd(), 0);
    std::ifstream file(log);
    std::string text;
    int lines = 0;
    std::size_t touches = 0;
    while (std::getline(file, text)) {
        std::string error = "noError";
        const json11::Json line = json11::Json::parse(text, error);
        ASSERT_EQ(error, "noError") << text;
        EXPECT_EQ(line["frame"].number_value(), lines++);
        EXPECT_TRUE(line["truth"].is_null());
        touches += line["touches"].array_items().size();
    }
    EXPECT_EQ(lines, 12);
    EXPECT_EQ(touches, 11U);
}

TEST_F(Server, LogsTheTruthOfASimulatedScene) {
    const support::TemporaryFolder noSettings;
    const std::string log = folder.path() + "/touches.jsonl";
    ServerProcess server(noSettings.path(), {"--camera", "simulated:pace=off", "--port", "0",
                                             "--frames", "5", "--touch-log", log});
    EXPECT_EQ(server.waitForEnd(), 0);
    std::ifstream file(log);
    std::string text;
    int lines = 0;
    while (std::getline(file, text)) {
        std::string error = "noError";
        EXPECT_TRUE(json11::Json::parse(text, error)["truth"].is_array()) << text;
        ++lines;
    }
    EXPECT_EQ(lines, 5);
}

TEST_F(Server, PrintsItsStateEverySoOften) {
    ServerProcess server(folder.path(), withCamera({"--stats", "0.1", "--frames", "30"}));
    EXPECT_EQ(server.waitForEnd(), 0);
    EXPECT_THAT(server.output(), HasSubstr(" frames/s, 0 clients, 0 frames skipped by slow "
                                           "clients, 0 left out, 1 touches\n"));
}

TEST_F(Server, EndsWithItsLastClient) {
    ServerProcess server(folder.path(), withCamera({}));
    RawClient first(server.waitForPort());
    first.readHeader();
    {
        RawClient second(server.waitForPort());
        second.readHeader();
        second.readFrame();
    }
    for (int i = 0; i < 30; ++i)
        first.readFrame();
    EXPECT_TRUE(server.running());
    first.close();
    EXPECT_EQ(endsSoon(server), 0);
}

TEST_F(Server, KeepsRunningWhenTold) {
    ServerProcess server(folder.path(), withCamera({"--keep-running"}));
    const std::uint16_t port = server.waitForPort();
    for (int i = 0; i < 3; ++i) {
        RawClient client(port);
        client.readHeader();
        client.readFrame();
    }
    std::this_thread::sleep_for(200ms);
    EXPECT_TRUE(server.running());
    server.signal(SIGINT);
    EXPECT_EQ(endsSoon(server), 0);
}

TEST_F(Server, ListensOnTheDocumentsPort) {
    const std::uint16_t port = TakenPort().number();
    writeDocument("\"port\": " + std::to_string(port));
    ServerProcess server(folder.path(), {"--camera", source()});
    EXPECT_EQ(server.waitForPort(), port);
}

TEST_F(Server, ListensOnThisMachineOnly) {
    ServerProcess server(folder.path(), withCamera({}));
    server.waitForPort();
    EXPECT_THAT(server.output(), testing::StartsWith("listening on 127.0.0.1:"));
    EXPECT_THAT(server.errors(), testing::Not(HasSubstr("whoever reaches")));
}

TEST_F(Server, IsOpenedToOthersByNoDocument) {
    writeDocument(
        R"("bind": "0.0.0.0", "allow": "any", "bindAddress": "0.0.0.0", "ip": "0.0.0.0")");
    ServerProcess server(folder.path(), withCamera({}));
    server.waitForPort();
    EXPECT_THAT(server.output(), testing::StartsWith("listening on 127.0.0.1:"));
}

TEST_F(Server, OpensToOthersOnlyWhenToldToWhom) {
    ServerProcess unsaid(folder.path(), withCamera({"--bind", "0.0.0.0"}));
    EXPECT_EQ(unsaid.waitForEnd(), 2);
    EXPECT_THAT(unsaid.errors(), HasSubstr("add --allow ADDR/PREFIX"));
    EXPECT_EQ(unsaid.output(), "");
}

#ifdef __linux__ // where every address of 127.0.0.0/8 is this machine's
TEST_F(Server, SaysWhatItExposesAndRefusesStrangers) {
    ServerProcess server(folder.path(), withCamera({"--bind", "0.0.0.0", "--allow", "127.0.0.1",
                                                    "--keep-running", "--processed"}));
    const std::uint16_t port = server.waitForPort();
    EXPECT_EQ(RawClient::from("127.0.0.2", port).bytesUntilClosed(), 0U);
    RawClient client(port);
    client.readHeader();
    client.readFrame();
    server.signal(SIGTERM);
    EXPECT_EQ(endsSoon(server), 0);
    const std::string number = std::to_string(port);
    EXPECT_THAT(server.errors(),
                HasSubstr("qvr-server: WARNING: whoever reaches 0.0.0.0:" + number +
                          " from an allowed address (127.0.0.1) gets touches, depth images and "
                          "the detection's mask, without a password and unencrypted\n"));
    EXPECT_THAT(server.errors(), HasSubstr("qvr-server: a client from 127.0.0.2 was refused: only "
                                           "these may connect: 127.0.0.1 (see --allow)\n"));
}
#endif

TEST_F(Server, SendsNoColourUnlessTold) {
    ServerProcess server(folder.path(), withCamera({}));
    RawClient client(server.waitForPort());
    const QVR::ProtocolHeader header = client.readHeader();
    EXPECT_EQ(header.colorChannels, 0U);
    EXPECT_EQ(header.processedChannels, 0U);
    EXPECT_EQ(client.readFrame().size(), 280U + width * height * 2U);
}

TEST_F(Server, SendsWhatTheSwitchesSay) {
    writeDocument(R"("color": true, "processed": true, "touch": false)");
    ServerProcess server(folder.path(), withCamera({"--no-color", "--touch"}));
    RawClient client(server.waitForPort());
    const QVR::ProtocolHeader header = client.readHeader();
    EXPECT_EQ(header.colorChannels, 0U);
    EXPECT_EQ(header.depthDepth, 2U);
    EXPECT_EQ(header.processedChannels, 1U);
    EXPECT_EQ(header.touchCount, 10U);
    EXPECT_EQ(client.readFrame().size(), 280U + width * height * 3U);
}

// Twenty frames a second leave every client time for every frame.
TEST_F(Server, GivesTwoClientsTheSameTouches) {
    writeDocument(R"("fps": 20)");
    ServerProcess server(folder.path(), withCamera({"--no-depth", "--raw-touches"}));
    RawClient first(server.waitForPort());
    RawClient second(server.waitForPort());
    first.readHeader();
    second.readHeader();
    std::set<std::string> seen;
    std::vector<std::string> frames;
    std::thread reader([&] {
        for (int i = 0; i < 40; ++i)
            seen.insert(asText(first.readFrame()));
    });
    for (int i = 0; i < 25; ++i)
        frames.push_back(asText(second.readFrame()));
    reader.join();
    int active = 0;
    for (const std::string& frame : frames) {
        EXPECT_EQ(seen.count(frame), 1U);
        QVR::NetworkTouch touch;
        std::memcpy(&touch, frame.data(), sizeof touch);
        active += touch.active;
    }
    EXPECT_GE(active, 23);
    EXPECT_GE(std::set<std::string>(frames.begin(), frames.end()).size(), 6U);
}

TEST_F(Server, OutlivesAClientThatIsKilled) {
    ServerProcess server(folder.path(), withCamera({"--color", "--processed"}));
    const std::uint16_t port = server.waitForPort();
    const pid_t victim = ::fork();
    ASSERT_GE(victim, 0);
    if (victim == 0) {
        RawClient client(port);
        client.readHeader();
        client.readFrame();
        ::pause();
    }
    RawClient survivor(port);
    survivor.readHeader();
    for (int i = 0; i < 30; ++i)
        survivor.readFrame();
    ::kill(victim, SIGKILL);
    ::waitpid(victim, nullptr, 0);
    for (int i = 0; i < 30; ++i)
        survivor.readFrame();
    EXPECT_TRUE(server.running());
    survivor.close();
    EXPECT_EQ(endsSoon(server), 0);
}
