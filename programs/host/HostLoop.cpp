#include "host/HostLoop.h"

#include "host/PluginMessages.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr float moveDistance = 1.0f; // a millimetre or a pixel
constexpr double firstRetryPause = 0.05;
constexpr double longestRetryPause = 0.5;
constexpr std::size_t rateFrames = 60;
// A server that fills in for a lost camera begins after a second.
constexpr int receiveTimeoutMs = 2000;

std::string nameOf(const std::optional<ServerAddress>& server) {
    return server ? server->host + ":" + std::to_string(server->port)
                  : std::string("the address in touch_client.json (else localhost:27016)");
}

} // namespace

HostLoop::HostLoop(const PluginFunctions& plugin, LoopOptions options, StopSwitch& stop,
                   Observer observer)
    : plugin_(plugin), options_(std::move(options)), stop_(stop), observer_(std::move(observer)),
      start_(std::chrono::steady_clock::now()), table_(moveDistance) {
    state_.server = nameOf(options_.server);
}

bool HostLoop::run() {
    observer_(state_, false);
    startClient();
    while (!finished()) {
        const double updateStart = now();
        const int result = plugin_.update();
        if (stop_.stopAsked() && result < 0) {
            break; // the failure is our own interruption
        }
        if (result == 0) {
            takeFrame();
        } else {
            takeFailure(result);
        }
        observer_(state_, result == 0 && std::exchange(newConnection_, false));
        if (result == 0) {
            pauseUntilNextUpdate(updateStart);
        } else {
            stop_.pause(retryPause_);
        }
    }
    plugin_.shutDown();
    return state_.frames > 0;
}

void HostLoop::startClient() {
    plugin_.setReceiveTimeout(receiveTimeoutMs);
    if (options_.server) {
        plugin_.initClientWithCustomServer(options_.server->host.c_str(), options_.server->port);
    } else {
        plugin_.init();
    }
    // Whatever the settings file says: this loop counts on updates that go on after a failure.
    plugin_.setReconnectReadsHeader(true);
}

void HostLoop::takeFrame() {
    state_.result = 0;
    state_.now = now();
    state_.lastFrame = state_.now;
    ++state_.frames;
    if (newConnection_ && options_.projectionMap) {
        plugin_.loadProjectionMap(*options_.projectionMap);
    }
    state_.connection = Connection::connected;
    state_.depthWidth = std::max(0, plugin_.getDimX());
    state_.depthHeight = std::max(0, plugin_.getDimY());
    state_.touches = readTouches();
    state_.changes = table_.update(state_.touches, state_.now);
    state_.live = table_.touches();
    state_.downCount = table_.downCount();
    state_.message = PluginMessages::notable();
    retryPause_ = 0;

    arrivals_.push_back(state_.now);
    if (arrivals_.size() > rateFrames) {
        arrivals_.erase(arrivals_.begin());
    }
    const double span = arrivals_.back() - arrivals_.front();
    state_.frameRate = span > 0 ? static_cast<double>(arrivals_.size() - 1) / span : 0;
}

void HostLoop::takeFailure(int result) {
    state_.result = result;
    state_.now = now();
    state_.connection = state_.frames > 0 ? Connection::lost : Connection::waiting;
    state_.frameRate = 0;
    state_.touches.clear();
    state_.changes = table_.liftAll();
    state_.live.clear();
    state_.message = PluginMessages::notable();
    arrivals_.clear();
    retryPause_ = std::clamp(2 * retryPause_, firstRetryPause, longestRetryPause);
    newConnection_ = true;
}

std::vector<Touch> HostLoop::readTouches() const {
    std::vector<Touch> touches;
    plugin_.prepareTouchCollection();
    const int slots = plugin_.getTouchPoolSize();
    for (int slot = 0; slot < slots; ++slot) {
        Touch touch{slot, 0, 0, 0};
        touch.x = plugin_.getTouchData();
        touch.y = plugin_.getTouchData();
        touch.z = plugin_.getTouchData();
        const bool empty = touch.x == -1.0f && touch.y == -1.0f && touch.z == -1.0f;
        if (!empty) {
            touches.push_back(touch);
        }
    }
    return touches;
}

bool HostLoop::finished() const {
    if (stop_.stopAsked()) {
        return true;
    }
    if (!options_.frames) {
        return false;
    }
    return state_.frames >= *options_.frames ||
           (state_.frames == 0 && now() >= options_.firstFrameSeconds);
}

double HostLoop::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void HostLoop::pauseUntilNextUpdate(double updateStart) {
    const double pause = updateStart + 1.0 / options_.updatesPerSecond - now();
    if (pause > 0) {
        stop_.pause(pause);
    }
}

} // namespace host
