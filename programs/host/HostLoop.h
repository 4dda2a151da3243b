// The loop of a host: update the plug-in, read the touches, tell everyone who wants to know.
#pragma once

#include "host/HostState.h"
#include "host/Plugin.h"
#include "host/StopSwitch.h"
#include "host/TouchTable.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct ServerAddress {
    std::string host;
    unsigned port = 0;
};

struct LoopOptions {
    std::optional<ServerAddress> server; // else the settings file says where
    std::optional<std::uint64_t> frames; // stop after so many
    std::optional<int> projectionMap;    // load this map once connected
    double updatesPerSecond = 120;       // at most
    // With a number of frames to wait for, give up when none came within this time.
    double firstFrameSeconds = 5;
};

class HostLoop {
  public:
    // Called once before and after every update, with the state and whether this is the first
    // frame of a connection, whose images may have other sizes than those before.
    using Observer = std::function<void(const HostState& state, bool firstOfConnection)>;

    HostLoop(const PluginFunctions& plugin, LoopOptions options, StopSwitch& stop,
             Observer observer);

    // Runs until a stop is asked for or the frames are received; then the client is shut down.
    // Returns whether a frame ever came.
    bool run();

  private:
    void startClient();
    void takeFrame();
    void takeFailure(int result);
    std::vector<Touch> readTouches() const;
    bool finished() const;
    double now() const;
    void pauseUntilNextUpdate(double updateStart);

    const PluginFunctions& plugin_;
    LoopOptions options_;
    StopSwitch& stop_;
    Observer observer_;
    std::chrono::steady_clock::time_point start_;
    TouchTable table_;
    HostState state_;
    std::vector<double> arrivals_; // of the newest frames
    bool newConnection_ = true;
    double retryPause_ = 0;
};

} // namespace host
