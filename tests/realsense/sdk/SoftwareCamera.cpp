#include "realsense/sdk/SoftwareCamera.h"

#include <algorithm>
#include <cstring>

namespace camera_test {
namespace {

// Streams made by the SDK itself are numbered from 0.
constexpr int firstId = 1000;

rs2_intrinsics lensOf(const rs_intrinsics& lens) {
    rs2_intrinsics result{lens.width,
                          lens.height,
                          lens.ppx,
                          lens.ppy,
                          lens.fx,
                          lens.fy,
                          static_cast<rs2_distortion>(lens.model),
                          {}};
    std::copy(std::begin(lens.coeffs), std::end(lens.coeffs), std::begin(result.coeffs));
    return result;
}

rs2_video_stream streamOf(rs2_stream type, rs2_format format, int pixelBytes,
                          const rs_intrinsics& lens, int framerate) {
    return {type,      0,          firstId + type, lens.width,  lens.height,
            framerate, pixelBytes, format,         lensOf(lens)};
}

} // namespace

SoftwareDevice::SoftwareDevice(const SoftwareScript& script)
    : script_(script), depth_(device_.add_sensor("Depth")) {
    const camera::CameraGeometry& geometry = script.geometry;
    depthProfile_ = depth_.add_video_stream(
        streamOf(RS2_STREAM_DEPTH, RS2_FORMAT_Z16, 2, geometry.depth, geometry.framerate));
    if (script.hasDepthUnits) {
        depth_.add_read_only_option(RS2_OPTION_DEPTH_UNITS, geometry.depthScale);
    }
    if (!script.hasColor) {
        return;
    }
    color_ = device_.add_sensor("Colour");
    colorProfile_ = color_->add_video_stream(
        streamOf(RS2_STREAM_COLOR, RS2_FORMAT_RGB8, 3, geometry.color, geometry.framerate));
    if (script.hasPose) {
        rs2_extrinsics pose;
        static_assert(sizeof pose == sizeof geometry.depthToColor);
        std::memcpy(&pose, &geometry.depthToColor, sizeof pose);
        depthProfile_.register_extrinsics_to(*colorProfile_, pose);
    }
}

void SoftwareDevice::injectDepth(std::uint64_t number, const std::vector<std::uint16_t>& picture) {
    inject(depth_, depthProfile_, number, picture, script_.geometry.depth.width, 2);
}

void SoftwareDevice::injectColor(std::uint64_t number, const std::vector<std::uint8_t>& picture) {
    inject(*color_, *colorProfile_, number, picture, script_.geometry.color.width, 3);
}

void SoftwareDevice::inject(std::uint64_t number, camera::EnabledStreams enabled) {
    const auto pixels = [](const rs_intrinsics& lens) {
        return static_cast<std::size_t>(lens.width) * static_cast<std::size_t>(lens.height);
    };
    std::vector<std::uint16_t> depth(pixels(script_.geometry.depth));
    std::vector<std::uint8_t> color(pixels(script_.geometry.color) * 3);
    script_.paint(number, depth, color);
    if (enabled.color) {
        injectColor(number, color);
    }
    if (enabled.depth) {
        injectDepth(number, depth);
    }
}

template <class Sample>
void SoftwareDevice::inject(rs2::software_sensor& sensor, const rs2::stream_profile& profile,
                            std::uint64_t number, const std::vector<Sample>& picture, int width,
                            int pixelBytes) {
    const std::size_t bytes = picture.size() * sizeof(Sample);
    auto* const copy = new std::uint8_t[bytes];
    std::memcpy(copy, picture.data(), bytes);
    const double milliseconds = 1000.0 * static_cast<double>(number) / script_.geometry.framerate;
    sensor.on_video_frame({copy, [](void* pixels) { delete[] static_cast<std::uint8_t*>(pixels); },
                           width * pixelBytes, pixelBytes, milliseconds,
                           RS2_TIMESTAMP_DOMAIN_HARDWARE_CLOCK, static_cast<int>(number),
                           profile.get()});
}

SoftwareCamera::SoftwareCamera(std::shared_ptr<SoftwareScript> script)
    : SoftwareCamera(script, std::make_unique<SoftwareDevice>(*script)) {}

SoftwareCamera::SoftwareCamera(std::shared_ptr<SoftwareScript> script,
                               std::unique_ptr<SoftwareDevice> maker)
    : SdkDevice(maker->device()), script_(std::move(script)), maker_(std::move(maker)) {}

bool SoftwareCamera::hasOption(bool ofColor, rs2_option option) const {
    const auto& known = script_->options;
    return std::find(known.begin(), known.end(), option) != known.end() ||
           SdkDevice::hasOption(ofColor, option);
}

void SoftwareCamera::setOption(bool, rs2_option option, float value) {
    script_->values[option] = value;
}

void SoftwareCamera::afterStart(camera::EnabledStreams enabled) {
    stopping_ = false;
    feeder_ = std::thread([this, enabled] {
        for (std::uint64_t number = 0; number < script_->frames && !stopping_; ++number) {
            maker_->inject(number, enabled);
        }
    });
}

void SoftwareCamera::beforeStop() {
    stopping_ = true;
    if (feeder_.joinable()) {
        feeder_.join();
    }
}

void recordBag(const std::string& file, const SoftwareScript& script, std::uint64_t count) {
    SoftwareDevice maker(script);
    rs2::recorder recorder(file, maker.device());
    auto sensors = recorder.query_sensors();
    sensors[0].open(maker.depthProfile());
    sensors[1].open(maker.colorProfile());
    for (auto& sensor : sensors) {
        sensor.start([](rs2::frame) {});
    }
    for (std::uint64_t number = 0; number < count; ++number) {
        maker.inject(number, {true, true});
    }
    for (auto& sensor : sensors) {
        sensor.stop();
        sensor.close();
    }
}

} // namespace camera_test
