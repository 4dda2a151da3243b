#include "camera/FakeRealsense.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

struct rs_error {
    std::string function;
    std::string args;
    std::string message;
};
struct rs_context {};
struct rs_device {};

using support::FakeRealsense;

namespace {

rs_context theContext;
rs_device theDevice;

std::string show(const rs_context* context) {
    return context != nullptr ? "context" : "null";
}
std::string show(const rs_device* device) {
    return device != nullptr ? "device" : "null";
}
std::string show(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

template <typename... Values>
std::string list(Values... values) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + show(values)), ...);
    return text;
}

// As the real library does for every function with a null handle.
template <typename Handle>
bool refuse(const char* function, const Handle* handle, const std::string& arguments,
            rs_error** error) {
    if (FakeRealsense::get().note(function, arguments, error)) {
        return true;
    }
    if (handle != nullptr) {
        return false;
    }
    if (error != nullptr) {
        *error = new rs_error{function, "null:0", "null pointer passed"};
    }
    return true;
}

} // namespace

namespace support {

FakeRealsense& FakeRealsense::get() {
    static FakeRealsense fake;
    return fake;
}

void FakeRealsense::reset() {
    *this = FakeRealsense();
}

void FakeRealsense::failAt(const std::string& function, int occurrence) {
    countdown[function] = occurrence;
}

std::vector<std::string> FakeRealsense::takeCalls() {
    std::vector<std::string> taken;
    taken.swap(calls);
    return taken;
}

int FakeRealsense::countCalls(const std::string& function) const {
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
        return call.rfind(function + "(", 0) == 0;
    }));
}

bool FakeRealsense::note(const std::string& function, const std::string& arguments,
                         rs_error** error) {
    calls.push_back(function + "(" + arguments + (error == nullptr ? ", no slot)" : ")"));
    const auto due = countdown.find(function);
    if (due == countdown.end() || --due->second > 0) {
        return false;
    }
    countdown.erase(due);
    if (error != nullptr) {
        *error = new rs_error{function, "args of " + function, "message of " + function};
    }
    return true;
}

ImageSize FakeRealsense::sizeOf(rs_stream stream) const {
    const bool color = stream == RS_STREAM_COLOR || stream == RS_STREAM_DEPTH_ALIGNED_TO_COLOR;
    const ImageSize& delivered = color ? deliveredColor : deliveredDepth;
    const ImageSize& requested = color ? requestedColor : requestedDepth;
    return delivered.width != 0 ? delivered : requested;
}

} // namespace support

extern "C" {

rs_context* rs_create_context(int api_version, rs_error** error) {
    FakeRealsense& fake = FakeRealsense::get();
    if (fake.note("rs_create_context", list(api_version), error) || fake.nullContext) {
        return nullptr;
    }
    ++fake.contextsMade;
    return &theContext;
}

void rs_delete_context(rs_context* context, rs_error** error) {
    if (!refuse("rs_delete_context", context, list(context), error)) {
        ++FakeRealsense::get().contextsDeleted;
    }
}

int rs_get_device_count(const rs_context* context, rs_error** error) {
    const bool refused = refuse("rs_get_device_count", context, list(context), error);
    return refused ? 0 : FakeRealsense::get().deviceCount;
}

rs_device* rs_get_device(rs_context* context, int index, rs_error** error) {
    const bool refused = refuse("rs_get_device", context, list(context, index), error);
    return refused || FakeRealsense::get().nullDevice ? nullptr : &theDevice;
}

const char* rs_get_device_name(const rs_device* device, rs_error** error) {
    const bool refused = refuse("rs_get_device_name", device, list(device), error);
    return refused || FakeRealsense::get().nullTexts ? nullptr : "Test Camera";
}

const char* rs_get_device_serial(const rs_device* device, rs_error** error) {
    const bool refused = refuse("rs_get_device_serial", device, list(device), error);
    return refused || FakeRealsense::get().nullTexts ? nullptr : "12345";
}

const char* rs_get_device_firmware_version(const rs_device* device, rs_error** error) {
    const bool refused = refuse("rs_get_device_firmware_version", device, list(device), error);
    return refused || FakeRealsense::get().nullTexts ? nullptr : "3.10.10.0";
}

void rs_set_device_option(rs_device* device, rs_option option, double value, rs_error** error) {
    refuse("rs_set_device_option", device, list(device, option, value), error);
}

void rs_enable_stream_ex(rs_device* device, rs_stream stream, int width, int height,
                         rs_format format, int framerate, rs_output_buffer_format output,
                         rs_error** error) {
    if (refuse("rs_enable_stream_ex", device,
               list(device, stream, width, height, format, framerate, output), error)) {
        return;
    }
    FakeRealsense& fake = FakeRealsense::get();
    (stream == RS_STREAM_COLOR ? fake.requestedColor : fake.requestedDepth) = {width, height};
}

void rs_start_source(rs_device* device, rs_source source, rs_error** error) {
    if (refuse("rs_start_source", device, list(device, source), error)) {
        return;
    }
    FakeRealsense& fake = FakeRealsense::get();
    fake.streaming = true;
    const auto pixels = [&](rs_stream stream) {
        const support::ImageSize size = fake.sizeOf(stream);
        return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    };
    // Aligned images may have either size: both buffers hold the larger one.
    const std::size_t most = std::max(pixels(RS_STREAM_COLOR), pixels(RS_STREAM_DEPTH));
    if (fake.depthImage.empty()) {
        fake.depthImage.assign(most, 0);
    }
    if (fake.colorImage.empty()) {
        fake.colorImage.assign(most * 3, 0);
    }
}

void rs_stop_source(rs_device* device, rs_source source, rs_error** error) {
    if (!refuse("rs_stop_source", device, list(device, source), error)) {
        FakeRealsense::get().streaming = false;
    }
}

int rs_is_device_streaming(const rs_device* device, rs_error** error) {
    const bool refused = refuse("rs_is_device_streaming", device, list(device), error);
    return !refused && FakeRealsense::get().streaming ? 1 : 0;
}

int rs_get_stream_width(const rs_device* device, rs_stream stream, rs_error** error) {
    const bool refused = refuse("rs_get_stream_width", device, list(device, stream), error);
    return refused ? 0 : FakeRealsense::get().sizeOf(stream).width;
}

int rs_get_stream_height(const rs_device* device, rs_stream stream, rs_error** error) {
    const bool refused = refuse("rs_get_stream_height", device, list(device, stream), error);
    return refused ? 0 : FakeRealsense::get().sizeOf(stream).height;
}

void rs_get_stream_intrinsics(const rs_device* device, rs_stream stream, rs_intrinsics* intrin,
                              rs_error** error) {
    if (!refuse("rs_get_stream_intrinsics", device, list(device, stream), error)) {
        FakeRealsense& fake = FakeRealsense::get();
        *intrin = stream == RS_STREAM_COLOR ? fake.colorIntrinsics : fake.depthIntrinsics;
    }
}

float rs_get_device_depth_scale(const rs_device* device, rs_error** error) {
    const bool refused = refuse("rs_get_device_depth_scale", device, list(device), error);
    return refused ? 0.0f : FakeRealsense::get().depthScale;
}

void rs_get_device_extrinsics(const rs_device* device, rs_stream from, rs_stream to,
                              rs_extrinsics* extrin, rs_error** error) {
    if (!refuse("rs_get_device_extrinsics", device, list(device, from, to), error)) {
        FakeRealsense& fake = FakeRealsense::get();
        *extrin = from == RS_STREAM_COLOR ? fake.colorToDepth : fake.depthToColor;
    }
}

void rs_wait_for_frames(rs_device* device, rs_error** error) {
    refuse("rs_wait_for_frames", device, list(device), error);
    const std::string& exception = FakeRealsense::get().waitThrows;
    if (!exception.empty()) {
        throw std::runtime_error(exception);
    }
}

const void* rs_get_frame_data(const rs_device* device, rs_stream stream, rs_error** error) {
    FakeRealsense& fake = FakeRealsense::get();
    if (refuse("rs_get_frame_data", device, list(device, stream), error)) {
        return nullptr;
    }
    if (stream == RS_STREAM_COLOR || stream == RS_STREAM_COLOR_ALIGNED_TO_DEPTH) {
        return fake.nullColor ? nullptr : static_cast<const void*>(fake.colorImage.data());
    }
    return fake.nullDepth ? nullptr : static_cast<const void*>(fake.depthImage.data());
}

const char* rs_take_device_notices(rs_device*, rs_error**) {
    static std::string taken;
    taken = std::exchange(FakeRealsense::get().notices, "");
    return taken.c_str();
}

const char* rs_get_failed_function(const rs_error* error) {
    return error != nullptr ? error->function.c_str() : nullptr;
}

const char* rs_get_failed_args(const rs_error* error) {
    return error != nullptr ? error->args.c_str() : nullptr;
}

const char* rs_get_error_message(const rs_error* error) {
    return error != nullptr ? error->message.c_str() : nullptr;
}

void rs_free_error(rs_error* error) {
    delete error;
}

} // extern "C"
