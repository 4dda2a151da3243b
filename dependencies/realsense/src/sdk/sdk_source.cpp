#include "sdk/sdk_source.h"

#include "enum_names.h"
#include "sdk/frame_mailbox.h"
#include "sdk/sdk_codes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

namespace camera::sdk {
namespace {

constexpr rs_extrinsics samePlace{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};

bool isOfTheF200Family(rs_option option) {
    return option >= RS_OPTION_F200_LASER_POWER && option <= RS_OPTION_F200_DYNAMIC_FPS;
}

// These options are bytes in the camera.
float byteFrom(double value) {
    return static_cast<float>(std::isnan(value) ? 0.0 : std::trunc(std::clamp(value, 0.0, 255.0)));
}

// The pose of any depth profile to any colour profile: it belongs to the sensors, whatever the
// mode.
rs_extrinsics poseBetweenSensors(const SdkDevice& device) {
    const rs2::sensor* const depth = device.sensorOf(RS2_STREAM_DEPTH);
    const rs2::sensor* const color = device.sensorOf(RS2_STREAM_COLOR);
    if (!color) {
        return samePlace;
    }
    const auto profileOf = [](const rs2::sensor& sensor, rs2_stream stream) {
        const auto profiles = sensor.get_stream_profiles();
        return *std::find_if(profiles.begin(), profiles.end(),
                             [&](const auto& profile) { return profile.stream_type() == stream; });
    };
    const rs2::stream_profile from = profileOf(*depth, RS2_STREAM_DEPTH);
    const rs2::stream_profile to = profileOf(*color, RS2_STREAM_COLOR);
    try {
        return extrinsicsFrom(from.get_extrinsics_to(to));
    } catch (const rs2::error&) {
        return samePlace; // none was registered
    }
}

StreamRequest modeOf(const rs2::video_stream_profile& profile) {
    return {profile.width(), profile.height(), profile.fps()};
}

// Copies the rows of a picture, which the SDK may have padded.
void copyPicture(const rs2::frame& frame, std::size_t rowBytes, std::size_t rows, void* to) {
    const auto picture = frame.as<rs2::video_frame>();
    const auto stride = static_cast<std::size_t>(picture.get_stride_in_bytes());
    if (static_cast<std::size_t>(picture.get_height()) != rows || stride < rowBytes) {
        throw std::runtime_error("the camera has changed the size of its pictures");
    }
    const auto* const from = static_cast<const std::uint8_t*>(picture.get_data());
    for (std::size_t row = 0; row < rows; ++row) {
        std::memcpy(static_cast<std::uint8_t*>(to) + row * rowBytes, from + row * stride, rowBytes);
    }
}

// The sensors of a device while they stream. Opens and starts them, and takes them apart again in
// the one order that is safe.
class Streaming {
  public:
    Streaming(SdkDevice& device, const CameraMode& mode, EnabledStreams enabled,
              std::shared_ptr<FrameMailbox> mailbox)
        : device_(device), mailbox_(std::move(mailbox)) {
        std::map<const rs2::sensor*, std::vector<rs2::stream_profile>> wanted;
        if (enabled.depth) {
            wanted[device.sensorOf(RS2_STREAM_DEPTH)].push_back(mode.depth);
        }
        if (enabled.color) {
            wanted[device.sensorOf(RS2_STREAM_COLOR)].push_back(*mode.color);
        }
        device.beforeStart(mailbox_);
        try {
            for (const auto& [sensor, profiles] : wanted) {
                sensor->open(profiles);
                open_.push_back(*sensor);
            }
            for (const rs2::sensor& sensor : open_) {
                sensor.start(
                    [mailbox = mailbox_](rs2::frame frame) { mailbox->put(std::move(frame)); });
                ++started_;
            }
            device.rewind();
            mailbox_->open();
            device.afterStart(enabled);
            mailbox_->holdUp();
        } catch (...) {
            stop();
            throw;
        }
    }
    ~Streaming() { stop(); }
    Streaming(const Streaming&) = delete;
    Streaming& operator=(const Streaming&) = delete;

  private:
    // A camera that was unplugged refuses; there is nothing left to stop then.
    void stop() {
        mailbox_->close();
        attempt([&] { device_.beforeStop(); });
        for (std::size_t i = 0; i < started_; ++i) {
            attempt([&] { open_[i].stop(); });
        }
        for (const rs2::sensor& sensor : open_) {
            attempt([&] { sensor.close(); });
        }
    }
    template <class Action>
    static void attempt(Action&& action) {
        try {
            action();
        } catch (const rs2::error&) {
        }
    }

    SdkDevice& device_;
    std::shared_ptr<FrameMailbox> mailbox_;
    std::vector<rs2::sensor> open_;
    std::size_t started_ = 0;
};

} // namespace

class SdkSource::Arrivals : public FrameArrivals {
  public:
    Arrivals(SdkSource& source, EnabledStreams enabled, int framerate, Clock& clock)
        : source_(source), enabled_(enabled), framerate_(framerate), clock_(clock) {
        begin();
    }
    ~Arrivals() override {
        streaming_.reset();
        source_.mailbox_.reset();
    }

    std::optional<std::uint64_t> next(Clock::Time deadline) override {
        while (true) {
            if (!streaming_) {
                begin();
            }
            switch (source_.mailbox_->take(deadline)) {
            case FrameMailbox::Outcome::Frame:
                playedAny_ = true;
                source_.readStamp();
                return number_++;
            case FrameMailbox::Outcome::NoFrame:
                return std::nullopt;
            case FrameMailbox::Outcome::End:
                break;
            }
            if (!source_.device_->loops()) {
                throw EndOfRecording();
            }
            if (!std::exchange(playedAny_, false) || clock_.now() > deadline) {
                return std::nullopt;
            }
            begin();
        }
    }

  private:
    void begin() {
        streaming_.reset();
        source_.mailbox_.reset();
        if (source_.streamed_ && source_.device_->streamsOnce()) {
            source_.device_ = source_.open_();
        }
        source_.streamed_ = true;
        SdkDevice& device = *source_.device_;
        const std::chrono::nanoseconds patience =
            device.lossless() ? std::chrono::hours(24)
                              : std::chrono::nanoseconds(std::chrono::seconds(1)) / framerate_;
        source_.mailbox_ = std::make_shared<FrameMailbox>(enabled_, patience, device.lossless());
        streaming_.emplace(device, chooseMode(device, source_.depthMode_, source_.colorMode_),
                           enabled_, source_.mailbox_);
    }

    SdkSource& source_;
    EnabledStreams enabled_;
    int framerate_;
    Clock& clock_;
    std::optional<Streaming> streaming_;
    std::uint64_t number_ = 0;
    bool playedAny_ = false; // since the recording began anew
};

SdkSource::SdkSource(std::unique_ptr<SdkDevice> device, DeviceOpener open)
    : device_(std::move(device)), open_(std::move(open)), depthScale_(device_->depthScale()),
      depthToColor_(poseBetweenSensors(*device_)) {}

std::string SdkSource::name() const {
    return device_->info(RS2_CAMERA_INFO_NAME, "RealSense camera");
}

std::string SdkSource::serial() const {
    return device_->info(RS2_CAMERA_INFO_SERIAL_NUMBER, device_->label());
}

std::string SdkSource::firmware() const {
    return device_->info(RS2_CAMERA_INFO_FIRMWARE_VERSION, "0.0.0.0");
}

bool SdkSource::supportsOption(rs_option option) const {
    const auto code = optionCode(option);
    return code && device_->hasOption(isColorControl(option), *code);
}

void SdkSource::setOption(rs_option option, double value) {
    if (supportsOption(option)) {
        const bool ofColor = isColorControl(option);
        device_->setOption(ofColor, *optionCode(option),
                           ofColor ? static_cast<float>(value) : byteFrom(value));
    } else if (!isOfTheF200Family(option)) {
        throw std::runtime_error("this camera has no option " + nameOf(option));
    } else if (missing_.insert(option).second) {
        notices_ += (notices_.empty() ? "Camera has no " : ", ") + nameOf(option);
    }
}

std::string SdkSource::takeNotices() {
    return std::exchange(notices_, "");
}

std::vector<rs_mode_range> SdkSource::modes(rs_stream stream) const {
    std::vector<rs_mode_range> ranges;
    for (const rs_stream_mode& mode : availableModes(*device_, stream)) {
        ranges.push_back({mode, mode});
    }
    return ranges;
}

CameraGeometry SdkSource::configure(const StreamRequest& depth, const StreamRequest& color) {
    const CameraMode mode = chooseMode(*device_, depth, color);
    depthMode_ = modeOf(mode.depth);
    hasColor_ = mode.color.has_value();
    CameraGeometry geometry;
    geometry.depth = intrinsicsFrom(mode.depth.get_intrinsics());
    if (hasColor_) {
        colorMode_ = modeOf(*mode.color);
        geometry.color = intrinsicsFrom(mode.color->get_intrinsics());
    }
    geometry.depthToColor = depthToColor_;
    geometry.depthScale = depthScale_;
    geometry.framerate = depthMode_.framerate;
    return geometry;
}

std::unique_ptr<FrameArrivals> SdkSource::start(EnabledStreams enabled, int framerate,
                                                Clock& clock) {
    if (enabled.color && !hasColor_) {
        throw std::runtime_error("this camera has no colour sensor");
    }
    return std::make_unique<Arrivals>(*this, enabled, framerate, clock);
}

void SdkSource::render(std::uint64_t, std::span<std::uint16_t> depth,
                       std::span<std::uint8_t> color) {
    const auto fill = [](const rs2::frame& frame, const StreamRequest& mode, auto picture,
                         std::size_t pixelBytes) {
        if (picture.empty()) {
            return;
        }
        if (!frame) {
            std::fill(picture.begin(), picture.end(), 0);
            return;
        }
        copyPicture(frame, static_cast<std::size_t>(mode.width) * pixelBytes,
                    static_cast<std::size_t>(mode.height), picture.data());
    };
    fill(mailbox_->depth(), depthMode_, depth, 2);
    fill(mailbox_->color(), colorMode_, color, 3);
}

void SdkSource::readStamp() {
    if (!device_->recorded()) {
        return;
    }
    const rs2::frame& frame = mailbox_->leader();
    const double time = frame.get_timestamp();
    stamp_ = Stamp{frame.get_frame_number(), time, stamp_ ? stamp_->firstTime : time};
}

rs_scene_truth SdkSource::truth(std::uint64_t number) const {
    rs_scene_truth truth{};
    truth.frame = number;
    if (stamp_) {
        truth.frame = stamp_->number;
        truth.seconds = (stamp_->time - stamp_->firstTime) / 1000.0;
        truth.timed = 1;
    }
    return truth;
}

} // namespace camera::sdk
