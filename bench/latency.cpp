// qvr-latency: the time from the return of the camera's wait to the touch values in the host's
// hands, over loopback. Server and host are the shipped code on threads of one process, so that
// one clock measures both ends. Prints JSON on standard output.
#include "Broadcaster.h"
#include "CameraLoop.h"
#include "CameraSource.h"
#include "NetworkThread.h"
#include "Options.h"
#include "StopRequest.h"
#include "camera/cameraManager.h"
#include "client/plugin.h"
#include "foundation/utils.h"
#include "latencyCamera.h"
#include "support/TemporaryVolume.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <future>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <json11.hpp>

namespace {

using Clock = std::chrono::steady_clock;
using Json = json11::Json;

constexpr std::size_t framesBeforeMeasuring = 60;

struct Setup {
    const char* streams;
    bool images;
    int colorWidth;
    int colorHeight;
};

constexpr Setup setups[] = {
    {"touches only", false, 640, 480},
    {"all streams", true, 640, 480},
    {"all streams, 1920x1080 colour", true, 1920, 1080},
};

void ignoreMessage(const char*) {}

std::string fileText(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    if (text.str().empty()) {
        throw std::runtime_error("cannot read " + path);
    }
    return text.str();
}

std::string settingsFor(const Setup& setup) {
    std::string error;
    Json::object document =
        Json::parse(fileText(QVR_SIMULATED_SETTINGS "/touch.json"), error).object_items();
    document["colorResX"] = setup.colorWidth;
    document["colorResY"] = setup.colorHeight;
    return Json(document).dump();
}

// As qvr-server does it, on a port that the system chooses.
class Server {
  public:
    explicit Server(const Setup& setup) {
        options_.camera = "simulated:scene=dragging,fingers=5,pace=off";
        options_.keepRunning = true;
        options_.color = options_.depth = options_.processed = setup.images;
        options_.touch = true;
        server::selectCameraSource(options_);
        server::BroadcasterSettings settings;
        settings.endpoint = {boost::asio::ip::address_v4::loopback(), 0};
        broadcaster_.emplace(context_, settings,
                             [](const std::string&, server::Broadcaster::Weight) {});
        network_.emplace(context_, stop_);
        std::promise<void> started;
        camera_ = std::thread([this, &started] { runCamera(started); });
        try {
            started.get_future().get();
        } catch (...) {
            camera_.join();
            throw;
        }
    }
    ~Server() {
        stop_.request();
        if (camera_.joinable()) {
            camera_.join();
        }
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    unsigned int port() const { return broadcaster_->endpoint().port(); }
    std::uint64_t skippedFrames() const { return broadcaster_->counters().skippedFrames; }

  private:
    void runCamera(std::promise<void>& started) {
        server::CameraLoop loop(options_, stop_, nullptr);
        try {
            loop.open();
        } catch (...) {
            started.set_exception(std::current_exception());
            return;
        }
        started.set_value();
        loop.run(*broadcaster_);
        loop.close();
    }

    server::Options options_;
    server::StopRequest stop_;
    boost::asio::io_context context_;
    std::optional<server::Broadcaster> broadcaster_;
    std::optional<server::NetworkThread> network_; // ends before what it works on
    std::thread camera_;
};

struct HostFrame {
    Clock::time_point valuesRead;
    Clock::time_point texturesWritten;
    bench::TouchValues values;
};

// A host's life as the guide describes it, with textures for what is sent.
class Host {
  public:
    Host(unsigned int port, bool images) : images_(images) {
        initClientWithCustomServer("127.0.0.1", port);
        if (images) {
            color_.resize(pixels(getColorDimX(), getColorDimY()));
            depth_.resize(pixels(getDimX(), getDimY()));
            processed_.resize(depth_.size());
            setColorTexture(color_.data());
            setDepthTexture(depth_.data());
            setProcessedTexture(processed_.data());
        }
    }
    ~Host() { shutDown(); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    HostFrame frame() {
        if (update() != QVR_UPDATE_OK || getTouchPoolSize() != 10) {
            throw std::runtime_error("no frame from the server");
        }
        HostFrame frame;
        prepareTouchCollection();
        for (float& value : frame.values) {
            value = getTouchData();
        }
        frame.valuesRead = Clock::now();
        if (images_) {
            updateColorTexture();
            updateDepthTexture();
            updateProcessedTexture();
        }
        frame.texturesWritten = Clock::now();
        return frame;
    }

  private:
    static std::size_t pixels(int width, int height) {
        return 4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }

    bool images_;
    std::vector<unsigned char> color_;
    std::vector<unsigned char> depth_;
    std::vector<unsigned char> processed_;
};

// Keeps one processor busy while it exists.
class BusyCore {
  public:
    BusyCore()
        : thread_([this] {
              while (!ended_.load(std::memory_order_relaxed)) {
              }
          }) {}
    ~BusyCore() {
        ended_ = true;
        thread_.join();
    }
    BusyCore(const BusyCore&) = delete;
    BusyCore& operator=(const BusyCore&) = delete;

  private:
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

double quantile(std::vector<double> values, double share) {
    const auto place = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(place),
                     values.end());
    return values[place];
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

Json::object measure(const Setup& setup, bool busy, std::size_t frameCount) {
    const support::TemporaryVolume volume;
    volume.write("QVR_calibration/touch.json", settingsFor(setup));
    volume.write("QVR_calibration/touch_projectionMap.json",
                 fileText(QVR_SIMULATED_SETTINGS "/touch_projectionMap.json"));
    std::vector<HostFrame> received;
    std::uint64_t skipped = 0;
    std::size_t frameBytes = 0;
    {
        Server server(setup);
        Host host(server.port(), setup.images);
        std::optional<BusyCore> load;
        if (busy) {
            load.emplace();
        }
        for (std::size_t i = 0; i < framesBeforeMeasuring; ++i) {
            host.frame();
        }
        const std::uint64_t skippedBefore = server.skippedFrames();
        for (std::size_t i = 0; i < frameCount; ++i) {
            received.push_back(host.frame());
        }
        skipped = server.skippedFrames() - skippedBefore;
        QVR::ProtocolHeader header;
        QVR::cameraManager::get()->getNetworkFrameInfo(header);
        frameBytes = QVR::utils::getNetworkFrameSize(header);
    }

    const bench::FrameMatcher matcher(bench::takeCameraFrames());
    std::vector<double> touches;
    std::vector<double> textures;
    for (const HostFrame& frame : received) {
        if (const auto start = matcher.startOf(frame.values, frame.valuesRead)) {
            touches.push_back(milliseconds(frame.valuesRead - *start));
            textures.push_back(milliseconds(frame.texturesWritten - *start));
        }
    }
    // Too few would mean that late frames are among those that were not known again.
    if (touches.size() < frameCount * 9 / 10) {
        throw std::runtime_error("only " + std::to_string(touches.size()) + " of " +
                                 std::to_string(frameCount) + " frames were known again");
    }
    const double seconds =
        milliseconds(received.back().valuesRead - received.front().valuesRead) / 1000.0;
    return {
        {"streams", setup.streams},
        {"beside", busy ? "a busy core" : "nothing"},
        {"frameBytes", static_cast<double>(frameBytes)},
        {"frames", static_cast<double>(touches.size())},
        {"skipped", static_cast<double>(skipped)},
        {"framesPerSecond", static_cast<double>(received.size() - 1) / seconds},
        {"p50", quantile(touches, 0.50)},
        {"p99", quantile(touches, 0.99)},
        {"texturesP50", quantile(textures, 0.50)},
        {"texturesP99", quantile(textures, 0.99)},
    };
}

} // namespace

int main(int argc, char** argv) {
    const long frameCount = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 600;
    if (argc > 2 || frameCount < 100) {
        std::fprintf(stderr, "usage: qvr-latency [FRAMES], at least 100 (default 600)\n");
        return 2;
    }
    registerDebugCallback(&ignoreMessage);
    try {
        Json::array results;
        for (const Setup& setup : setups) {
            for (const bool busy : {false, true}) {
                std::fprintf(stderr, "latency: %s beside %s\n", setup.streams,
                             busy ? "a busy core" : "nothing");
                results.push_back(measure(setup, busy, static_cast<std::size_t>(frameCount)));
            }
        }
        std::printf("%s\n", Json(results).dump().c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qvr-latency: %s\n", error.what());
        return 1;
    }
}
