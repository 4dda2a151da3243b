// One depth camera behind the legacy rs_* interface: opens it, starts its colour and depth
// streams and hands out the current frames.
//
// No lock of its own; one thread at a time. Camera errors are rs::error: caught and logged where a
// function below says so, passed to the caller everywhere else.
#pragma once

#include "foundation/qvrApi.h"

#include <cstdint>
#include <memory>
#include <string>

#include <librealsense/rs.h>

namespace json11 {
class Json;
}
namespace rs {
class error;
}

namespace QVR {

// Gives the context back, so that a camera plugged in later is found by the next context.
struct QVR_API rsContextDeleter {
    void operator()(rs_context* context) const;
};

class QVR_API hardwareCamera {
  public:
    hardwareCamera() = default;
    // Stops the streams, if any, and gives the context back. A camera error is logged.
    ~hardwareCamera();
    hardwareCamera(const hardwareCamera&) = delete;
    hardwareCamera& operator=(const hardwareCamera&) = delete;

    // Opens the first camera and starts both streams at `fps` frames a second. The sizes go in as
    // requested pixels and come back as those of the streams that are read; on failure they stay
    // as they were. `settings` is the calibration document; its "streaming" -> "streamAlignment"
    // 2 reads depth in the colour camera's geometry, 1 colour in the depth camera's.
    // Returns 0; -1 when no camera could be opened or described; -2 when its options or streams
    // could not be set. Failures are logged and leave `device` null once a device was tried.
    int init(unsigned int& colorWidth, unsigned int& colorHeight, unsigned int& depthWidth,
             unsigned int& depthHeight, int fps, json11::Json& settings);

    // Start or stop both streams. True on success; false without a device or after a logged error.
    bool start();
    bool stop();
    bool isStreaming();

    // The current frame, owned by the camera library and good until the next wait or stop. The
    // argument becomes its size: bytes, or 16-bit samples for getDepthFrame; -1 when the call
    // fails. The depth getters need an opened device; the colour getters give null without one.
    const void* getDepthFrameData(long long& bytes);
    const unsigned short* getDepthFrame(long long& count);
    const void* getColorFrameData(long long& bytes);
    const void* getColorFrame(long long& bytes);

    // Both cameras' intrinsics (pixels) and the poses between them (metres) as JSON text with the
    // keys "colorToDepthExtrinsics4x4", "colorIntrinsics", "depthToColorExtrinsics4x4" and
    // "depthIntrinsics". Needs an opened device.
    std::string getCameraInfo();

    // Logs what failed, with which arguments, and why.
    void handleError(const rs::error& e);

    rs_device* device = nullptr; // belongs to the context; null until init succeeds
    std::unique_ptr<rs_context, rsContextDeleter> context; // made by the first init, then kept
    std::uint64_t colorFrameBytes = 0;
    std::uint64_t depthFrameBytes = 0;
    std::int32_t depthStream = RS_STREAM_DEPTH; // rs_stream code read for depth
    std::int32_t colorStream = RS_STREAM_COLOR; // rs_stream code read for colour

  private:
    bool openContext();
    bool countDevices(int& count);
    bool findDevice();
    void logDevice();
    bool startStreams(unsigned int colorWidth, unsigned int colorHeight, unsigned int depthWidth,
                      unsigned int depthHeight, int fps);
    void alignStreams(const json11::Json& settings);
    const void* frameData(std::int32_t stream);
};

} // namespace QVR
