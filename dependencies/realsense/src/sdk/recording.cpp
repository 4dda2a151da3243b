#include "sdk/recording.h"

#include "sdk/frame_mailbox.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace camera::sdk {
namespace {

// So much faster than recorded that no frame is waited for.
constexpr float withoutPace = 1e6f;

rs2::playback load(rs2::context& context, const std::string& file) {
    try {
        return context.load_device(file);
    } catch (const rs2::error& error) {
        throw std::runtime_error("cannot play " + file + ": " + error.what());
    }
}

} // namespace

RecordingOptions recordingOptions(const SourceOptions& options) {
    options.acceptOnly({"loop", "pace"});
    if (options.positional().empty()) {
        throw std::runtime_error("camera source \"bag\" needs a file: bag:FILE");
    }
    return {options.positional(), options.onOff("loop", true), options.onOff("pace", true)};
}

// A context for this file alone: the SDK crashes when one that holds a file is enumerated, or
// opens a file for the second time.
Recording::Recording(const RecordingOptions& options) : Recording(options, rs2::context()) {}

Recording::Recording(const RecordingOptions& options, rs2::context context)
    : Recording(options, context, load(context, options.file)) {}

Recording::Recording(const RecordingOptions& options, rs2::context context, rs2::playback player)
    : SdkDevice(player), options_(options), context_(std::move(context)),
      player_(std::move(player)) {}

Recording::~Recording() = default;

void Recording::beforeStart(std::shared_ptr<FrameMailbox> mailbox) {
    // The flag means the opposite of its name: set, each frame is delivered before the next one
    // is read, so that none gets lost.
    player_.set_real_time(true);
    if (!options_.paced) {
        player_.set_playback_speed(withoutPace);
    }
    player_.set_status_changed_callback([mailbox](rs2_playback_status status) {
        if (status == RS2_PLAYBACK_STATUS_STOPPED) {
            mailbox->end();
        }
    });
    player_.pause();
}

// Reading begins with the first sensor, so that the frames of the others would be lost at first. A
// start reads once even while paused, at some time after the sensor has started; a pause waits
// until that read has been told, so that it comes before the way back and takes no frame from
// behind it.
void Recording::rewind() {
    player_.pause();
    player_.seek(std::chrono::nanoseconds(0));
}

void Recording::afterStart(EnabledStreams) {
    player_.resume();
}

// The thread that reads the file must be idle before its sensors are stopped: it would deliver to
// what is being taken apart. At the end of the file it stops the sensors itself, after it has said
// so. Each pause waits until what that thread was told before is done; one more read may have been
// told while the first one came.
void Recording::beforeStop() {
    player_.pause();
    player_.pause();
}

} // namespace camera::sdk
