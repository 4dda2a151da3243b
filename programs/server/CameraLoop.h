// The camera half of the server: runs the pipeline frame by frame, hands the frames to the
// network, and gets a lost camera back.
#pragma once

#include "CameraSession.h"
#include "FrameLayout.h"
#include "FrameLoan.h"
#include "Options.h"
#include "StatusLine.h"
#include "serverClient/frameProtocol.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace server {

class Broadcaster;
class CameraRecording;
class ServerError;
class StopRequest;
class TouchLog;

// All on the thread that calls it.
class CameraLoop {
  public:
    // How long a camera may fail or be silent before it counts as lost.
    static constexpr std::chrono::milliseconds cameraTimeout{1000};

    // `touchLog` and `recording` may be null. Everything passed must outlive the loop.
    CameraLoop(const Options& options, const StopRequest& stop, TouchLog* touchLog,
               CameraRecording* recording = nullptr);

    // Starts the camera; throws ServerError as CameraSession does.
    void open();
    // The document's port; after open().
    int port() const { return session_->port(); }

    // Feeds `broadcaster` until a stop is requested, the frames asked for are done, or the last
    // client has left a server that closes with it.
    void run(Broadcaster& broadcaster);

    // Stops the camera and ends the pipeline, if they run.
    void close() { session_.reset(); }

  private:
    using Clock = std::chrono::steady_clock;

    void announce(Broadcaster& broadcaster);
    void takeFrame(Broadcaster& broadcaster, const QVR::networkFrameData& parts);
    [[nodiscard]] FrameLoan publish(Broadcaster& broadcaster, const QVR::networkFrameData& parts);
    void recover(Broadcaster& broadcaster);
    bool reopen(QVR::networkFrameData& parts);
    void complain(const ServerError& error);
    bool pause(const Broadcaster& broadcaster, std::chrono::nanoseconds duration) const;
    bool finished(const Broadcaster& broadcaster) const;
    double secondsOfFrame() const;
    void logTouches(const QVR::NetworkTouch* records);

    const Options& options_;
    const StopRequest& stop_;
    TouchLog* touchLog_;
    CameraRecording* recording_;
    StatusLine status_;
    std::optional<CameraSession> session_;
    FrameLayout layout_;
    std::chrono::nanoseconds framePeriod_{};
    FrameRef previous_;
    std::string settingsComplaint_; // of this loss of the camera
    Clock::time_point started_;
    Clock::time_point lastGood_;
    std::uint64_t frames_ = 0;
};

} // namespace server
