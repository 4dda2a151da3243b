#include "camera/hardwareCamera.h"

#include "camera/StreamSettings.h"
#include "camera/cameraManager.h"

#include <json11.hpp>
#include <librealsense/rs.hpp>
#if QVR_HAVE_CAMERA_SOURCES
#include <librealsense/camera_source.h>
#endif

namespace QVR {

namespace {

struct Setting {
    rs_option option;
    double value;
};

// What makes fingers near a surface come out cleanly: moderate smoothing, little motion blur, and
// only samples that the camera trusts.
constexpr Setting fingerSettings[] = {
    {RS_OPTION_F200_FILTER_OPTION, 3.0},
    {RS_OPTION_F200_MOTION_RANGE, 3.0},
    {RS_OPTION_F200_CONFIDENCE_THRESHOLD, 5.0},
};

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

void enableStream(rs_device* device, rs_stream stream, unsigned int width, unsigned int height,
                  rs_format format, int fps) {
    rs_error* error = nullptr;
    rs_enable_stream_ex(device, stream, static_cast<int>(width), static_cast<int>(height), format,
                        fps, RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS, &error);
    rs::error::handle(error);
}

void startVideo(rs_device* device) {
    rs_error* error = nullptr;
    rs_start_source(device, RS_SOURCE_VIDEO, &error);
    rs::error::handle(error);
}

void stopVideo(rs_device* device) {
    rs_error* error = nullptr;
    rs_stop_source(device, RS_SOURCE_VIDEO, &error);
    rs::error::handle(error);
}

// After a failure the camera may or may not stream, and stopping one that does not is an error
// that nobody needs to hear of: no error slot.
void stopVideoQuietly(rs_device* device) {
    rs_stop_source(device, RS_SOURCE_VIDEO, nullptr);
}

unsigned int streamWidth(rs_device* device, std::int32_t stream) {
    rs_error* error = nullptr;
    const int width = rs_get_stream_width(device, static_cast<rs_stream>(stream), &error);
    rs::error::handle(error);
    return static_cast<unsigned int>(width);
}

unsigned int streamHeight(rs_device* device, std::int32_t stream) {
    rs_error* error = nullptr;
    const int height = rs_get_stream_height(device, static_cast<rs_stream>(stream), &error);
    rs::error::handle(error);
    return static_cast<unsigned int>(height);
}

// A camera without an option that fingers come out better with is still a camera; a camera library
// that thinks so says what it let pass.
void logNotices([[maybe_unused]] rs_device* device) {
#if QVR_HAVE_CAMERA_SOURCES
    const std::string notices = textOf(rs_take_device_notices(device, nullptr));
    if (!notices.empty()) {
        cameraManager::log(notices);
    }
#endif
}

} // namespace

void rsContextDeleter::operator()(rs_context* context) const {
    rs_delete_context(context, nullptr);
}

hardwareCamera::~hardwareCamera() {
    cameraManager::log("Stopping realsense plugin.");
    try {
        if (isStreaming()) {
            stopVideo(device);
        }
    } catch (const rs::error& e) {
        handleError(e);
    }
    device = nullptr;
}

int hardwareCamera::init(unsigned int& colorWidth, unsigned int& colorHeight,
                         unsigned int& depthWidth, unsigned int& depthHeight, int fps,
                         json11::Json& settings) {
    int count = 0;
    if (!openContext() || !countDevices(count)) {
        return -1;
    }
    if (count == 0) {
        cameraManager::log("No depth cam found.");
        return -1;
    }
    cameraManager::log("Found " + std::to_string(count) + " connected RealSense devices.");

    try {
        if (!findDevice()) {
            return -1;
        }
        logDevice();
        if (!startStreams(colorWidth, colorHeight, depthWidth, depthHeight, fps)) {
            device = nullptr;
            return -2;
        }
        alignStreams(settings);
        const unsigned int deliveredColorWidth = streamWidth(device, colorStream);
        const unsigned int deliveredColorHeight = streamHeight(device, colorStream);
        const unsigned int deliveredDepthWidth = streamWidth(device, depthStream);
        const unsigned int deliveredDepthHeight = streamHeight(device, depthStream);
        colorWidth = deliveredColorWidth;
        colorHeight = deliveredColorHeight;
        depthWidth = deliveredDepthWidth;
        depthHeight = deliveredDepthHeight;
    } catch (const rs::error& e) {
        handleError(e);
        stopVideoQuietly(device);
        device = nullptr;
        return -1;
    }
    colorFrameBytes = colorWidth * colorHeight * 3U;
    depthFrameBytes = depthWidth * depthHeight * 2U;
    return 0;
}

bool hardwareCamera::openContext() {
    if (context) {
        return true;
    }
    try {
        rs_error* error = nullptr;
        // May come out null without an error after an earlier failure in this process; counting
        // the devices then reports it.
        context.reset(rs_create_context(RS_API_VERSION, &error));
        rs::error::handle(error);
        return true;
    } catch (const rs::error& e) {
        handleError(e);
        cameraManager::log("Caught exception while obtaining RealSense context.\n"
                           "Is the camera being used by another process?");
        return false;
    }
}

bool hardwareCamera::countDevices(int& count) {
    try {
        rs_error* error = nullptr;
        count = rs_get_device_count(context.get(), &error);
        rs::error::handle(error);
        return true;
    } catch (const rs::error& e) {
        handleError(e);
        cameraManager::log("LibRealSense returned an invalid context. "
                           "Is the context being used by another application?");
        return false;
    }
}

bool hardwareCamera::findDevice() {
    rs_error* error = nullptr;
    device = rs_get_device(context.get(), 0, &error);
    rs::error::handle(error);
    if (device == nullptr) {
        cameraManager::log("Hardware camera Init() failed: Could not get rs device!");
        return false;
    }
    return true;
}

void hardwareCamera::logDevice() {
    rs_error* error = nullptr;
    const std::string name = textOf(rs_get_device_name(device, &error));
    rs::error::handle(error);
    const std::string serial = textOf(rs_get_device_serial(device, &error));
    rs::error::handle(error);
    const std::string firmware = textOf(rs_get_device_firmware_version(device, &error));
    rs::error::handle(error);
    cameraManager::log("Using device 0, an " + name + "\nSerial number: " + serial +
                       "\nFirmware version:  " + firmware);
}

bool hardwareCamera::startStreams(unsigned int colorWidth, unsigned int colorHeight,
                                  unsigned int depthWidth, unsigned int depthHeight, int fps) {
    try {
        for (const Setting& setting : fingerSettings) {
            rs_error* error = nullptr;
            rs_set_device_option(device, setting.option, setting.value, &error);
            rs::error::handle(error);
        }
        enableStream(device, RS_STREAM_COLOR, colorWidth, colorHeight, RS_FORMAT_RGB8, fps);
        enableStream(device, RS_STREAM_DEPTH, depthWidth, depthHeight, RS_FORMAT_Z16, fps);
        startVideo(device);
    } catch (const rs::error& e) {
        handleError(e);
        cameraManager::log("Failed to start camera streams.");
        if (rs_is_device_streaming(device, nullptr) != 0) {
            stopVideoQuietly(device);
        }
        return false;
    }
    cameraManager::log("Camera streams initialized.");
    logNotices(device);
    return true;
}

// Only what is read changes; both native streams stay enabled, for an aligned image is computed
// from the two.
void hardwareCamera::alignStreams(const json11::Json& settings) {
    depthStream = RS_STREAM_DEPTH;
    colorStream = RS_STREAM_COLOR;
    const int alignment = readStreamAlignment(settings);
    if (alignment == 2) {
        depthStream = RS_STREAM_DEPTH_ALIGNED_TO_COLOR;
    } else if (alignment == 1) {
        colorStream = RS_STREAM_COLOR_ALIGNED_TO_DEPTH;
    }
}

bool hardwareCamera::start() {
    if (device == nullptr) {
        return false;
    }
    try {
        startVideo(device);
        return true;
    } catch (const rs::error& e) {
        handleError(e);
        return false;
    }
}

bool hardwareCamera::stop() {
    if (device == nullptr) {
        return false;
    }
    try {
        stopVideo(device);
        return true;
    } catch (const rs::error& e) {
        handleError(e);
        return false;
    }
}

bool hardwareCamera::isStreaming() {
    if (device == nullptr) {
        return false;
    }
    rs_error* error = nullptr;
    const int streaming = rs_is_device_streaming(device, &error);
    rs::error::handle(error);
    return streaming != 0;
}

const void* hardwareCamera::frameData(std::int32_t stream) {
    rs_error* error = nullptr;
    const void* data = rs_get_frame_data(device, static_cast<rs_stream>(stream), &error);
    rs::error::handle(error);
    return data;
}

const void* hardwareCamera::getDepthFrameData(long long& bytes) {
    bytes = -1;
    const void* frame = frameData(depthStream);
    bytes = static_cast<long long>(depthFrameBytes);
    return frame;
}

const unsigned short* hardwareCamera::getDepthFrame(long long& count) {
    count = -1;
    const void* frame = frameData(depthStream);
    count = static_cast<long long>(depthFrameBytes / 2);
    return static_cast<const unsigned short*>(frame);
}

const void* hardwareCamera::getColorFrameData(long long& bytes) {
    bytes = -1;
    if (device == nullptr) {
        return nullptr;
    }
    const void* frame = frameData(colorStream);
    bytes = static_cast<long long>(colorFrameBytes);
    return frame;
}

const void* hardwareCamera::getColorFrame(long long& bytes) {
    return getColorFrameData(bytes);
}

void hardwareCamera::handleError(const rs::error& e) {
    cameraManager::log("RealSense error calling " + e.get_failed_function() + "(" +
                       e.get_failed_args() + "):\n    " + e.what());
}

} // namespace QVR
