// What server and host wrote down about the same touches.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace demo {

// A touch as the host reads it: display coordinates in single precision.
struct Touch {
    int slot = 0;
    std::array<float, 3> position = {};
};

struct ServerTouch {
    Touch touch;
    std::array<double, 2> pixel = {}; // in the depth picture: column, row
};

// Where a finger of the scene truly is.
struct Finger {
    int id = 0;
    bool touching = false;
    std::array<double, 2> pixel = {};
    std::array<double, 3> display = {}; // millimetres
};

struct ServerFrame {
    std::uint64_t frame = 0;
    std::vector<ServerTouch> touches;
    bool truthKnown = false;
    std::vector<Finger> truth;
};

// One update of the host; `result` below 0 is a failed one.
struct HostFrame {
    double time = 0;
    int result = 0;
    std::vector<Touch> touches;
};

template <typename Frame>
struct Log {
    std::vector<Frame> frames;
    std::size_t unreadableLines = 0; // a last line that was cut short does not count
};

// The touch logs of qvr-server and qvr-host, one JSON object a line. A file that is not there
// gives no frames; numbers that are null (not finite) are NaN.
Log<ServerFrame> readServerLog(const std::string& path);
Log<HostFrame> readHostLog(const std::string& path);

} // namespace demo
