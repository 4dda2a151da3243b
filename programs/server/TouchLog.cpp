#include "TouchLog.h"

#include "ServerError.h"
#include "ServerLog.h"
#include "detection/touchManager.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <initializer_list>

namespace server {

namespace {

// Seventeen digits bring back the same double.
std::string number(double value) {
    if (!std::isfinite(value))
        return "null";
    std::array<char, 40> text;
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

std::string list(std::initializer_list<double> values) {
    std::string text;
    for (const double value : values)
        text += (text.empty() ? "[" : ",") + number(value);
    return text + "]";
}

std::string touchText(std::size_t slot, const QVR::NetworkTouch& record,
                      const QVR::TouchPosition& position) {
    return "{\"slot\":" + std::to_string(slot) + ",\"x\":" + number(record.x) +
           ",\"y\":" + number(record.y) + ",\"z\":" + number(record.z) +
           ",\"pixel\":" + list({position.x, position.y}) + ",\"depth\":" + number(position.z) +
           "}";
}

std::string truthText(const SceneFinger& finger) {
    return "{\"id\":" + std::to_string(finger.id) +
           ",\"touching\":" + (finger.touching ? "true" : "false") +
           ",\"pixel\":" + list({finger.pixel[0], finger.pixel[1]}) +
           ",\"depth\":" + number(finger.depth) +
           ",\"display\":" + list({finger.display[0], finger.display[1], finger.display[2]}) + "}";
}

} // namespace

TouchLog::TouchLog(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "w")) {
    if (!file_)
        throw ServerError(exitBadOption,
                          "cannot write the touch log " + path + ": " + std::strerror(errno));
}

void TouchLog::write(std::uint64_t frame, double seconds, const QVR::NetworkTouch* records,
                     const QVR::touchManager& touches, const std::optional<SceneTruth>& truth) {
    std::string line =
        "{\"frame\":" + std::to_string(frame) + ",\"time\":" + number(seconds) + ",\"touches\":[";
    bool first = true;
    for (std::size_t slot = 0; slot < touches.touchSlots.size(); ++slot) {
        if (records[slot].active != 1)
            continue;
        line +=
            (first ? "" : ",") + touchText(slot, records[slot], touches.touchSlots[slot].lerpedPos);
        first = false;
    }
    line += "]";
    if (truth) {
        line += ",\"truth\":[";
        for (std::size_t i = 0; i < truth->size(); ++i)
            line += (i == 0 ? "" : ",") + truthText((*truth)[i]);
        line += "]";
    }
    line += "}\n";
    const bool written = std::fwrite(line.data(), 1, line.size(), file_.get()) == line.size() &&
                         std::fflush(file_.get()) == 0;
    if (!written && !failed_) {
        failed_ = true;
        ServerLog::notice("WARNING: cannot write to the touch log " + path_ + ": " +
                          std::strerror(errno));
    }
}

} // namespace server
