#include "server/FakeCamera.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <librealsense/camera_source.h>
#include <librealsense/rs.h>

struct rs_error {
    std::string message;
};
struct rs_context {};
struct rs_device {
    bool streaming = false;
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> depth;
    std::vector<std::uint8_t> color;
    unsigned long long frame = 0;
};

using support::FakeCamera;

namespace {

rs_context theContext;
rs_device theDevice; // of the one thread that runs the pipeline

void fail(rs_error** error, const char* message) {
    *error = new rs_error{message};
}

void drawFrame() {
    const FakeCamera& camera = FakeCamera::get();
    theDevice.color.assign(theDevice.color.size(), 0x40);
    theDevice.depth.assign(theDevice.depth.size(), 0);
    if (!camera.finger)
        return;
    for (int row = FakeCamera::fingerRow - 20; row <= FakeCamera::fingerRow + 20; ++row)
        for (int column = FakeCamera::fingerColumn - 20; column <= FakeCamera::fingerColumn + 20;
             ++column)
            theDevice.depth[static_cast<std::size_t>(row * theDevice.width + column)] =
                FakeCamera::fingerDepth;
}

} // namespace

FakeCamera& FakeCamera::get() {
    static FakeCamera camera;
    return camera;
}

void FakeCamera::reset() {
    plugged = starts = truthKnown = true;
    hanging = finger = false;
    failingWaits = failingScale = waits = searches = startCount = 0;
    width = 160;
    height = 120;
    theDevice = rs_device();
}

extern "C" {

rs_context* rs_create_context(int, rs_error**) {
    return &theContext;
}

void rs_delete_context(rs_context*, rs_error**) {}

int rs_get_device_count(const rs_context*, rs_error**) {
    ++FakeCamera::get().searches;
    return FakeCamera::get().plugged ? 1 : 0;
}

rs_device* rs_get_device(rs_context*, int, rs_error**) {
    return &theDevice;
}

const char* rs_get_device_name(const rs_device*, rs_error**) {
    return "Fake";
}

const char* rs_get_device_serial(const rs_device*, rs_error**) {
    return "1";
}

const char* rs_get_device_firmware_version(const rs_device*, rs_error**) {
    return "1.0";
}

void rs_set_device_option(rs_device*, rs_option, double, rs_error**) {}

void rs_enable_stream_ex(rs_device*, rs_stream, int, int, rs_format, int, rs_output_buffer_format,
                         rs_error**) {}

void rs_start_source(rs_device* device, rs_source, rs_error** error) {
    FakeCamera& camera = FakeCamera::get();
    if (!camera.starts) {
        fail(error, "the streams do not start");
        return;
    }
    ++camera.startCount;
    device->streaming = true;
    device->width = camera.width;
    device->height = camera.height;
    const auto pixels = static_cast<std::size_t>(device->width * device->height);
    device->depth.assign(pixels, 0);
    device->color.assign(pixels * 3, 0x40);
}

void rs_stop_source(rs_device* device, rs_source, rs_error**) {
    device->streaming = false;
}

int rs_is_device_streaming(const rs_device* device, rs_error**) {
    return device->streaming ? 1 : 0;
}

int rs_get_stream_width(const rs_device* device, rs_stream, rs_error**) {
    return device->width;
}

int rs_get_stream_height(const rs_device* device, rs_stream, rs_error**) {
    return device->height;
}

void rs_get_stream_intrinsics(const rs_device*, rs_stream, rs_intrinsics* intrinsics, rs_error**) {
    *intrinsics = {};
}

void rs_get_device_extrinsics(const rs_device*, rs_stream, rs_stream, rs_extrinsics* extrinsics,
                              rs_error**) {
    *extrinsics = {};
}

float rs_get_device_depth_scale(const rs_device*, rs_error** error) {
    FakeCamera& camera = FakeCamera::get();
    if (camera.failingScale > 0 && --camera.failingScale == 0) {
        fail(error, "the scale cannot be read");
        return 0.0F;
    }
    return 0.001F;
}

void rs_wait_for_frames(rs_device*, rs_error** error) {
    FakeCamera& camera = FakeCamera::get();
    ++camera.waits;
    // The pictures before are for nobody any more.
    theDevice.color.assign(theDevice.color.size(), 0xee);
    theDevice.depth.assign(theDevice.depth.size(), 0xeeee);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    while (camera.hanging)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!camera.plugged) {
        fail(error, "the camera is gone");
    } else if (camera.failingWaits > 0) {
        --camera.failingWaits;
        fail(error, "the frame is late");
    } else {
        ++theDevice.frame;
        drawFrame();
    }
}

const void* rs_get_frame_data(const rs_device* device, rs_stream stream, rs_error**) {
    return stream == RS_STREAM_COLOR ? static_cast<const void*>(device->color.data())
                                     : static_cast<const void*>(device->depth.data());
}

const char* rs_get_failed_function(const rs_error*) {
    return "function";
}

const char* rs_get_failed_args(const rs_error*) {
    return "";
}

const char* rs_get_error_message(const rs_error* error) {
    return error->message.c_str();
}

void rs_free_error(rs_error* error) {
    delete error;
}

void rs_select_camera_source(const char* uri, rs_error** error) {
    if (std::string(uri) != "fake")
        fail(error, "no such source");
}

const char* rs_take_device_notices(rs_device*, rs_error**) {
    return "";
}

void rs_get_scene_truth(const rs_device* device, rs_scene_truth* truth, rs_error**) {
    *truth = {};
    truth->frame = device->frame;
    truth->known = FakeCamera::get().truthKnown ? 1 : 0;
    truth->finger_count = 1;
    truth->fingers[0].id = 5;
    truth->fingers[0].touching = FakeCamera::get().finger ? 1 : 0;
    truth->fingers[0].pixel[0] = FakeCamera::fingerColumn;
    truth->fingers[0].pixel[1] = FakeCamera::fingerRow;
    truth->fingers[0].depth = FakeCamera::fingerDepth;
}

} // extern "C"
