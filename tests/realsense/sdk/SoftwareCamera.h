// A camera of RealSense SDK 2 whose pictures, modes and options are a test's. It feeds frames from
// a thread of its own, as cameras do.
#pragma once

#include "frame_source.h"
#include "realsense/support/ScriptedSource.h"
#include "sdk/sdk_device.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <librealsense2/hpp/rs_internal.hpp>
#include <librealsense2/rs.hpp>

namespace camera_test {

struct SoftwareScript {
    camera::CameraGeometry geometry = smallGeometry();
    std::function<void(std::uint64_t, std::span<std::uint16_t>, std::span<std::uint8_t>)> paint =
        Script{}.paint;
    // From this frame on no more come: the camera has been unplugged.
    std::uint64_t frames = UINT64_MAX;
    bool lossless = true;
    bool hasColor = true;
    bool hasPose = true;
    bool hasDepthUnits = true;
    // Options that can be set, and what was set.
    std::vector<rs2_option> options;
    std::map<rs2_option, float> values;
};

// The SDK's software device with the script's streams: what cameras and recordings are made from.
class SoftwareDevice {
  public:
    explicit SoftwareDevice(const SoftwareScript& script);

    rs2::device device() const { return device_; }
    const rs2::stream_profile& depthProfile() const { return depthProfile_; }
    const rs2::stream_profile& colorProfile() const { return *colorProfile_; }

    // Hands a picture to whoever started the sensor, in this thread.
    void injectDepth(std::uint64_t number, const std::vector<std::uint16_t>& picture);
    void injectColor(std::uint64_t number, const std::vector<std::uint8_t>& picture);

    // Both pictures of a frame, as the script paints them.
    void inject(std::uint64_t number, camera::EnabledStreams enabled);

  private:
    template <class Sample>
    void inject(rs2::software_sensor& sensor, const rs2::stream_profile& profile,
                std::uint64_t number, const std::vector<Sample>& picture, int width,
                int pixelBytes);

    const SoftwareScript& script_;
    rs2::software_device device_;
    rs2::software_sensor depth_;
    std::optional<rs2::software_sensor> color_;
    rs2::stream_profile depthProfile_;
    std::optional<rs2::stream_profile> colorProfile_;
};

class SoftwareCamera final : public camera::sdk::SdkDevice {
  public:
    explicit SoftwareCamera(std::shared_ptr<SoftwareScript> script);
    ~SoftwareCamera() override { beforeStop(); }

    bool hasOption(bool ofColor, rs2_option option) const override;
    void setOption(bool ofColor, rs2_option option, float value) override;
    bool lossless() const override { return script_->lossless; }
    void afterStart(camera::EnabledStreams enabled) override;
    // The SDK crashes when a picture is handed to a stopped sensor.
    void beforeStop() override;

  private:
    SoftwareCamera(std::shared_ptr<SoftwareScript> script, std::unique_ptr<SoftwareDevice> maker);

    std::shared_ptr<SoftwareScript> script_;
    std::unique_ptr<SoftwareDevice> maker_;
    std::atomic<bool> stopping_{false};
    std::thread feeder_;
};

// Records `count` frames of a script with the SDK's recorder.
void recordBag(const std::string& file, const SoftwareScript& script, std::uint64_t count);

} // namespace camera_test
