// What RealSense SDK 2 calls a device, be it a camera, a recording or a test's own, and what has
// to be done around its streaming. Where the SDK crashes instead of failing, the ways around it
// are in the classes derived from this one.
#pragma once

#include "frame_source.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <librealsense2/rs.hpp>

namespace camera::sdk {

class FrameMailbox;

class SdkDevice {
  public:
    // A device with a sensor for depth; throws std::runtime_error for others.
    explicit SdkDevice(rs2::device device);
    virtual ~SdkDevice() = default;

    const rs2::device& device() const { return device_; }

    // What the device says of itself, or `otherwise` when it says nothing.
    std::string info(rs2_camera_info what, const std::string& otherwise) const;
    // What to call a device that knows no serial number.
    virtual std::string label() const { return "unknown"; }

    // Options of the depth or the colour sensor. Setting throws rs2::error.
    virtual bool hasOption(bool ofColor, rs2_option option) const;
    virtual void setOption(bool ofColor, rs2_option option, float value);

    // Metres in one depth unit; throws when the device does not tell.
    float depthScale() const;

    // Frames wait for the program rather than get lost.
    virtual bool lossless() const { return false; }
    // It streams once only and is opened anew for each time.
    virtual bool streamsOnce() const { return false; }
    // Its frames are of a former time, whose numbers and times they bear.
    virtual bool recorded() const { return false; }
    // Plays from the beginning when it has come to the end.
    virtual bool loops() const { return false; }

    // The sensors are about to start; frames go to `mailbox`.
    virtual void beforeStart(std::shared_ptr<FrameMailbox> /*mailbox*/) {}
    // All sensors have started, one after the other; what they have delivered so far is dropped.
    virtual void rewind() {}
    // From now on frames of these streams count.
    virtual void afterStart(EnabledStreams /*enabled*/) {}
    // The sensors are about to stop, and `mailbox` is closed. No frame comes from the device's own
    // threads when this returns.
    virtual void beforeStop() {}

    // The sensor that a stream comes from; null when there is none.
    const rs2::sensor* sensorOf(rs2_stream stream) const;

  private:
    rs2::device device_;
    std::vector<rs2::sensor> sensors_;
};

// Opens what a user chose; null while there is no such camera, std::runtime_error when it cannot
// be used.
using DeviceOpener = std::function<std::unique_ptr<SdkDevice>()>;

} // namespace camera::sdk
