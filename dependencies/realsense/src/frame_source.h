// Where pictures come from: the seam between a device's state machine (streams, start and stop,
// waiting, frame lifetime, alignment), which is written once, and the synthetic scene, the folder
// of images or the camera behind it.
#pragma once

#include "clock.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

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

// Which streams a program wants to see.
struct EnabledStreams {
    bool depth = false;
    bool color = false;
};

// No frame comes any more, and that is no fault of the camera's.
class EndOfRecording : public std::runtime_error {
  public:
    EndOfRecording() : std::runtime_error("the recording has ended") {}
};

// Frames of a started source, one after the other. Destroying it stops the source.
class FrameArrivals {
  public:
    virtual ~FrameArrivals() = default;

    // Waits for the next frame and gives its number; nothing when none arrives until `deadline`.
    // Throws std::runtime_error when none can come any more, EndOfRecording when none is left.
    virtual std::optional<std::uint64_t> next(Clock::Time deadline) = 0;
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

    // Colour control comes first among the codes and belongs to every camera; then follow the
    // options of the F200 and SR300 family, which made pictures are like. These need no tuning, so
    // any value will do.
    virtual bool supportsOption(rs_option option) const;
    // Throws std::runtime_error for an option that does not exist here.
    virtual void setOption(rs_option option, double value);
    // What could not be done as asked since the last call, for the log; "" when there is nothing.
    virtual std::string takeNotices();

    // What `configure` accepts for depth or colour; nothing for a stream that is not there.
    virtual std::vector<rs_mode_range> modes(rs_stream stream) const = 0;

    // Settles a mode, or throws std::runtime_error whose text lists what is available.
    virtual CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) = 0;

    // False when frames come as fast as they are asked for.
    virtual bool paced() const = 0;

    // Starts the configured mode. A source that makes its pictures has one whenever its rate says.
    virtual std::unique_ptr<FrameArrivals> start(EnabledStreams enabled, int framerate,
                                                 Clock& clock);

    // Fills the pictures of frame `number` (from 0), the one that arrived last, in the configured
    // geometry: depth units, row by row, 0 where nothing is measured; RGB bytes. An empty span
    // stands for a stream that is not enabled: its picture is not wanted. Made pictures are the
    // same for the same number.
    virtual void render(std::uint64_t number, std::span<std::uint16_t> depth,
                        std::span<std::uint8_t> color) = 0;

    // The truth behind frame `number`, when the source knows it.
    virtual rs_scene_truth truth(std::uint64_t number) const = 0;
};

// Opens what a user chose, as often as called; null while there is no such camera.
using SourceOpener = std::function<std::unique_ptr<FrameSource>()>;

} // namespace camera
