// A file that the SDK's recorder has written (.bag), played as a camera.
#pragma once

#include "sdk/sdk_device.h"
#include "source_options.h"

#include <memory>
#include <string>

namespace camera::sdk {

// What bag:FILE[,loop=on|off,pace=on|off] chooses.
struct RecordingOptions {
    std::string file;
    bool loop = true;
    bool paced = true;
};

RecordingOptions recordingOptions(const SourceOptions& options);

// With pace=off every recorded depth frame is delivered, whenever the program asks for it; else
// they come at the times at which they were recorded. A recording holds neither the distortion of
// lenses nor, when it was not made from a camera, the pose between its sensors.
class Recording final : public SdkDevice {
  public:
    explicit Recording(const RecordingOptions& options);
    ~Recording() override;

    std::string label() const override { return options_.file; }
    bool lossless() const override { return !options_.paced; }
    bool streamsOnce() const override { return true; }
    bool recorded() const override { return true; }
    bool loops() const override { return options_.loop; }

    void beforeStart(std::shared_ptr<FrameMailbox> mailbox) override;
    void rewind() override;
    void afterStart(EnabledStreams enabled) override;
    void beforeStop() override;

  private:
    Recording(const RecordingOptions& options, rs2::context context);
    Recording(const RecordingOptions& options, rs2::context context, rs2::playback player);

    RecordingOptions options_;
    rs2::context context_;
    rs2::playback player_;
};

} // namespace camera::sdk
