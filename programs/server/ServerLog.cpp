#include "ServerLog.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <utility>

namespace server {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> verboseLog{false};
std::atomic<bool> pipelineQuiet{false};
std::mutex outputMutex;

// How messages begin in which the camera says why it fails.
constexpr std::array<std::string_view, 5> complaintBeginnings = {
    "RealSense error", "No depth cam found", "LibRealSense returned", "Hardware camera",
    "Caught exception while"};

// How other messages begin that a user has to know about.
constexpr std::array<std::string_view, 12> importantBeginnings = {
    "WARNING",
    "Warning",
    "ERROR",
    "Error",
    "Caught exception",
    "Failed to",
    "Using device",
    "Using calibration file",
    "Using projection map file",
    "Could not read data from",
    "Something went wrong",
    "Camera ",
};

// With this message the pipeline announces that a frame failed; the next one says why.
constexpr std::string_view failureAnnouncement = "cameraManager::internalUpdate() e:";

// A setting that is wrong in every frame would fill the terminal sixty times a second, and so
// would a client that is refused and comes again at once.
class RepetitionFilter {
  public:
    bool isNew(const std::string& message, Clock::time_point now) {
        const auto known = std::find_if(recent_.begin(), recent_.end(),
                                        [&](const Entry& entry) { return entry.text == message; });
        if (known != recent_.end() && now - known->shown < std::chrono::seconds(10))
            return false;
        Entry& entry = known != recent_.end() ? *known : recent_[next_++ % recent_.size()];
        entry = {message, now};
        return true;
    }

  private:
    struct Entry {
        std::string text;
        Clock::time_point shown;
    };
    std::array<Entry, 32> recent_;
    std::size_t next_ = 0;
};

std::string& lastComplaint() {
    static std::string text;
    return text;
}

template <typename Beginnings>
bool beginsWithOneOf(std::string_view message, const Beginnings& beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](std::string_view beginning) { return message.starts_with(beginning); });
}

std::string& program() {
    static std::string name = "qvr-server";
    return name;
}

void print(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
}

} // namespace

void ServerLog::setProgram(const std::string& name) {
    program() = name;
}

void ServerLog::setVerbose(bool verbose) {
    verboseLog = verbose;
}

void ServerLog::notice(const std::string& text) {
    const std::lock_guard lock(outputMutex);
    print(program() + ": " + text);
}

void ServerLog::noticeSparingly(const std::string& text) {
    static RepetitionFilter repetitions;
    const std::lock_guard lock(outputMutex);
    if (verboseLog || repetitions.isNew(text, Clock::now()))
        print(program() + ": " + text);
}

void ServerLog::detail(const std::string& text) {
    if (verboseLog)
        notice(text);
}

void ServerLog::setPipelineQuiet(bool quiet) {
    pipelineQuiet = quiet;
}

void ServerLog::receivePipelineMessage(const char* message) {
    static RepetitionFilter repetitions;
    static bool reasonFollows = false;
    const std::lock_guard lock(outputMutex);
    const bool isReason =
        std::exchange(reasonFollows, std::string_view(message).starts_with(failureAnnouncement));
    if (isReason || beginsWithOneOf(message, complaintBeginnings))
        lastComplaint() = message;
    if (!verboseLog && (pipelineQuiet || !(isReason || isImportant(message))))
        return;
    if (verboseLog || repetitions.isNew(message, Clock::now()))
        print(message);
}

bool ServerLog::isImportant(std::string_view message) {
    return message.starts_with(failureAnnouncement) ||
           beginsWithOneOf(message, complaintBeginnings) ||
           beginsWithOneOf(message, importantBeginnings);
}

std::string ServerLog::cameraComplaint() {
    const std::lock_guard lock(outputMutex);
    return lastComplaint();
}

} // namespace server
