#include "stream_device.h"

#include "enum_names.h"
#include "extrinsics.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>

namespace camera {
namespace {

std::size_t pixelCount(const rs_intrinsics& image) {
    return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
}

// A sensor that starts up sends pictures of zeros.
template <class Sample>
bool isEmpty(std::span<const Sample> picture) {
    return std::all_of(picture.begin(), picture.end(), [](Sample sample) { return sample == 0; });
}

void requireVideo(rs_source source) {
    if (source != RS_SOURCE_VIDEO) {
        throw std::runtime_error("this camera has no motion tracking");
    }
}

void requireFormat(rs_stream stream, rs_format wanted, rs_format delivered) {
    if (wanted != RS_FORMAT_ANY && wanted != delivered) {
        throw std::runtime_error("stream " + nameOf(stream) + " comes in format " +
                                 nameOf(delivered) + " only, not in " + nameOf(wanted));
    }
}

} // namespace

StreamDevice::StreamDevice(std::unique_ptr<FrameSource> source, Clock& clock,
                           std::chrono::milliseconds longestWait)
    : source_(std::move(source)), clock_(clock), name_(source_->name()), serial_(source_->serial()),
      firmware_(source_->firmware()), longestWait_(longestWait) {}

bool StreamDevice::supportsOption(rs_option option) const {
    return source_->supportsOption(option);
}

void StreamDevice::setOption(rs_option option, double value) {
    source_->setOption(option, value);
}

const char* StreamDevice::takeNotices() {
    notices_ = source_->takeNotices();
    return notices_.c_str();
}

void StreamDevice::enable(rs_stream stream, int width, int height, rs_format format,
                          int framerate) {
    if (streaming()) {
        throw std::runtime_error("streams cannot be enabled while the camera is streaming");
    }
    if (stream != RS_STREAM_DEPTH && stream != RS_STREAM_COLOR) {
        throw std::runtime_error("this camera has no stream " + nameOf(stream));
    }
    auto& request = stream == RS_STREAM_DEPTH ? depthRequest_ : colorRequest_;
    request = Request{{width, height, framerate}, format};
    geometry_.reset();
    alignment_.reset();
    forgetFrames();
    started_ = false;
}

void StreamDevice::start(rs_source source) {
    if (streaming()) {
        throw std::runtime_error("the camera is streaming already");
    }
    requireVideo(source);
    if (!depthRequest_ && !colorRequest_) {
        throw std::runtime_error("no stream is enabled");
    }
    const CameraGeometry& settled = geometry();
    forgetFrames();
    if (depthRequest_) {
        depth_.allocate(pixelCount(settled.depth));
    }
    if (colorRequest_) {
        color_.allocate(pixelCount(settled.color) * 3);
    }
    arrivals_ = source_->start({depthRequest_.has_value(), colorRequest_.has_value()},
                               settled.framerate, clock_);
    started_ = true;
}

void StreamDevice::stop(rs_source source) {
    requireVideo(source);
    if (!streaming()) {
        throw std::runtime_error("the camera is not streaming");
    }
    arrivals_.reset();
    forgetFrames();
}

std::vector<rs_mode_range> StreamDevice::modes(rs_stream stream) const {
    if (stream != RS_STREAM_DEPTH && stream != RS_STREAM_COLOR) {
        return {};
    }
    return source_->modes(stream);
}

rs_stream_mode StreamDevice::currentMode(rs_stream stream) {
    const rs_intrinsics lens = intrinsics(stream);
    return {lens.width, lens.height, geometry().framerate};
}

rs_intrinsics StreamDevice::intrinsics(rs_stream stream) {
    switch (stream) {
    case RS_STREAM_DEPTH:
    case RS_STREAM_COLOR_ALIGNED_TO_DEPTH:
        requireEnabled(RS_STREAM_DEPTH);
        return geometry().depth;
    case RS_STREAM_COLOR:
    case RS_STREAM_DEPTH_ALIGNED_TO_COLOR:
        requireEnabled(RS_STREAM_COLOR);
        return geometry().color;
    default:
        throw std::runtime_error("this camera has no stream " + nameOf(stream));
    }
}

float StreamDevice::depthScale() const {
    return source_->depthScale();
}

rs_extrinsics StreamDevice::extrinsics(rs_stream from, rs_stream to) const {
    return extrinsicsBetween(from, to, source_->depthToColor());
}

void StreamDevice::waitForFrames() {
    ended_ = false;
    if (!streaming()) {
        return;
    }
    const Clock::Time deadline = clock_.now() + longestWait_;
    try {
        while (const auto number = arrivals_->next(deadline)) {
            if (renderFrame(*number)) {
                return;
            }
        }
    } catch (const EndOfRecording&) {
        ended_ = true;
        throw;
    }
    std::ostringstream text;
    text << "no frame came within " << std::chrono::duration<double>(longestWait_).count()
         << " seconds";
    throw std::runtime_error(text.str());
}

const void* StreamDevice::frameData(rs_stream stream) {
    switch (stream) {
    case RS_STREAM_DEPTH:
    case RS_STREAM_COLOR:
        requireEnabled(stream);
        break;
    case RS_STREAM_COLOR_ALIGNED_TO_DEPTH:
    case RS_STREAM_DEPTH_ALIGNED_TO_COLOR:
        requireEnabled(RS_STREAM_DEPTH);
        requireEnabled(RS_STREAM_COLOR);
        break;
    default:
        throw std::runtime_error("this camera has no stream " + nameOf(stream));
    }
    if (!started_) {
        throw std::runtime_error("the camera has not been started since stream " + nameOf(stream) +
                                 " was enabled");
    }
    if (!streaming()) {
        return nullptr;
    }
    switch (stream) {
    case RS_STREAM_DEPTH:
        return depth_.data();
    case RS_STREAM_COLOR:
        return color_.data();
    case RS_STREAM_COLOR_ALIGNED_TO_DEPTH:
        return colorAlignedToDepth();
    default:
        return depthAlignedToColor();
    }
}

rs_scene_truth StreamDevice::sceneTruth() const {
    if (!current_) {
        throw std::runtime_error("no frame has come yet");
    }
    return source_->truth(*current_);
}

// Both streams run at one rate, so a rate asked for on one of them holds for both.
const CameraGeometry& StreamDevice::geometry() {
    if (geometry_) {
        return *geometry_;
    }
    const Request depth = depthRequest_.value_or(Request{});
    const Request color = colorRequest_.value_or(Request{});
    requireFormat(RS_STREAM_DEPTH, depth.format, RS_FORMAT_Z16);
    requireFormat(RS_STREAM_COLOR, color.format, RS_FORMAT_RGB8);
    if (depth.mode.framerate && color.mode.framerate &&
        depth.mode.framerate != color.mode.framerate) {
        throw std::runtime_error("depth and colour come at one rate, not at " +
                                 std::to_string(depth.mode.framerate) + " and " +
                                 std::to_string(color.mode.framerate) + " frames a second");
    }
    const int framerate = std::max(depth.mode.framerate, color.mode.framerate);
    return geometry_.emplace(source_->configure({depth.mode.width, depth.mode.height, framerate},
                                                {color.mode.width, color.mode.height, framerate}));
}

void StreamDevice::requireEnabled(rs_stream stream) const {
    if (!(stream == RS_STREAM_DEPTH ? depthRequest_ : colorRequest_)) {
        throw std::runtime_error("stream " + nameOf(stream) + " is not enabled");
    }
}

// False when the stream that leads, depth when there is one, shows nothing yet. The other stream
// keeps its picture when it alone shows nothing.
bool StreamDevice::renderFrame(std::uint64_t number) {
    const auto depth = depth_.open();
    const auto color = color_.open();
    try {
        source_->render(number, depth, color);
    } catch (...) {
        depth_.close(false);
        color_.close(false);
        throw;
    }
    const bool hasDepth = !isEmpty<std::uint16_t>(depth);
    const bool hasColor = !isEmpty<std::uint8_t>(color);
    const bool leads = depthRequest_ ? hasDepth : hasColor;
    depth_.close(leads && hasDepth);
    color_.close(leads && hasColor);
    if (leads) {
        current_ = number;
        colorAligned_.upToDate = false;
        depthAligned_.upToDate = false;
    }
    return leads;
}

void StreamDevice::forgetFrames() {
    current_.reset();
    depth_.release();
    color_.release();
    colorAligned_ = {};
    depthAligned_ = {};
}

const Alignment& StreamDevice::alignment() {
    return alignment_ ? *alignment_ : alignment_.emplace(geometry());
}

const void* StreamDevice::colorAlignedToDepth() {
    if (!colorAligned_.upToDate) {
        const Alignment& cameras = alignment();
        colorAligned_.samples.resize(pixelCount(geometry().depth) * 3);
        cameras.colorToDepth(depth_.current(), color_.current(), colorAligned_.samples);
        colorAligned_.upToDate = true;
    }
    return colorAligned_.samples.data();
}

const void* StreamDevice::depthAlignedToColor() {
    if (!depthAligned_.upToDate) {
        const Alignment& cameras = alignment();
        depthAligned_.samples.resize(pixelCount(geometry().color));
        cameras.depthToColor(depth_.current(), depthAligned_.samples);
        depthAligned_.upToDate = true;
    }
    return depthAligned_.samples.data();
}

} // namespace camera
