#include "cameraTool/recordCamera.h"

#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "cameraTool/ModeSettings.h"
#include "cameraTool/OpenCamera.h"
#include "cameraTool/advice.h"
#include "detection/touchManager.h"
#include "server/CameraLoop.h"
#include "server/CameraRecording.h"
#include "server/CameraSession.h"
#include "server/ServerError.h"
#include "server/ServerLog.h"

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

#include <librealsense/camera_source.h>

namespace cameraTool {

using QVR::cameraManager;
using server::ServerError;

namespace {

volatile std::sig_atomic_t interrupted = 0;

// While one lives, signals that ask the program to end are noted instead.
class Interruption {
  public:
    Interruption() {
        interrupted = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) { interrupted = 1; };
        for (std::size_t i = 0; i < signals.size(); ++i) {
            ::sigaction(signals[i], &action, &before_[i]);
        }
    }
    ~Interruption() {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            ::sigaction(signals[i], &before_[i], nullptr);
        }
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    static bool came() { return interrupted != 0; }

  private:
    static constexpr std::array<int, 3> signals = {SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, 3> before_{};
};

server::Options optionsFor(const Take& take) {
    server::Options options;
    options.program = "qvr-camera";
    options.camera = take.source;
    return options;
}

// Of a camera that does not start; what the pipeline says is in the message already.
ServerError withAdvice(const ServerError& error) {
    const std::string advice = error.code() == server::exitNoCamera
                                   ? adviceOn(error.what(), surroundings())
                                   : std::string();
    return {error.code(), error.what() + (advice.empty() ? "" : "\n" + advice)};
}

// False when the source has ended.
bool nextFrame(std::chrono::steady_clock::time_point& lastGood) {
    while (!Interruption::came()) {
        QVR::networkFrameData parts;
        if (cameraManager::update(parts) == 0) {
            lastGood = std::chrono::steady_clock::now();
            return true;
        }
        if (rs_has_ended(cameraManager::get()->camera->device, nullptr) != 0) {
            return false;
        }
        if (std::chrono::steady_clock::now() - lastGood >= server::CameraLoop::cameraTimeout) {
            throw ServerError(server::exitNoCamera, "the camera gives no pictures any more: " +
                                                        server::ServerLog::cameraComplaint());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

void play(const Take& take, server::CameraRecording& recording) {
    const Interruption interruption;
    const auto start = std::chrono::steady_clock::now();
    auto lastGood = start;
    std::uint64_t frames = 0;
    while ((!take.frames || frames < *take.frames) && !recording.ended() && nextFrame(lastGood)) {
        const double seconds = std::chrono::duration<double>(lastGood - start).count();
        if (take.seconds && seconds > *take.seconds) {
            return;
        }
        const QVR::NetworkTouch* records = nullptr;
        cameraManager::get()->touches->getTouches(&records);
        recording.takeFrame(frames, seconds, records);
        ++frames;
    }
}

bool has(const std::string& uri, const char* key) {
    return uri.find("," + std::string(key) + "=") != std::string::npos ||
           uri.find(":" + std::string(key) + "=") != std::string::npos;
}

std::string with(const std::string& uri, const char* key, const char* value) {
    if (has(uri, key)) {
        return uri;
    }
    return uri + (uri.find(':') == std::string::npos ? ":" : ",") + key + "=" + value;
}

std::string uriOf(const std::string& input) {
    std::error_code ignored;
    if (std::filesystem::is_directory(input, ignored)) {
        return "images:" + input;
    }
    return std::filesystem::is_regular_file(input, ignored) ? "bag:" + input : input;
}

} // namespace

void recordCamera(const Take& take) {
    const server::Options options = optionsFor(take);
    server::ServerLog::setProgram(options.program);
    server::CameraRecording recording(
        take.folder, 1, take.whole ? recording::WhenFull::wait : recording::WhenFull::drop);
    const ModeSettings settings(take.mode);
    try {
        const server::CameraSession session(options);
        recording.cameraStarted(options);
        play(take, recording);
    } catch (const ServerError& error) {
        throw withAdvice(error);
    }
    const bool broken = recording.ended();
    recording.finish();
    if (broken || recording.ended()) {
        throw ServerError(server::exitUnexpected, "the recording is not whole");
    }
}

std::string playedOnce(const std::string& input) {
    const std::string uri = uriOf(input);
    const std::string scheme = uri.substr(0, uri.find(':'));
    if (scheme == "realsense") {
        throw ServerError(server::exitBadOption, "a connected camera is not converted but "
                                                 "recorded: qvr-camera record");
    }
    const bool recorded = scheme == "images" || scheme == "bag";
    if (!recorded && scheme != "simulated") {
        throw ServerError(server::exitBadOption, "there is no file or folder '" + input + "'");
    }
    return with(recorded ? with(uri, "loop", "off") : uri, "pace", "off");
}

bool ends(const std::string& uri) {
    return has(uri, "loop") && uri.find("loop=on") == std::string::npos;
}

Mode ownMode() {
    const OpenCamera camera({});
    const rs_stream_mode depth = camera.mode(RS_STREAM_DEPTH);
    const rs_stream_mode color = camera.hasColor() ? camera.mode(RS_STREAM_COLOR) : depth;
    return {depth.width, depth.height, color.width, color.height, depth.framerate};
}

} // namespace cameraTool
