// What the host knows after each turn of its loop; everything that is shown comes from here.
#pragma once

#include "host/TouchTable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host {

enum class Connection {
    waiting,   // no frame yet
    connected, // the last update brought a frame
    lost,      // frames came, but the last update failed
};

struct HostState {
    Connection connection = Connection::waiting;
    std::string server;       // as shown: "127.0.0.1:27016", or where it is looked up
    int result = 0;           // of the last update
    std::uint64_t frames = 0; // received
    double now = 0;           // seconds since the host started
    double lastFrame = 0;     // when the last frame came, on the same clock
    double frameRate = 0;     // frames a second of late
    int depthWidth = 0;       // 0 before the first frame
    int depthHeight = 0;
    std::vector<Touch> touches; // of the last frame; empty after a failed update
    std::vector<TouchChange> changes;
    std::vector<LiveTouch> live;
    std::size_t downCount = 0;
    std::string message; // the newest one worth showing, or empty
};

} // namespace host
