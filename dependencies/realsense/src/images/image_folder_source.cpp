#include "images/image_folder_source.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace camera {
namespace {

constexpr int usualFramerate = 30;
constexpr float usualScale = 0.000125f;
constexpr float usualFocalLength = 476.0f;
constexpr int longestColorSide = 16384;
constexpr int highestFramerate = 1000;

// Checks the options before the folder is read, which may take a while.
const std::string& checkedFolder(const SourceOptions& options) {
    options.acceptOnly({"scale", "fps", "hold", "fx", "fy", "ppx", "ppy", "loop", "pace"});
    if (options.positional().empty()) {
        throw std::runtime_error("camera source \"images\" needs a folder: images:DIR");
    }
    return options.positional();
}

float real(const SourceOptions& options, std::string_view key, double fallback, double least,
           double most) {
    return static_cast<float>(options.number(key, fallback, least, most));
}

std::string sizeText(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

ImageFolder picturesOf(const std::string& folder, const std::optional<Recording>& recording) {
    if (!recording) {
        return ImageFolder(folder);
    }
    std::vector<std::filesystem::path> files;
    for (const RecordedFrame& frame : recording->frames) {
        files.push_back(frame.depth);
        files.push_back(frame.color);
    }
    return ImageFolder(std::move(files));
}

// The lens of the recording, or a usual one, as far as the keys say nothing else.
rs_intrinsics depthLens(const SourceOptions& options, const std::optional<Recording>& recording,
                        ImageSize size) {
    rs_intrinsics lens{};
    if (recording) {
        lens = recording->depth;
    } else {
        lens.width = size.width;
        lens.height = size.height;
        lens.fx = lens.fy = usualFocalLength;
        lens.ppx = static_cast<float>(size.width / 2.0);
        lens.ppy = static_cast<float>(size.height / 2.0);
        lens.model = RS_DISTORTION_NONE;
    }
    if (lens.width != size.width || lens.height != size.height) {
        throw std::runtime_error("the recording is of depth images of " +
                                 sizeText(lens.width, lens.height) + ", its images are " +
                                 sizeText(size.width, size.height));
    }
    lens.fx = real(options, "fx", lens.fx, 1e-3, 1e6);
    lens.fy = real(options, "fy", lens.fy, 1e-3, 1e6);
    lens.ppx = real(options, "ppx", lens.ppx, -1e6, 1e6);
    lens.ppy = real(options, "ppy", lens.ppy, -1e6, 1e6);
    return lens;
}

// A camera with `lens` whose pictures are stretched to another size.
rs_intrinsics stretched(const rs_intrinsics& lens, ImageSize size) {
    if (lens.width == size.width && lens.height == size.height) {
        return lens; // to the last bit
    }
    const float x = static_cast<float>(size.width) / static_cast<float>(lens.width);
    const float y = static_cast<float>(size.height) / static_cast<float>(lens.height);
    rs_intrinsics result = lens;
    result.width = size.width;
    result.height = size.height;
    result.fx *= x;
    result.fy *= y;
    result.ppx = (lens.ppx + 0.5f) * x - 0.5f;
    result.ppy = (lens.ppy + 0.5f) * y - 0.5f;
    return result;
}

// The first so many frames of others.
class OnePass : public FrameArrivals {
  public:
    OnePass(std::unique_ptr<FrameArrivals> frames, std::uint64_t count)
        : frames_(std::move(frames)), count_(count) {}

    std::optional<std::uint64_t> next(Clock::Time deadline) override {
        const auto number = frames_->next(deadline);
        if (number && *number >= count_) {
            throw EndOfRecording();
        }
        return number;
    }

  private:
    std::unique_ptr<FrameArrivals> frames_;
    std::uint64_t count_;
};

} // namespace

ImageFolderSource::ImageFolderSource(const SourceOptions& options)
    : folderName_(checkedFolder(options)), recording_(readRecording(folderName_)),
      folder_(picturesOf(folderName_, recording_)),
      depthScale_(
          real(options, "scale", recording_ ? recording_->depthScale : usualScale, 1e-9, 1.0)),
      framerate_(options.integer("fps", 0, 1, highestFramerate)),
      hold_(options.integer("hold", 1, 1, 1000)),
      depthLens_(depthLens(options, recording_, folder_.depthSize())),
      loops_(options.onOff("loop", true)), paced_(options.onOff("pace", true)) {}

rs_extrinsics ImageFolderSource::depthToColor() const {
    if (recording_) {
        return recording_->depthToColor;
    }
    return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
}

std::vector<rs_mode_range> ImageFolderSource::modes(rs_stream stream) const {
    const ImageSize size = folder_.depthSize();
    const int slowest = framerate_ ? framerate_ : 1;
    const int fastest = framerate_ ? framerate_ : highestFramerate;
    if (stream == RS_STREAM_DEPTH) {
        return {{{size.width, size.height, slowest}, {size.width, size.height, fastest}}};
    }
    return {{{1, 1, slowest}, {longestColorSide, longestColorSide, fastest}}};
}

CameraGeometry ImageFolderSource::configure(const StreamRequest& depth,
                                            const StreamRequest& color) {
    const ImageSize size = folder_.depthSize();
    if ((depth.width && depth.width != size.width) ||
        (depth.height && depth.height != size.height)) {
        throw std::runtime_error("depth comes in the size of the images, " +
                                 sizeText(size.width, size.height) + ", not in " +
                                 sizeText(depth.width, depth.height));
    }
    const int asked = std::max(depth.framerate, color.framerate);
    if (framerate_ && asked && asked != framerate_) {
        throw std::runtime_error("the images come at " + std::to_string(framerate_) +
                                 " frames a second (fps), not at " + std::to_string(asked));
    }
    colorSize_ = colorSizeFor(color);
    CameraGeometry geometry;
    geometry.depth = depthLens_;
    geometry.color = stretched(recording_ ? recording_->color : depthLens_, colorSize_);
    geometry.depthToColor = depthToColor();
    geometry.depthScale = depthScale_;
    const int usual = recording_ ? recording_->framerate : usualFramerate;
    geometry.framerate = framerate_ ? framerate_ : asked ? asked : usual;
    return geometry;
}

std::unique_ptr<FrameArrivals> ImageFolderSource::start(EnabledStreams enabled, int framerate,
                                                        Clock& clock) {
    auto frames = FrameSource::start(enabled, framerate, clock);
    if (loops_) {
        return frames;
    }
    return std::make_unique<OnePass>(std::move(frames),
                                     folder_.count() * static_cast<std::uint64_t>(hold_));
}

void ImageFolderSource::render(std::uint64_t number, std::span<std::uint16_t> depth,
                               std::span<std::uint8_t> color) {
    const std::size_t index = indexOf(number);
    if (!depth.empty()) {
        folder_.copyDepth(index, depth);
    }
    if (!color.empty()) {
        folder_.paintColor(index, color, colorSize_);
    }
}

rs_scene_truth ImageFolderSource::truth(std::uint64_t number) const {
    rs_scene_truth truth{};
    truth.frame = number;
    if (recording_) {
        const RecordedFrame& frame = recording_->frames[indexOf(number)];
        truth.frame = frame.number;
        truth.seconds = frame.seconds;
        truth.timed = 1;
    }
    return truth;
}

std::size_t ImageFolderSource::indexOf(std::uint64_t number) const {
    return static_cast<std::size_t>(number / static_cast<std::uint64_t>(hold_) % folder_.count());
}

// A side that is not asked for stays as it is in the colour pictures.
ImageSize ImageFolderSource::colorSizeFor(const StreamRequest& color) const {
    const ImageSize native = folder_.colorSize().value_or(folder_.depthSize());
    if (color.width > longestColorSide || color.height > longestColorSide) {
        throw std::runtime_error("colour comes in sizes up to " +
                                 sizeText(longestColorSide, longestColorSide) + ", not in " +
                                 sizeText(color.width, color.height));
    }
    return {color.width ? color.width : native.width, color.height ? color.height : native.height};
}

} // namespace camera
