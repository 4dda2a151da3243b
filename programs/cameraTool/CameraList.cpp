#include "cameraTool/CameraList.h"

#include "cameraTool/Mode.h"
#include "cameraTool/OpenCamera.h"
#include "common/cameraCall.h"

#include <algorithm>
#include <array>
#include <memory>

#include <nlohmann/json.hpp>

namespace cameraTool {

using nlohmann::ordered_json;
using programs::cameraCall;

namespace {

struct KnownSource {
    const char* uri;
    const char* about;
    bool needsSdk;
};

constexpr std::array<KnownSource, 4> knownSources = {{
    {"simulated[:KEY=VALUE,...]", "an SR300 with fingers before it that are not there", false},
    {"images:DIR[,KEY=VALUE,...]", "a recording, or a folder of 16-bit PNG depth images", false},
    {"realsense[:SERIAL]", "a connected camera, of RealSense SDK 2", true},
    {"bag:FILE[,KEY=VALUE,...]", "a recording of that SDK's", true},
}};

struct ContextDeleter {
    void operator()(rs_context* context) const { rs_delete_context(context, nullptr); }
};

ListedCamera listed(const rs_device* device, const std::string& source) {
    ListedCamera camera;
    camera.name = cameraCall(rs_get_device_name, device);
    camera.serial = cameraCall(rs_get_device_serial, device);
    camera.firmware = cameraCall(rs_get_device_firmware_version, device);
    camera.uri = source.empty() ? "realsense:" + camera.serial : source;
    camera.depth = modesOf(device, RS_STREAM_DEPTH);
    camera.color = modesOf(device, RS_STREAM_COLOR);
    return camera;
}

std::vector<ListedCamera> camerasThatOpen(const std::string& source) {
    const std::unique_ptr<rs_context, ContextDeleter> context(
        cameraCall(rs_create_context, RS_API_VERSION));
    std::vector<ListedCamera> cameras;
    const int count = cameraCall(rs_get_device_count, context.get());
    for (int index = 0; index < count; ++index) {
        cameras.push_back(listed(cameraCall(rs_get_device, context.get(), index), source));
    }
    return cameras;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string modeLines(const char* stream, const std::vector<rs_mode_range>& modes) {
    std::string lines;
    for (const std::string& text : textsOf(modes)) {
        lines += "    " + padded(lines.empty() ? stream : "", 8) + text + "\n";
    }
    return lines;
}

// A number where only one is possible, else the least and the most.
ordered_json numbers(int least, int most) {
    return least == most ? ordered_json(least) : ordered_json({least, most});
}

ordered_json jsonOf(const std::vector<rs_mode_range>& modes) {
    ordered_json list = ordered_json::array();
    for (const rs_mode_range& range : modes) {
        list.push_back({{"width", numbers(range.least.width, range.most.width)},
                        {"height", numbers(range.least.height, range.most.height)},
                        {"fps", numbers(range.least.framerate, range.most.framerate)}});
    }
    return list;
}

} // namespace

CameraList listCameras(const std::string& source) {
    CameraList list;
    try {
        list.cameras = camerasThatOpen(source);
    } catch (const rs::error& error) {
        list.problem = adviceWithoutCamera(surroundings(), error.what());
    }
    list.libraryProblem = libraryProblem();
    if (list.cameras.empty() && list.problem.empty()) {
        list.problem = adviceWithoutCamera(surroundings(), list.libraryProblem);
    }
    return list;
}

std::string textOf(const CameraList& list) {
    std::size_t name = std::string("CAMERA").size();
    std::size_t serial = std::string("SERIAL").size();
    std::size_t firmware = std::string("FIRMWARE").size();
    for (const ListedCamera& camera : list.cameras) {
        name = std::max(name, camera.name.size());
        serial = std::max(serial, camera.serial.size());
        firmware = std::max(firmware, camera.firmware.size());
    }
    std::string text;
    if (!list.cameras.empty()) {
        text += padded("CAMERA", name) + "  " + padded("SERIAL", serial) + "  " +
                padded("FIRMWARE", firmware) + "  OPENED WITH --camera\n";
    }
    for (const ListedCamera& camera : list.cameras) {
        text += padded(camera.name, name) + "  " + padded(camera.serial, serial) + "  " +
                padded(camera.firmware, firmware) + "  " + camera.uri + "\n" +
                modeLines("depth", camera.depth) + modeLines("colour", camera.color);
    }
    text += list.cameras.empty() ? "No camera: " + list.problem + "\n" : "";
    text += "\nSOURCES\n";
    for (const KnownSource& source : knownSources) {
        const bool missing = source.needsSdk && !list.libraryProblem.empty();
        text += padded(source.uri, 28) + source.about + (missing ? " (cannot be used here)" : "") +
                "\n";
    }
    return text;
}

std::string jsonOf(const CameraList& list) {
    ordered_json cameras = ordered_json::array();
    for (const ListedCamera& camera : list.cameras) {
        cameras.push_back({{"uri", camera.uri},
                           {"name", camera.name},
                           {"serial", camera.serial},
                           {"firmware", camera.firmware},
                           {"depth", jsonOf(camera.depth)},
                           {"color", jsonOf(camera.color)}});
    }
    ordered_json sources = ordered_json::array();
    for (const KnownSource& source : knownSources) {
        sources.push_back({{"uri", source.uri},
                           {"about", source.about},
                           {"available", !source.needsSdk || list.libraryProblem.empty()}});
    }
    const ordered_json document = {
        {"cameras", cameras}, {"problem", list.problem}, {"sources", sources}};
    return document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace cameraTool
