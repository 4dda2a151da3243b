#include "CameraLoop.h"

#include "Broadcaster.h"
#include "CameraRecording.h"
#include "CameraSource.h"
#include "ServerError.h"
#include "ServerLog.h"
#include "StopRequest.h"
#include "TouchLog.h"
#include "camera/cameraManager.h"
#include "detection/touchManager.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <span>
#include <utility>

namespace server {

using namespace std::chrono_literals;
using QVR::cameraManager;

namespace {

constexpr std::chrono::nanoseconds firstRetryDelay = 250ms;
constexpr std::chrono::nanoseconds longestRetryDelay = 5s;

// Smaller frames are copied in less time than it takes to wait for their being sent.
constexpr std::size_t worthLending = std::size_t{64} * 1024;

} // namespace

CameraLoop::CameraLoop(const Options& options, const StopRequest& stop, TouchLog* touchLog,
                       CameraRecording* recording)
    : options_(options), stop_(stop), touchLog_(touchLog), recording_(recording),
      status_(options.statsInterval), started_(Clock::now()), lastGood_(started_) {}

void CameraLoop::open() {
    session_.emplace(options_);
}

void CameraLoop::announce(Broadcaster& broadcaster) {
    const FrameLayout layout(session_->header());
    if (layout.frameBytes() != layout_.frameBytes())
        previous_.reset();
    layout_ = layout;
    framePeriod_ = session_->framePeriod();
    if (recording_ != nullptr)
        recording_->cameraStarted(options_);
    broadcaster.announce(session_->header(), framePeriod_);
}

void CameraLoop::run(Broadcaster& broadcaster) {
    started_ = lastGood_ = Clock::now();
    announce(broadcaster);
    while (!finished(broadcaster)) {
        QVR::networkFrameData parts;
        if (cameraManager::update(parts) == 0) {
            takeFrame(broadcaster, parts);
        } else if (Clock::now() - lastGood_ >=
                   Broadcaster::cameraSilence(cameraTimeout, framePeriod_)) {
            recover(broadcaster);
        } else {
            // One bad frame is no lost camera: hosts get the last images and touches again. The
            // images at hand may be the very ones whose size was found wrong.
            parts.color = nullptr;
            parts.depth = nullptr;
            { const FrameLoan loan = publish(broadcaster, parts); }
            stop_.waitFor(framePeriod_);
        }
        status_.printWhenDue(broadcaster.counters());
    }
}

void CameraLoop::takeFrame(Broadcaster& broadcaster, const QVR::networkFrameData& parts) {
    lastGood_ = Clock::now();
    const FrameLoan loan = publish(broadcaster, parts);
    const QVR::NetworkTouch* records = parts.touches;
    if (records == nullptr)
        cameraManager::get()->touches->getTouches(&records);
    if (touchLog_ != nullptr)
        logTouches(records);
    if (recording_ != nullptr)
        recording_->takeFrame(frames_, secondsOfFrame(), records);
    status_.countFrame(records);
    ++frames_;
}

// The pipeline is not to go on before the loan has ended.
FrameLoan CameraLoop::publish(Broadcaster& broadcaster, const QVR::networkFrameData& parts) {
    const FrameRef frame = broadcaster.acquire();
    if (!frame) {
        status_.countLeftOut();
        return {};
    }
    const FrameRef before = std::exchange(previous_, frame);
    const auto places = layout_.inPlace(parts);
    if (places && layout_.frameBytes() >= worthLending) {
        FrameLoan loan(frame, layout_, parts, *places, lastGood_ + framePeriod_ / 4);
        broadcaster.publish(frame);
        return loan;
    }
    layout_.compose(parts, before ? std::as_const(*before).bytes() : std::span<const std::byte>(),
                    frame->bytes());
    broadcaster.publish(frame);
    return {};
}

double CameraLoop::secondsOfFrame() const {
    return std::chrono::duration<double>(lastGood_ - started_).count();
}

void CameraLoop::logTouches(const QVR::NetworkTouch* records) {
    touchLog_->write(frames_, secondsOfFrame(), records, *cameraManager::get()->touches,
                     currentSceneTruth());
}

void CameraLoop::recover(Broadcaster& broadcaster) {
    broadcaster.cameraLost(lastGood_);
    settingsComplaint_.clear();
    ServerLog::setPipelineQuiet(true);
    std::chrono::nanoseconds delay = firstRetryDelay;
    QVR::networkFrameData parts;
    bool back = false;
    while (!back && pause(broadcaster, delay)) {
        back = reopen(parts);
        delay = std::min(2 * delay, longestRetryDelay);
    }
    ServerLog::setPipelineQuiet(false);
    if (!back)
        return;
    announce(broadcaster);
    takeFrame(broadcaster, parts);
}

// A camera is back when it delivers, not when it opens. Everything is made anew: only a new
// context sees a camera that was unplugged.
bool CameraLoop::reopen(QVR::networkFrameData& parts) {
    session_.reset();
    try {
        session_.emplace(options_);
    } catch (const ServerError& error) {
        complain(error);
        return false;
    } catch (const std::exception& error) {
        ServerLog::detail(error.what());
        return false;
    }
    return cameraManager::update(parts) == 0;
}

// A camera that is away is no news. A document that cannot be used any more needs somebody, once.
void CameraLoop::complain(const ServerError& error) {
    if (error.code() != exitBadSettings)
        ServerLog::detail(error.what());
    else if (std::exchange(settingsComplaint_, error.what()) != error.what())
        ServerLog::notice(error.what());
}

// False when the server is to end. In slices, for a client's leaving wakes nobody.
bool CameraLoop::pause(const Broadcaster& broadcaster, std::chrono::nanoseconds duration) const {
    const Clock::time_point end = Clock::now() + duration;
    while (!finished(broadcaster)) {
        const std::chrono::nanoseconds left = end - Clock::now();
        if (left <= std::chrono::nanoseconds::zero())
            return true;
        stop_.waitFor(std::min<std::chrono::nanoseconds>(left, 50ms));
    }
    return false;
}

bool CameraLoop::finished(const Broadcaster& broadcaster) const {
    if (stop_.requested() || (options_.frames && frames_ >= *options_.frames))
        return true;
    return cameraManager::serverAutoClose && !options_.keepRunning &&
           broadcaster.counters().abandoned;
}

} // namespace server
