// One camera behind the C interface. The C functions have checked pointers and codes before they
// get here; what a device cannot do is a std::runtime_error.
#pragma once

#include <vector>

#include <librealsense/camera_source.h>

namespace camera {

class Device {
  public:
    virtual ~Device() = default;

    // Texts that live as long as the device.
    virtual const char* name() const = 0;
    virtual const char* serial() const = 0;
    virtual const char* firmware() const = 0;

    virtual bool supportsOption(rs_option option) const = 0;
    virtual void setOption(rs_option option, double value) = 0;

    // What could not be done as asked since the last call, for the log. The text lives until then.
    virtual const char* takeNotices() = 0;

    // Records the request; whether the camera can deliver it shows at start or at a size query.
    virtual void enable(rs_stream stream, int width, int height, rs_format format,
                        int framerate) = 0;
    virtual void start(rs_source source) = 0;
    virtual void stop(rs_source source) = 0;
    virtual bool streaming() const = 0;

    virtual std::vector<rs_mode_range> modes(rs_stream stream) const = 0;
    virtual rs_stream_mode currentMode(rs_stream stream) = 0;
    virtual rs_intrinsics intrinsics(rs_stream stream) = 0;
    virtual float depthScale() const = 0;
    virtual rs_extrinsics extrinsics(rs_stream from, rs_stream to) const = 0;

    virtual void waitForFrames() = 0;
    // Whether the last wait failed because a recording was over.
    virtual bool ended() const = 0;
    virtual const void* frameData(rs_stream stream) = 0;

    virtual rs_scene_truth sceneTruth() const = 0;
};

} // namespace camera
