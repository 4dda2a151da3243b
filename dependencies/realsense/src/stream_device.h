// The life of a camera's streams over any source of pictures: what is enabled, start and stop,
// waiting, how long a picture is good, and the aligned streams.
#pragma once

#include "alignment.h"
#include "clock.h"
#include "device.h"
#include "frame_source.h"
#include "picture_buffer.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace camera {

class StreamDevice : public Device {
  public:
    // A wait fails when no frame comes for `longestWait`; programs know it as 5 seconds.
    explicit StreamDevice(std::unique_ptr<FrameSource> source, Clock& clock = steadyClock(),
                          std::chrono::milliseconds longestWait = std::chrono::seconds(5));

    const char* name() const override { return name_.c_str(); }
    const char* serial() const override { return serial_.c_str(); }
    const char* firmware() const override { return firmware_.c_str(); }

    bool supportsOption(rs_option option) const override;
    void setOption(rs_option option, double value) override;
    const char* takeNotices() override;

    void enable(rs_stream stream, int width, int height, rs_format format, int framerate) override;
    void start(rs_source source) override;
    void stop(rs_source source) override;
    bool streaming() const override { return arrivals_ != nullptr; }

    std::vector<rs_mode_range> modes(rs_stream stream) const override;
    rs_stream_mode currentMode(rs_stream stream) override;
    rs_intrinsics intrinsics(rs_stream stream) override;
    float depthScale() const override;
    rs_extrinsics extrinsics(rs_stream from, rs_stream to) const override;

    void waitForFrames() override;
    bool ended() const override { return ended_; }
    const void* frameData(rs_stream stream) override;

    rs_scene_truth sceneTruth() const override;

  private:
    struct Request {
        StreamRequest mode;
        rs_format format = RS_FORMAT_ANY;
    };
    // One buffer for all frames of a synthetic stream.
    template <class Sample>
    struct AlignedPicture {
        std::vector<Sample> samples;
        bool upToDate = false;
    };

    const CameraGeometry& geometry();
    void requireEnabled(rs_stream stream) const;
    bool renderFrame(std::uint64_t number);
    void forgetFrames();
    const Alignment& alignment();
    const void* colorAlignedToDepth();
    const void* depthAlignedToColor();

    std::unique_ptr<FrameSource> source_;
    Clock& clock_;
    std::string name_;
    std::string serial_;
    std::string firmware_;
    std::chrono::milliseconds longestWait_;
    std::string notices_;

    std::optional<Request> depthRequest_;
    std::optional<Request> colorRequest_;
    std::optional<CameraGeometry> geometry_; // settled since the last enable
    std::optional<Alignment> alignment_;     // of that geometry, once it is needed

    bool started_ = false;                    // at least once since the last enable
    std::unique_ptr<FrameArrivals> arrivals_; // while streaming
    bool ended_ = false;                      // as the last wait has found
    std::optional<std::uint64_t> current_;
    PictureBuffer<std::uint16_t> depth_;
    PictureBuffer<std::uint8_t> color_;
    AlignedPicture<std::uint8_t> colorAligned_;
    AlignedPicture<std::uint16_t> depthAligned_;
};

} // namespace camera
