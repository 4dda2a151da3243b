// The C functions: argument checks in the order that callers know, then the context or device.
#include "context.h"
#include "error.h"
#include "exported.h"
#include "source_uri.h"
#include "stream_device.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <librealsense/camera_source.h>

using camera::argument;
using camera::guarded;
using camera::guardedCall;
using camera::requireCode;
using camera::requireNotNegative;
using camera::requirePointer;

namespace {

// From 1.10 on versions fit together when major and minor number agree.
void requireVersion(int version) {
    if (version / 100 != RS_API_VERSION / 100) {
        throw std::runtime_error("the program was built for interface version " +
                                 std::to_string(version) + ", the library has " +
                                 std::to_string(RS_API_VERSION));
    }
}

camera::Enumeration enumerationOf(const std::string& uri) {
    // Opened at once, so that a wrong URI is reported here; the first context takes it over and
    // later ones open it anew.
    const camera::SourceOpener open = camera::sourceOpener(uri);
    auto opened = std::make_shared<std::unique_ptr<camera::FrameSource>>(open());
    return [open, opened] {
        auto source = *opened ? std::move(*opened) : open();
        std::vector<std::unique_ptr<camera::Device>> devices;
        if (source) {
            devices.push_back(std::make_unique<camera::StreamDevice>(std::move(source)));
        }
        return devices;
    };
}

} // namespace

extern "C" {

QVR_CAMERA_EXPORT rs_context* rs_create_context(int api_version, rs_error** error) {
    return guarded(
        error, __func__, static_cast<rs_context*>(nullptr),
        [&] {
            requireVersion(api_version);
            return camera::acquireContext();
        },
        argument("api_version", api_version));
}

QVR_CAMERA_EXPORT void rs_delete_context(rs_context* context, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(context, "context");
            camera::releaseContext(context);
        },
        argument("context", context));
}

QVR_CAMERA_EXPORT int rs_get_device_count(const rs_context* context, rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(context, "context");
            return static_cast<int>(context->devices.size());
        },
        argument("context", context));
}

QVR_CAMERA_EXPORT rs_device* rs_get_device(rs_context* context, int index, rs_error** error) {
    return guarded(
        error, __func__, static_cast<rs_device*>(nullptr),
        [&] {
            requirePointer(context, "context");
            const auto& devices = context->devices;
            if (index < 0 || static_cast<std::size_t>(index) >= devices.size()) {
                throw std::runtime_error("argument index is not below the number of devices, " +
                                         std::to_string(devices.size()));
            }
            return devices[static_cast<std::size_t>(index)].get();
        },
        argument("context", context), argument("index", index));
}

QVR_CAMERA_EXPORT const char* rs_get_device_name(const rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, static_cast<const char*>(nullptr),
        [&] {
            requirePointer(device, "device");
            return device->camera->name();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT const char* rs_get_device_serial(const rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, static_cast<const char*>(nullptr),
        [&] {
            requirePointer(device, "device");
            return device->camera->serial();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT const char* rs_get_device_firmware_version(const rs_device* device,
                                                             rs_error** error) {
    return guarded(
        error, __func__, static_cast<const char*>(nullptr),
        [&] {
            requirePointer(device, "device");
            return device->camera->firmware();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT int rs_device_supports_option(const rs_device* device, rs_option option,
                                                rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            requireCode(option, RS_OPTION_COUNT, "option");
            return device->camera->supportsOption(option) ? 1 : 0;
        },
        argument("device", device), argument("option", option));
}

QVR_CAMERA_EXPORT void rs_set_device_option(rs_device* device, rs_option option, double value,
                                            rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(option, RS_OPTION_COUNT, "option");
            device->camera->setOption(option, value);
        },
        argument("device", device), argument("option", option), argument("value", value));
}

QVR_CAMERA_EXPORT void rs_enable_stream_ex(rs_device* device, rs_stream stream, int width,
                                           int height, rs_format format, int framerate,
                                           rs_output_buffer_format output, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            if (stream >= RS_STREAM_POINTS) {
                throw std::runtime_error("argument stream is not a native stream: " +
                                         camera::nameOf(stream));
            }
            requireNotNegative(width, "width");
            requireNotNegative(height, "height");
            requireCode(format, RS_FORMAT_COUNT, "format");
            requireCode(output, RS_OUTPUT_BUFFER_FORMAT_COUNT, "output");
            requireNotNegative(framerate, "framerate");
            device->camera->enable(stream, width, height, format, framerate);
        },
        argument("device", device), argument("stream", stream), argument("width", width),
        argument("height", height), argument("format", format), argument("framerate", framerate));
}

QVR_CAMERA_EXPORT void rs_start_source(rs_device* device, rs_source source, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(source, RS_SOURCE_COUNT, "source");
            device->camera->start(source);
        },
        argument("device", device), argument("source", source));
}

QVR_CAMERA_EXPORT void rs_stop_source(rs_device* device, rs_source source, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(source, RS_SOURCE_COUNT, "source");
            device->camera->stop(source);
        },
        argument("device", device), argument("source", source));
}

QVR_CAMERA_EXPORT int rs_is_device_streaming(const rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            return device->camera->streaming() ? 1 : 0;
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT int rs_get_stream_width(const rs_device* device, rs_stream stream,
                                          rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            return device->camera->intrinsics(stream).width;
        },
        argument("device", device), argument("stream", stream));
}

QVR_CAMERA_EXPORT int rs_get_stream_height(const rs_device* device, rs_stream stream,
                                           rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            return device->camera->intrinsics(stream).height;
        },
        argument("device", device), argument("stream", stream));
}

QVR_CAMERA_EXPORT void rs_get_stream_intrinsics(const rs_device* device, rs_stream stream,
                                                rs_intrinsics* intrin, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            requirePointer(intrin, "intrin");
            *intrin = device->camera->intrinsics(stream);
        },
        argument("device", device), argument("stream", stream), argument("intrin", intrin));
}

QVR_CAMERA_EXPORT float rs_get_device_depth_scale(const rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, 0.0f,
        [&] {
            requirePointer(device, "device");
            return device->camera->depthScale();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT void rs_get_device_extrinsics(const rs_device* device, rs_stream from,
                                                rs_stream to, rs_extrinsics* extrin,
                                                rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(from, RS_STREAM_COUNT, "from");
            requireCode(to, RS_STREAM_COUNT, "to");
            requirePointer(extrin, "extrin");
            *extrin = device->camera->extrinsics(from, to);
        },
        argument("device", device), argument("from", from), argument("to", to),
        argument("extrin", extrin));
}

QVR_CAMERA_EXPORT void rs_wait_for_frames(rs_device* device, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            device->camera->waitForFrames();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT const void* rs_get_frame_data(const rs_device* device, rs_stream stream,
                                                rs_error** error) {
    return guarded(
        error, __func__, static_cast<const void*>(nullptr),
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            return device->camera->frameData(stream);
        },
        argument("device", device), argument("stream", stream));
}

QVR_CAMERA_EXPORT void rs_select_camera_source(const char* uri, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] { camera::setEnumeration(uri && *uri ? enumerationOf(uri) : camera::Enumeration()); },
        argument("uri", uri));
}

QVR_CAMERA_EXPORT const char* rs_take_device_notices(rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, static_cast<const char*>(nullptr),
        [&] {
            requirePointer(device, "device");
            return device->camera->takeNotices();
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT int rs_get_stream_modes(const rs_device* device, rs_stream stream,
                                          rs_mode_range* ranges, int capacity, rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            requireNotNegative(capacity, "capacity");
            if (capacity > 0) {
                requirePointer(ranges, "ranges");
            }
            const std::vector<rs_mode_range> modes = device->camera->modes(stream);
            std::copy_n(modes.begin(), std::min(modes.size(), static_cast<std::size_t>(capacity)),
                        ranges);
            return static_cast<int>(modes.size());
        },
        argument("device", device), argument("stream", stream), argument("ranges", ranges),
        argument("capacity", capacity));
}

QVR_CAMERA_EXPORT void rs_get_current_mode(rs_device* device, rs_stream stream,
                                           rs_stream_mode* mode, rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requireCode(stream, RS_STREAM_COUNT, "stream");
            requirePointer(mode, "mode");
            *mode = device->camera->currentMode(stream);
        },
        argument("device", device), argument("stream", stream), argument("mode", mode));
}

QVR_CAMERA_EXPORT int rs_has_ended(const rs_device* device, rs_error** error) {
    return guarded(
        error, __func__, 0,
        [&] {
            requirePointer(device, "device");
            return device->camera->ended() ? 1 : 0;
        },
        argument("device", device));
}

QVR_CAMERA_EXPORT void rs_get_scene_truth(const rs_device* device, rs_scene_truth* truth,
                                          rs_error** error) {
    guardedCall(
        error, __func__,
        [&] {
            requirePointer(device, "device");
            requirePointer(truth, "truth");
            *truth = device->camera->sceneTruth();
        },
        argument("device", device), argument("truth", truth));
}

QVR_CAMERA_EXPORT const char* rs_get_failed_function(const rs_error* error) {
    return error ? error->function : nullptr;
}

QVR_CAMERA_EXPORT const char* rs_get_failed_args(const rs_error* error) {
    return error ? error->arguments.c_str() : nullptr;
}

QVR_CAMERA_EXPORT const char* rs_get_error_message(const rs_error* error) {
    return error ? error->message.c_str() : nullptr;
}

QVR_CAMERA_EXPORT void rs_free_error(rs_error* error) {
    delete error;
}

} // extern "C"
