// Three functions of the camera library are this program's own; they call the library's.
#include "latencyCamera.h"

#include "camera/cameraManager.h"
#include "detection/touchManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

#include <dlfcn.h>
#include <librealsense/rs.h>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;
using Picture = std::vector<std::byte>;

std::vector<CameraFrame> frames;
std::map<rs_stream, std::vector<Picture>> recording;
std::size_t playing = 0;
Clock::time_point nextFrame;

template <typename Function>
Function libraryFunction(const char* name) {
    void* const found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Function>(found);
}

Picture currentPicture(rs_device* device, rs_stream stream, std::size_t bytesPerPixel) {
    static const auto data =
        libraryFunction<const void* (*)(const rs_device*, rs_stream, rs_error**)>(
            "rs_get_frame_data");
    rs_error* error = nullptr;
    const int width = rs_get_stream_width(device, stream, &error);
    const int height = rs_get_stream_height(device, stream, &error);
    const void* const pixels = data(device, stream, &error);
    if (error != nullptr || pixels == nullptr) {
        std::abort();
    }
    Picture picture(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                    bytesPerPixel);
    std::memcpy(picture.data(), pixels, picture.size());
    return picture;
}

void record(rs_device* device) {
    static const auto wait =
        libraryFunction<void (*)(rs_device*, rs_error**)>("rs_wait_for_frames");
    recording.clear();
    for (int i = 0; i < recordedFrames; ++i) {
        rs_error* error = nullptr;
        wait(device, &error);
        if (error != nullptr) {
            std::abort();
        }
        recording[RS_STREAM_DEPTH].push_back(currentPicture(device, RS_STREAM_DEPTH, 2));
        recording[RS_STREAM_COLOR].push_back(currentPicture(device, RS_STREAM_COLOR, 3));
    }
    playing = 0;
    nextFrame = Clock::now();
}

TouchValues currentValues() {
    const QVR::NetworkTouch* records = nullptr;
    QVR::cameraManager::get()->touches->getTouches(&records);
    TouchValues values;
    for (std::size_t slot = 0; slot < values.size() / 3; ++slot) {
        const QVR::NetworkTouch touch = records[slot];
        values[3 * slot] = static_cast<float>(touch.x);
        values[3 * slot + 1] = static_cast<float>(touch.y);
        values[3 * slot + 2] = static_cast<float>(touch.z);
    }
    return values;
}

} // namespace

std::vector<CameraFrame> takeCameraFrames() {
    return std::exchange(frames, {});
}

FrameMatcher::FrameMatcher(const std::vector<CameraFrame>& cameraFrames) {
    for (const CameraFrame& frame : cameraFrames) {
        starts_[frame.values].push_back(frame.waitReturned);
    }
}

std::optional<FrameMatcher::Time> FrameMatcher::startOf(const TouchValues& values,
                                                        Time read) const {
    constexpr std::chrono::milliseconds window{500}; // shorter than the recording
    std::optional<Time> start;
    const auto found = starts_.find(values);
    if (found == starts_.end()) {
        return start;
    }
    for (const Time candidate : found->second) {
        if (candidate <= read && read - candidate < window) {
            if (start) {
                return std::nullopt;
            }
            start = candidate;
        }
    }
    return start;
}

} // namespace bench

using namespace bench;

void rs_start_source(rs_device* device, rs_source source, rs_error** error) {
    static const auto start =
        libraryFunction<void (*)(rs_device*, rs_source, rs_error**)>("rs_start_source");
    start(device, source, error);
    if (*error == nullptr) {
        record(device);
    }
}

// Notes what the pipeline made of the frame before, outside the time that is measured.
void rs_wait_for_frames(rs_device*, rs_error**) {
    if (!frames.empty()) {
        frames.back().values = currentValues();
    }
    nextFrame = std::max(nextFrame + framePeriod, Clock::now() - framePeriod);
    std::this_thread::sleep_until(nextFrame);
    playing = (playing + 1) % recordedFrames;
    frames.push_back({Clock::now(), {}});
}

const void* rs_get_frame_data(const rs_device*, rs_stream stream, rs_error**) {
    const auto pictures = recording.find(stream);
    return pictures != recording.end() ? pictures->second[playing].data() : nullptr;
}
