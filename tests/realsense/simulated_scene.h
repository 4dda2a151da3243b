// Shorthand for tests that look at the simulated camera.
#pragma once

#include "simulated/simulated_source.h"

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace simulated_tests {

// What stands behind "simulated:" in a camera URI.
inline camera::SourceOptions options(const std::string& keys) {
    camera::SourceOptions::Values values;
    std::istringstream in(keys);
    for (std::string item; std::getline(in, item, ',');) {
        const std::size_t equals = item.find('=');
        values.emplace_back(item.substr(0, equals), item.substr(equals + 1));
    }
    return camera::SourceOptions("simulated", "", values);
}

struct Pictures {
    std::vector<std::uint16_t> depth;
    std::vector<std::uint8_t> color;

    bool operator==(const Pictures&) const = default;
};

// A configured source and the pictures it makes.
class Scene {
  public:
    explicit Scene(const std::string& keys, camera::StreamRequest depth = {},
                   camera::StreamRequest color = {})
        : source_(camera::makeSimulatedSource(options(keys))),
          geometry_(source_->configure(depth, color)) {}

    camera::FrameSource& source() { return *source_; }
    const camera::CameraGeometry& geometry() const { return geometry_; }
    int width() const { return geometry_.depth.width; }
    int height() const { return geometry_.depth.height; }

    std::vector<std::uint16_t> depth(std::uint64_t frame) {
        std::vector<std::uint16_t> picture(static_cast<std::size_t>(width()) *
                                           static_cast<std::size_t>(height()));
        source_->render(frame, picture, {});
        return picture;
    }

    Pictures pictures(std::uint64_t frame) {
        Pictures result;
        result.depth.resize(static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()));
        result.color.resize(static_cast<std::size_t>(geometry_.color.width) *
                            static_cast<std::size_t>(geometry_.color.height) * 3);
        source_->render(frame, result.depth, result.color);
        return result;
    }

    rs_scene_truth truth(std::uint64_t frame) const { return source_->truth(frame); }

  private:
    std::unique_ptr<camera::FrameSource> source_;
    camera::CameraGeometry geometry_;
};

} // namespace simulated_tests
