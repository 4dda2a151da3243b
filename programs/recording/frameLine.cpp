#include "recording/frameLine.h"

#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace recording {

using nlohmann::ordered_json;

namespace {

// What JSON has no number for. A calibration may make such a position.
constexpr const char* notANumber = "NaN";
constexpr const char* infinity = "Infinity";
constexpr const char* minusInfinity = "-Infinity";

ordered_json jsonOf(double value) {
    if (std::isnan(value)) {
        return notANumber;
    }
    if (std::isinf(value)) {
        return value > 0 ? infinity : minusInfinity;
    }
    return value;
}

double numberOf(const ordered_json& value) {
    if (!value.is_string()) {
        return value.get<double>();
    }
    if (value == notANumber) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (value != infinity && value != minusInfinity) {
        throw std::runtime_error("a text stands in a number's place");
    }
    return value == infinity ? std::numeric_limits<double>::infinity()
                             : -std::numeric_limits<double>::infinity();
}

ordered_json jsonOf(const QVR::TouchPosition& position) {
    return ordered_json::array(
        {jsonOf(double{position.x}), jsonOf(double{position.y}), jsonOf(double{position.z})});
}

float singleOf(const ordered_json& value) {
    const double number = numberOf(value);
    if (std::isfinite(number) && std::abs(number) > std::numeric_limits<float>::max()) {
        throw std::runtime_error("a position is too large");
    }
    return static_cast<float>(number);
}

template <typename Integer>
Integer wholeOf(const ordered_json& value) {
    using Limits = std::numeric_limits<Integer>;
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= std::uint64_t{Limits::max()}) {
        return static_cast<Integer>(value.get<std::uint64_t>());
    }
    if constexpr (Limits::is_signed) {
        if (value.is_number_integer() && value.get<std::int64_t>() < 0 &&
            value.get<std::int64_t>() >= std::int64_t{Limits::min()}) {
            return static_cast<Integer>(value.get<std::int64_t>());
        }
    }
    throw std::runtime_error("a whole number is none or too large");
}

QVR::TouchPosition positionOf(const ordered_json& value) {
    return {singleOf(value.at(0)), singleOf(value.at(1)), singleOf(value.at(2))};
}

ordered_json touchesOf(const FrameInfo& frame) {
    ordered_json touches = ordered_json::array();
    for (std::size_t slot = 0; slot < touchSlots; ++slot) {
        const QVR::NetworkTouch& record = frame.touches[slot];
        const QVR::TouchPosition& tracked = frame.tracked[slot];
        if (record.active == 0) {
            continue;
        }
        touches.push_back(
            {{"slot", slot},
             {"x", jsonOf(record.x)},
             {"y", jsonOf(record.y)},
             {"z", jsonOf(record.z)},
             {"pixel", ordered_json::array({jsonOf(double{tracked.x}), jsonOf(double{tracked.y})})},
             {"depth", jsonOf(double{tracked.z})}});
    }
    return touches;
}

void readTouches(const ordered_json& touches, FrameInfo& frame) {
    for (const ordered_json& touch : touches) {
        const auto slot = wholeOf<std::size_t>(touch.at("slot"));
        frame.touches.at(slot) = {1, numberOf(touch.at("x")), numberOf(touch.at("y")),
                                  numberOf(touch.at("z"))};
        const ordered_json& pixel = touch.at("pixel");
        frame.tracked.at(slot) = {singleOf(pixel.at(0)), singleOf(pixel.at(1)),
                                  singleOf(touch.at("depth"))};
    }
}

ordered_json jsonOf(const Tracking& tracking) {
    ordered_json slots = ordered_json::array();
    for (const QVR::cTouch& slot : tracking.slots) {
        slots.push_back({{"confidence", slot.confidence},
                         {"current", jsonOf(slot.currentPos)},
                         {"previous", jsonOf(slot.previousPos)},
                         {"smoothed", jsonOf(slot.lerpedPos)}});
    }
    return {{"cutoff", tracking.cutoff}, {"slots", std::move(slots)}};
}

Tracking trackingOf(const ordered_json& value) {
    Tracking tracking;
    tracking.cutoff = wholeOf<std::uint16_t>(value.at("cutoff"));
    for (std::size_t i = 0; i < touchSlots; ++i) {
        const ordered_json& slot = value.at("slots").at(i);
        tracking.slots[i].confidence = wholeOf<int>(slot.at("confidence"));
        tracking.slots[i].currentPos = positionOf(slot.at("current"));
        tracking.slots[i].previousPos = positionOf(slot.at("previous"));
        tracking.slots[i].lerpedPos = positionOf(slot.at("smoothed"));
    }
    return tracking;
}

} // namespace

std::string lineOf(const FrameInfo& frame, std::uint32_t picture) {
    ordered_json line = {{"picture", picture},
                         {"frame", frame.number},
                         {"time", jsonOf(frame.seconds)},
                         {"touches", touchesOf(frame)}};
    if (frame.dropped != 0) {
        line["dropped"] = frame.dropped;
    }
    if (frame.tracking) {
        line["tracking"] = jsonOf(*frame.tracking);
    }
    return line.dump() + "\n";
}

std::optional<FrameInfo> frameOf(std::string_view line) {
    try {
        const ordered_json value = ordered_json::parse(line);
        FrameInfo frame;
        frame.number = wholeOf<std::uint64_t>(value.at("frame"));
        frame.seconds = numberOf(value.at("time"));
        readTouches(value.at("touches"), frame);
        if (const auto dropped = value.find("dropped"); dropped != value.end()) {
            frame.dropped = wholeOf<std::uint64_t>(*dropped);
        }
        if (const auto tracking = value.find("tracking"); tracking != value.end()) {
            frame.tracking = trackingOf(*tracking);
        }
        return frame;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace recording
