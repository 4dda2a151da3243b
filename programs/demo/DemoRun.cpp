#include "demo/DemoRun.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <thread>

namespace demo {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double serverStartSeconds = 5;
constexpr double hostExtraSeconds = 4; // to load, connect, and write its pictures
constexpr double mostFramesPerSecond = 400;
constexpr std::size_t shownLines = 12;

volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteInterrupt(int) {
    interrupted = 1;
}

// Calls `done` until it is true; false when time is over or the user interrupts.
template <typename Condition>
bool waitUntil(double seconds, Condition done) {
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (interrupted != 0 || Clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

std::string numberText(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

} // namespace

DemoRun::DemoRun(const Options& options)
    : options_(options), workspace_(options.examples),
      environment_("QVR_VOLUMES=" + workspace_.volume().string()) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, &noteInterrupt);
    }
}

std::string DemoRun::run() {
    std::string problem = startServer();
    if (problem.empty()) {
        problem = waitForHost();
    }
    if (host_) {
        host_->end();
    }
    if (server_) {
        server_->end();
    }
    return interrupted != 0 ? "interrupted" : problem;
}

std::string DemoRun::startServer() {
    // The number of frames is the server's own limit, should nobody be left to end it.
    const double limit = std::ceil((options_.seconds + 20) * mostFramesPerSecond);
    server_ = std::make_unique<ChildProcess>(
        Command{options_.server.string(),
                {"--camera", sourceFor(options_.camera), "--port", "0", "--color", "--depth",
                 "--processed", "--touch", "--frames",
                 std::to_string(static_cast<long long>(limit)), "--touch-log", serverLog()},
                {environment_},
                workspace_.file("server.txt")});
    const bool told = waitUntil(serverStartSeconds, [this] {
        address_ = listeningAddress();
        return !address_.empty() || server_->ending();
    });
    if (const auto ending = server_->ending()) {
        return "the camera server ended at once (" + ending->describe() + ")";
    }
    return told ? "" : "the camera server did not start in time";
}

std::string DemoRun::waitForHost() {
    Command command{options_.host.string(),
                    {"--plain", "--server", address_, "--seconds", numberText(options_.seconds),
                     "--map", "0", "--save", options_.pictures.string(), "--touch-log", hostLog()},
                    {environment_},
                    workspace_.file("host.txt")};
    if (!options_.plugin.empty()) {
        command.arguments.insert(command.arguments.end(), {"--plugin", options_.plugin});
    }
    host_ = std::make_unique<ChildProcess>(command);
    if (!waitUntil(options_.seconds + hostExtraSeconds,
                   [this] { return host_->ending().has_value(); })) {
        return "the host did not end in time";
    }
    const Ending ending = *host_->ending();
    if (ending.bySignal || ending.code != 0) {
        return "the host failed (" + ending.describe() + ")";
    }
    return "";
}

// The server says where it listens as soon as it does: "listening on 127.0.0.1:40123".
std::string DemoRun::listeningAddress() const {
    const std::string start = "listening on ";
    std::ifstream file(workspace_.file("server.txt"));
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(start, 0) == 0 && !file.eof()) {
            return line.substr(start.size());
        }
    }
    return "";
}

std::string DemoRun::outputs() const {
    return "qvr-server wrote:\n" + lastLines(workspace_.file("server.txt"), shownLines) +
           "qvr-host wrote:\n" + lastLines(workspace_.file("host.txt"), shownLines);
}

} // namespace demo
