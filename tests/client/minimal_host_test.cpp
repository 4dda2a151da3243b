// The example of the documentation, run against a scripted server.
#include "support/LoopbackPeer.h"
#include "support/streamBytes.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using support::bytesOf;
using support::LoopbackPeer;

struct Outcome {
    std::string output;
    int exitCode = -1;
};

Outcome run(const std::string& arguments) {
    Outcome outcome;
    FILE* program = popen((std::string(MINIMAL_HOST) + " " + arguments).c_str(), "r");
    if (program == nullptr) {
        return outcome;
    }
    std::array<char, 256> line{};
    while (fgets(line.data(), line.size(), program) != nullptr) {
        outcome.output += line.data();
    }
    const int status = pclose(program);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST(MinimalHost, PrintsTheTouchesOfEveryFrame) {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = header.colorY = 2;
    header.colorChannels = 3;
    header.colorDepth = 1;
    std::vector<QVR::NetworkTouch> first(10);
    std::vector<QVR::NetworkTouch> second(10);
    first[2] = {1, 0.25, 0.5, 0.125};
    second[9] = {1, 1.0, 0.0, 0.0};
    const std::string image(12, 'c');
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header) + bytesOf(first) + image + bytesOf(second) + image);
        line.waitUntilClosed();
    });
    const Outcome outcome = run("127.0.0.1 " + peer.port() + " 2");
    EXPECT_EQ(outcome.output, "frame 1: slot 2 at 0.250, 0.500, height 0.125\n"
                              "frame 2: slot 9 at 1.000, 0.000, height 0.000\n"
                              "2 frames\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(peer.finish(), "");
}

TEST(MinimalHost, GoesOnWithARestartedServerOfAnotherSize) {
    const auto stream = [](std::uint32_t width, double x) {
        QVR::ProtocolHeader header = support::touchesOnlyHeader();
        header.colorX = header.colorY = width;
        header.colorChannels = 3;
        header.colorDepth = 1;
        std::vector<QVR::NetworkTouch> touches(10);
        touches[0] = {1, x, 0.0, 0.0};
        return bytesOf(header) + bytesOf(touches) +
               std::string(std::size_t{3} * width * width, 'c');
    };
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(stream(2, 1.0));
        line.accept();
        line.send(stream(200, 2.0));
        line.waitUntilClosed();
    });
    const Outcome outcome = run("127.0.0.1 " + peer.port() + " 2");
    EXPECT_EQ(outcome.output, "frame 1: slot 0 at 1.000, 0.000, height 0.000\n"
                              "frame 2: slot 0 at 2.000, 0.000, height 0.000\n"
                              "2 frames\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(peer.finish(), "");
}

} // namespace
