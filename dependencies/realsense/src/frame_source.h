// Where pictures come from: the seam between a device's state machine (streams, start and stop,
// waiting, frame lifetime, alignment), which is written once, and the synthetic scene or the
// folder of images behind it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include <librealsense/camera_source.h>

namespace camera {

// What a program asked for when it enabled a stream; 0 is any, and a stream that is not enabled
// asks for any.
struct StreamRequest {
    int width = 0;
    int height = 0;
    int framerate = 0;
};

// What the camera delivers once both requests are settled. Both frame rates are equal.
struct CameraGeometry {
    rs_intrinsics depth{};
    rs_intrinsics color{};
    rs_extrinsics depthToColor{}; // metres
    float depthScale = 0.0f;      // metres in one depth unit
    int framerate = 0;            // frames a second
};

class FrameSource {
  public:
    virtual ~FrameSource() = default;

    virtual std::string name() const = 0;
    virtual std::string serial() const = 0;
    virtual std::string firmware() const = 0;

    // Metres in one depth unit and the pose, known before any stream is enabled.
    virtual float depthScale() const = 0;
    virtual rs_extrinsics depthToColor() const = 0;

    // Settles a mode, or throws std::runtime_error whose text lists what is available.
    virtual CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) = 0;

    // False when frames come as fast as they are asked for.
    virtual bool paced() const = 0;

    // Fills the pictures of frame `number` (from 0) in the configured geometry: depth units, row
    // by row, 0 where nothing is measured; RGB bytes. An empty span stands for a stream that is not
    // enabled: its picture is not wanted. The same number gives the same pictures.
    virtual void render(std::uint64_t number, std::span<std::uint16_t> depth,
                        std::span<std::uint8_t> color) = 0;

    // The truth behind frame `number`, when the source knows it.
    virtual rs_scene_truth truth(std::uint64_t number) const = 0;
};

// Opens what a user chose, as often as called; null while there is no such camera.
using SourceOpener = std::function<std::unique_ptr<FrameSource>()>;

} // namespace camera
