#include "cameraTool/OpenCamera.h"

#include "cameraTool/advice.h"
#include "common/cameraCall.h"
#include "server/ServerError.h"

#include <string>

namespace cameraTool {

using programs::cameraCall;
using server::ServerError;

namespace {

[[noreturn]] void fail(const std::string& what, const rs::error& error) {
    const std::string advice = adviceOn(error.what(), surroundings());
    throw ServerError(server::exitNoCamera,
                      what + ": " + error.what() + (advice.empty() ? "" : "\n" + advice));
}

std::string listOf(const char* stream, const std::vector<rs_mode_range>& modes) {
    std::string list;
    for (const std::string& text : textsOf(modes)) {
        list += "\n    " + text;
    }
    return "\n  " + std::string(stream) + (list.empty() ? "\n    nothing" : list);
}

} // namespace

OpenCamera::OpenCamera(const Mode& wanted) {
    openContext();
    if (cameraCall(rs_get_device_count, context_.get()) == 0) {
        throw ServerError(server::exitNoCamera,
                          adviceWithoutCamera(surroundings(), libraryProblem()));
    }
    device_ = cameraCall(rs_get_device, context_.get(), 0);
    enable(wanted);
}

void OpenCamera::openContext() {
    try {
        context_.reset(cameraCall(rs_create_context, RS_API_VERSION));
    } catch (const rs::error& error) {
        fail("the cameras cannot be looked for", error);
    }
}

// The mode is settled here, so that a start that fails has other reasons.
void OpenCamera::enable(const Mode& wanted) {
    const auto depthModes = modesOf(device_, RS_STREAM_DEPTH);
    const auto colorModes = modesOf(device_, RS_STREAM_COLOR);
    hasColor_ = !colorModes.empty();
    try {
        cameraCall(rs_enable_stream_ex, device_, RS_STREAM_DEPTH, wanted.depthWidth,
                   wanted.depthHeight, RS_FORMAT_Z16, wanted.fps,
                   RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS);
        if (hasColor_) {
            cameraCall(rs_enable_stream_ex, device_, RS_STREAM_COLOR, wanted.colorWidth,
                       wanted.colorHeight, RS_FORMAT_RGB8, wanted.fps,
                       RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS);
        }
        mode(RS_STREAM_DEPTH);
    } catch (const rs::error&) {
        throw ServerError(server::exitBadOption,
                          "the camera has no such mode. Choose with --depth, --color and --fps "
                          "from what it has, both at one rate:" +
                              listOf("depth", depthModes) + listOf("colour", colorModes));
    }
}

rs_stream_mode OpenCamera::mode(rs_stream stream) const {
    rs_stream_mode mode{};
    cameraCall(rs_get_current_mode, device_, stream, &mode);
    return mode;
}

void OpenCamera::start() {
    try {
        cameraCall(rs_start_source, device_, RS_SOURCE_VIDEO);
    } catch (const rs::error& error) {
        fail("the camera does not start", error);
    }
}

void OpenCamera::wait() {
    try {
        cameraCall(rs_wait_for_frames, device_);
    } catch (const rs::error& error) {
        fail("the camera gives no pictures", error);
    }
}

std::span<const std::uint16_t> OpenCamera::depth(rs_stream stream) const {
    return {static_cast<const std::uint16_t*>(cameraCall(rs_get_frame_data, device_, stream)),
            pixels(stream)};
}

std::span<const std::uint8_t> OpenCamera::color(rs_stream stream) const {
    return {static_cast<const std::uint8_t*>(cameraCall(rs_get_frame_data, device_, stream)),
            pixels(stream) * 3};
}

std::size_t OpenCamera::pixels(rs_stream stream) const {
    const rs_stream_mode size = mode(stream);
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

std::string libraryProblem() {
    try {
        cameraCall(rs_select_camera_source, "realsense");
    } catch (const rs::error& error) {
        return error.what();
    }
    rs_select_camera_source(nullptr, nullptr);
    return "";
}

} // namespace cameraTool
