#include "simulated/simulated_source.h"

#include "simulated/choreography.h"
#include "simulated/color_renderer.h"
#include "simulated/depth_renderer.h"
#include "simulated/faults.h"
#include "simulated/hand_model.h"
#include "simulated/scene_geometry.h"
#include "simulated/sensor.h"

#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>

namespace camera {
namespace {

using namespace simulated;

constexpr ImageSize usualSize{640, 480};
constexpr ImageSize smallestSize{16, 16};
constexpr ImageSize largestSize{1920, 1080};
constexpr int usualFramerate = 60;
constexpr int highestFramerate = 240;

struct Settings {
    Story story;
    double noise = 1.0;
    double holes = 0.0;
    double bend = 0.0;
    Display display = simulated::display();
    bool paced = true;
    ImageSize depth; // 0x0 is any
    ImageSize color;
    int framerate = 0;
};

std::string text(ImageSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

bool fits(ImageSize size) {
    return size.width >= smallestSize.width && size.height >= smallestSize.height &&
           size.width <= largestSize.width && size.height <= largestSize.height;
}

std::string anySize() {
    return "any size from " + text(smallestSize) + " to " + text(largestSize);
}

ImageSize onlySize(const SourceOptions& options, std::string_view key) {
    if (!options.has(key))
        return {};
    const ImageSize size = options.size(key, {});
    if (!fits(size))
        throw std::runtime_error("simulated: " + std::string(key) + "=" + text(size) +
                                 " is not available: " + anySize());
    return size;
}

Settings settingsFrom(const SourceOptions& options) {
    options.acceptNoPositional();
    options.acceptOnly({"scene", "fingers", "seed", "speed", "noise", "holes", "bend", "tilt",
                        "surface", "pace", "depth", "color", "fps", "fault", "lasting"});
    const std::string scene =
        options.choice("scene", sceneNames[0],
                       {sceneNames[0], sceneNames[1], sceneNames[2], sceneNames[3], sceneNames[4],
                        sceneNames[5], sceneNames[6], sceneNames[7], sceneNames[8], sceneNames[9]});
    Settings settings;
    Story& story = settings.story;
    story.scene = *sceneNamed(scene);
    story.fingers = options.integer("fingers", story.fingers, 0, 10);
    story.seed = options.seed("seed", story.seed);
    if (options.has("speed") && story.scene != Scene::Dragging)
        throw std::runtime_error("simulated: speed belongs to scene=dragging, not to scene=" +
                                 scene);
    if (options.has("speed"))
        story.speed = options.number("speed", 0.5, 0.01, 5.0);
    settings.noise = options.number("noise", settings.noise, 0.0, 16.0);
    settings.holes = options.number("holes", settings.holes, 0.0, 100.0);
    settings.bend = options.number("bend", settings.bend, -50.0, 50.0);
    const double tilt = options.number("tilt", 0.0, -15.0, 15.0);
    story.lean = tilt == 0.0 ? 0.0 : std::tan(tilt * 3.14159265358979323846 / 180.0);
    settings.display = displayAt(options.number("surface", usualDistance, 285.0, 1000.0), tilt);
    settings.paced = options.onOff("pace", settings.paced);
    settings.depth = onlySize(options, "depth");
    settings.color = onlySize(options, "color");
    if (options.has("fps"))
        settings.framerate = options.integer("fps", usualFramerate, 1, highestFramerate);
    return settings;
}

rs_mode_range modeRange(ImageSize only, int onlyFramerate) {
    const ImageSize least = only == ImageSize{} ? smallestSize : only;
    const ImageSize most = only == ImageSize{} ? largestSize : only;
    return {{least.width, least.height, onlyFramerate == 0 ? 1 : onlyFramerate},
            {most.width, most.height, onlyFramerate == 0 ? highestFramerate : onlyFramerate}};
}

// What a request comes to, with 0 as any and the usual size where nothing is prescribed.
ImageSize settledSize(const char* stream, const StreamRequest& request, ImageSize only) {
    const ImageSize usual = only == ImageSize{} ? usualSize : only;
    const ImageSize size{request.width == 0 ? usual.width : request.width,
                         request.height == 0 ? usual.height : request.height};
    const bool available = only == ImageSize{} ? fits(size) : size == only;
    if (!available)
        throw std::runtime_error("the simulated camera has no " + std::string(stream) + " mode " +
                                 text(size) +
                                 "; available: " + (only == ImageSize{} ? anySize() : text(only)));
    return size;
}

int settledFramerate(int depth, int color, int only) {
    if (depth != 0 && color != 0 && depth != color)
        throw std::runtime_error("the simulated camera delivers depth and colour at one frame "
                                 "rate, not at " +
                                 std::to_string(depth) + " and " + std::to_string(color));
    const int asked = depth != 0 ? depth : color;
    const int usual = only == 0 ? usualFramerate : only;
    const int framerate = asked == 0 ? usual : asked;
    const bool available =
        only == 0 ? framerate > 0 && framerate <= highestFramerate : framerate == only;
    if (!available)
        throw std::runtime_error(
            "the simulated camera has no frame rate " + std::to_string(framerate) +
            "; available: " +
            (only == 0 ? "1 to " + std::to_string(highestFramerate) : std::to_string(only)));
    return framerate;
}

class SimulatedSource final : public FrameSource {
  public:
    explicit SimulatedSource(const Settings& settings)
        : settings_(settings), sensor_(settings.noise, settings.story.seed, settings.holes),
          depthIntrinsics_(simulated::depthIntrinsics(usualSize.width, usualSize.height)) {}

    std::string name() const override { return "Simulated SR300"; }
    std::string serial() const override { return "SIM" + std::to_string(settings_.story.seed); }
    std::string firmware() const override { return "1.0.0.0"; }
    float depthScale() const override { return metersPerUnit; }
    rs_extrinsics depthToColor() const override { return simulated::depthToColor(); }
    bool paced() const override { return settings_.paced; }

    std::vector<rs_mode_range> modes(rs_stream stream) const override {
        return {modeRange(stream == RS_STREAM_DEPTH ? settings_.depth : settings_.color,
                          settings_.framerate)};
    }

    CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) override {
        const ImageSize depthSize = settledSize("depth", depth, settings_.depth);
        const ImageSize colorSize = settledSize("colour", color, settings_.color);
        framerate_ = settledFramerate(depth.framerate, color.framerate, settings_.framerate);
        depthIntrinsics_ = simulated::depthIntrinsics(depthSize.width, depthSize.height);
        depthRenderer_.emplace(depthIntrinsics_, sensor_, settings_.display, settings_.bend);
        CameraGeometry geometry;
        geometry.depth = depthIntrinsics_;
        geometry.color = colorIntrinsics(colorSize.width, colorSize.height);
        geometry.depthToColor = depthToColor();
        geometry.depthScale = depthScale();
        geometry.framerate = framerate_;
        colorRenderer_.emplace(geometry.color, settings_.display);
        return geometry;
    }

    void render(std::uint64_t number, std::span<std::uint16_t> depth,
                std::span<std::uint8_t> color) override {
        const std::vector<Capsule> capsules = capsulesOf(pose(number));
        if (!depth.empty())
            depthRenderer_->render(capsules, number, depth);
        if (!color.empty())
            colorRenderer_->render(capsules, color);
    }

    rs_scene_truth truth(std::uint64_t number) const override {
        rs_scene_truth truth{};
        truth.frame = number;
        truth.known = 1;
        for (const FingerPose& finger : pose(number).fingers) {
            rs_scene_finger& out = truth.fingers[truth.finger_count];
            const auto [column, row] = project(depthIntrinsics_, finger.tip);
            // The far side of the touch volume leans with the surface.
            const double farSide = farClip + settings_.story.lean * finger.tip.x;
            const bool inVolume = finger.tip.z > nearClip && finger.tip.z < farSide;
            const bool inImage = column >= 0.0 && row >= 0.0 &&
                                 column <= depthIntrinsics_.width - 1 &&
                                 row <= depthIntrinsics_.height - 1;
            const Vector onDisplay = settings_.display.fromCamera(finger.tip);
            out.id = truth.finger_count;
            out.touching = inVolume && inImage ? 1 : 0;
            out.pixel[0] = static_cast<float>(column);
            out.pixel[1] = static_cast<float>(row);
            out.depth = static_cast<float>(finger.tip.z * unitsPerMillimeter);
            out.display[0] = static_cast<float>(onDisplay.x);
            out.display[1] = static_cast<float>(onDisplay.y);
            out.display[2] = static_cast<float>(onDisplay.z);
            ++truth.finger_count;
        }
        return truth;
    }

  private:
    ScenePose pose(std::uint64_t number) const {
        return poseAt(settings_.story, static_cast<double>(number) / framerate_);
    }

    Settings settings_;
    Sensor sensor_;
    int framerate_ = usualFramerate;
    rs_intrinsics depthIntrinsics_;
    std::optional<DepthRenderer> depthRenderer_; // from configure on
    std::optional<ColorRenderer> colorRenderer_;
};

} // namespace

SourceOpener simulatedSourceOpener(const SourceOptions& options) {
    return [settings = settingsFrom(options), course = std::make_shared<FaultCourse>(options)] {
        return underFaults(std::make_unique<SimulatedSource>(settings), course);
    };
}

std::unique_ptr<FrameSource> makeSimulatedSource(const SourceOptions& options) {
    return simulatedSourceOpener(options)();
}

} // namespace camera
