// A source of pictures that does what a test says and remembers what it was asked.
#pragma once

#include "frame_source.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace camera_test {

// 8 x 6 depth and 16 x 10 colour with a baseline, a turn and distortion: nothing is symmetric, so
// that a mix-up of axes, streams or directions shows.
inline camera::CameraGeometry smallGeometry() {
    camera::CameraGeometry geometry;
    geometry.depth = {8,
                      6,
                      3.5f,
                      2.75f,
                      7.0f,
                      6.5f,
                      RS_DISTORTION_INVERSE_BROWN_CONRADY,
                      {0.1f, -0.05f, 0.01f, -0.02f, 0.03f}};
    geometry.color = {16, 10, 7.25f, 5.5f, 13.0f, 12.0f, RS_DISTORTION_NONE, {0, 0, 0, 0, 0}};
    // 0.96 and 0.28 are cosine and sine of one angle.
    geometry.depthToColor = {{0.96f, 0, -0.28f, 0, 1, 0, 0.28f, 0, 0.96f}, {-0.05f, 0.01f, 0.002f}};
    geometry.depthScale = 0.001f;
    geometry.framerate = 30;
    return geometry;
}

struct Script {
    camera::CameraGeometry geometry = smallGeometry();
    bool paced = true;
    std::function<void(std::uint64_t, std::span<std::uint16_t>, std::span<std::uint8_t>)> paint =
        [](std::uint64_t number, std::span<std::uint16_t> depth, std::span<std::uint8_t> color) {
            for (std::size_t i = 0; i < depth.size(); ++i) {
                depth[i] = static_cast<std::uint16_t>(400 + 100 * number + 7 * i);
            }
            for (std::size_t i = 0; i < color.size(); ++i) {
                color[i] = static_cast<std::uint8_t>(1 + (number * 31 + i) % 255);
            }
        };

    std::vector<std::uint64_t> rendered;
    int configured = 0;
    camera::StreamRequest askedDepth;
    camera::StreamRequest askedColor;
    bool alive = true;
};

class ScriptedSource : public camera::FrameSource {
  public:
    explicit ScriptedSource(std::shared_ptr<Script> script) : script_(std::move(script)) {}
    ~ScriptedSource() override { script_->alive = false; }

    std::string name() const override { return "Scripted camera"; }
    std::string serial() const override { return "0123"; }
    std::string firmware() const override { return "3.2.1.0"; }
    float depthScale() const override { return script_->geometry.depthScale; }
    rs_extrinsics depthToColor() const override { return script_->geometry.depthToColor; }

    std::vector<rs_mode_range> modes(rs_stream stream) const override {
        const auto& there = script_->geometry;
        const rs_intrinsics& lens = stream == RS_STREAM_DEPTH ? there.depth : there.color;
        const rs_stream_mode only{lens.width, lens.height, there.framerate};
        return {{only, only}};
    }
    camera::CameraGeometry configure(const camera::StreamRequest& depth,
                                     const camera::StreamRequest& color) override {
        ++script_->configured;
        script_->askedDepth = depth;
        script_->askedColor = color;
        const auto fits = [](int asked, int there) { return asked == 0 || asked == there; };
        const auto& there = script_->geometry;
        if (!fits(depth.width, there.depth.width) || !fits(depth.height, there.depth.height) ||
            !fits(color.width, there.color.width) || !fits(color.height, there.color.height)) {
            throw std::runtime_error("available: depth 8x6, colour 16x10");
        }
        return there;
    }
    bool paced() const override { return script_->paced; }
    void render(std::uint64_t number, std::span<std::uint16_t> depth,
                std::span<std::uint8_t> color) override {
        script_->rendered.push_back(number);
        script_->paint(number, depth, color);
    }
    rs_scene_truth truth(std::uint64_t number) const override {
        rs_scene_truth truth{};
        truth.frame = number;
        truth.known = 1;
        truth.finger_count = 1;
        truth.fingers[0].pixel[0] = static_cast<float>(number);
        return truth;
    }

  private:
    std::shared_ptr<Script> script_;
};

} // namespace camera_test
