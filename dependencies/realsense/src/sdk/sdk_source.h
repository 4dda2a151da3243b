// Any device of RealSense SDK 2 as a source of pictures: its sensors driven directly, never through
// the SDK's pipeline, which blocks for seconds without a camera and knows no software devices.
#pragma once

#include "frame_source.h"
#include "sdk/camera_mode.h"
#include "sdk/sdk_device.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace camera::sdk {

class SdkSource final : public FrameSource {
  public:
    // `device` is what `open` gave; it is opened again when it has to be.
    SdkSource(std::unique_ptr<SdkDevice> device, DeviceOpener open);

    std::string name() const override;
    std::string serial() const override;
    std::string firmware() const override;
    float depthScale() const override { return depthScale_; }
    // From the device; the identity, as if taken from one place, where it knows none.
    rs_extrinsics depthToColor() const override { return depthToColor_; }

    // Options of the F200 and SR300 family that the device lacks are accepted and noticed: it
    // then works as it does by itself.
    bool supportsOption(rs_option option) const override;
    void setOption(rs_option option, double value) override;
    std::string takeNotices() override;

    std::vector<rs_mode_range> modes(rs_stream stream) const override;
    CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) override;
    bool paced() const override { return !device_->lossless(); }
    std::unique_ptr<FrameArrivals> start(EnabledStreams enabled, int framerate,
                                         Clock& clock) override;
    void render(std::uint64_t number, std::span<std::uint16_t> depth,
                std::span<std::uint8_t> color) override;
    rs_scene_truth truth(std::uint64_t number) const override;

  private:
    class Arrivals;
    struct Stamp {
        std::uint64_t number = 0;
        double time = 0.0; // milliseconds
        double firstTime = 0.0;
    };

    void readStamp();

    std::unique_ptr<SdkDevice> device_;
    DeviceOpener open_;
    float depthScale_;
    rs_extrinsics depthToColor_;
    StreamRequest depthMode_; // settled by configure
    StreamRequest colorMode_;
    bool hasColor_ = false;
    bool streamed_ = false;                 // since the device was opened
    std::shared_ptr<FrameMailbox> mailbox_; // of the current start
    std::optional<Stamp> stamp_;            // of a recording's frame taken last
    std::set<rs_option> missing_;           // options that were asked for in vain
    std::string notices_;
};

} // namespace camera::sdk
