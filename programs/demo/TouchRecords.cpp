#include "demo/TouchRecords.h"

#include <fstream>
#include <limits>

#include <nlohmann/json.hpp>

namespace demo {

namespace {

using nlohmann::json;

double number(const json& value) {
    return value.is_null() ? std::numeric_limits<double>::quiet_NaN() : value.get<double>();
}

template <std::size_t size>
std::array<double, size> numbers(const json& list) {
    std::array<double, size> values = {};
    for (std::size_t i = 0; i < size; ++i) {
        values[i] = number(list.at(i));
    }
    return values;
}

Touch touchFrom(const json& value) {
    // The way of a touch to the host: the network carries doubles, the host reads floats.
    return {value.at("slot").get<int>(),
            {static_cast<float>(number(value.at("x"))), static_cast<float>(number(value.at("y"))),
             static_cast<float>(number(value.at("z")))}};
}

// A touch outside the distortion grid is sent at this place, and a host that reads positions alone
// cannot tell it from an empty slot.
bool isUnusable(const Touch& touch) {
    return touch.position == std::array<float, 3>{-1, -1, -1};
}

void read(const json& line, ServerFrame& frame) {
    frame.frame = line.at("frame").get<std::uint64_t>();
    for (const json& value : line.at("touches")) {
        const Touch touch = touchFrom(value);
        if (!isUnusable(touch)) {
            frame.touches.push_back({touch, numbers<2>(value.at("pixel"))});
        }
    }
    frame.truthKnown = line.contains("truth");
    if (frame.truthKnown) {
        for (const json& value : line.at("truth")) {
            frame.truth.push_back({value.at("id").get<int>(), value.at("touching").get<bool>(),
                                   numbers<2>(value.at("pixel")), numbers<3>(value.at("display"))});
        }
    }
}

void read(const json& line, HostFrame& frame) {
    frame.time = line.at("time").get<double>();
    frame.result = line.at("result").get<int>();
    for (const json& value : line.at("touches")) {
        frame.touches.push_back(touchFrom(value));
    }
}

template <typename Frame>
Log<Frame> readLog(const std::string& path) {
    Log<Frame> log;
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        try {
            Frame frame;
            read(json::parse(line), frame);
            log.frames.push_back(std::move(frame));
        } catch (const json::exception&) {
            const bool cutShort = file.eof(); // no line end: the writer was stopped here
            log.unreadableLines += cutShort ? 0 : 1;
        }
    }
    return log;
}

} // namespace

Log<ServerFrame> readServerLog(const std::string& path) {
    return readLog<ServerFrame>(path);
}

Log<HostFrame> readHostLog(const std::string& path) {
    return readLog<HostFrame>(path);
}

} // namespace demo
