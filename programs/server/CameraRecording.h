// The server's --record: what the camera delivers and what is sent for it, kept in a folder.
#pragma once

#include "recording/Recorder.h"
#include "recording/RecordingFolder.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace server {

struct Options;

// On the camera's thread, which it makes wait for the disk only when told to.
class CameraRecording {
  public:
    // Throws ServerError (exitBadOption) when the folder cannot be had or is not empty.
    // One in `every` frames is kept.
    CameraRecording(const std::string& folder, std::uint64_t every,
                    recording::WhenFull whenFull = recording::WhenFull::drop);
    // As finish().
    ~CameraRecording();
    CameraRecording(const CameraRecording&) = delete;
    CameraRecording& operator=(const CameraRecording&) = delete;

    // To be called when the pipeline is up, before its first frame. The first time this writes
    // what the recording is of, and throws ServerError (exitBadOption) when it cannot. Afterwards
    // the recording goes on, or ends with a notice when the camera or the settings are others.
    void cameraStarted(const Options& options);

    // Keeps the pipeline's current frame. `number` and `seconds` hold for a camera that has none
    // of its own; `records` are the ten records of its touches.
    void takeFrame(std::uint64_t number, double seconds, const QVR::NetworkTouch* records);

    // Whether it has ended before its time; a notice has said why.
    bool ended() const;

    // Writes what waits to be written, and says how much the recording holds.
    void finish();

  private:
    using Clock = std::chrono::steady_clock;
    using Settings = std::map<std::string, std::string>;

    void begin(const recording::Description& description);
    void end(const std::string& why);
    void reportDropped();

    recording::RecordingFolder folder_;
    std::uint64_t every_;
    recording::WhenFull whenFull_;
    recording::Description description_;
    Settings settings_;
    std::optional<recording::Recorder> recorder_;
    bool ended_ = false;
    bool restarted_ = false;
    recording::Tracking before_; // of the next frame
    std::uint64_t reportedDrops_ = 0;
    Clock::time_point reported_;
};

} // namespace server
