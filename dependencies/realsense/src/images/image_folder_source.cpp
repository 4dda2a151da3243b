#include "images/image_folder_source.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace camera {
namespace {

constexpr int usualFramerate = 30;
constexpr int longestColorSide = 16384;

// Checks the options before the folder is read, which may take a while.
const std::string& checkedFolder(const SourceOptions& options) {
    options.acceptOnly({"scale", "fps", "hold", "fx", "fy", "ppx", "ppy", "pace"});
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

// A camera with `lens` whose pictures are stretched to another size.
rs_intrinsics stretched(const rs_intrinsics& lens, ImageSize size) {
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

} // namespace

ImageFolderSource::ImageFolderSource(const SourceOptions& options)
    : folderName_(checkedFolder(options)), folder_(folderName_),
      depthScale_(real(options, "scale", 0.000125, 1e-9, 1.0)),
      framerate_(options.integer("fps", 0, 1, 1000)), hold_(options.integer("hold", 1, 1, 1000)),
      fx_(real(options, "fx", 476.0, 1e-3, 1e6)), fy_(real(options, "fy", 476.0, 1e-3, 1e6)),
      ppx_(real(options, "ppx", folder_.depthSize().width / 2.0, -1e6, 1e6)),
      ppy_(real(options, "ppy", folder_.depthSize().height / 2.0, -1e6, 1e6)),
      paced_(options.onOff("pace", true)) {}

rs_extrinsics ImageFolderSource::depthToColor() const {
    return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
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
    geometry.depth = depthIntrinsics();
    geometry.color = stretched(geometry.depth, colorSize_);
    geometry.depthToColor = depthToColor();
    geometry.depthScale = depthScale_;
    geometry.framerate = framerate_ ? framerate_ : asked ? asked : usualFramerate;
    return geometry;
}

void ImageFolderSource::render(std::uint64_t number, std::span<std::uint16_t> depth,
                               std::span<std::uint8_t> color) {
    const std::uint64_t picture = number / static_cast<std::uint64_t>(hold_);
    const auto index = static_cast<std::size_t>(picture % folder_.count());
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
    return truth;
}

rs_intrinsics ImageFolderSource::depthIntrinsics() const {
    rs_intrinsics lens{};
    lens.width = folder_.depthSize().width;
    lens.height = folder_.depthSize().height;
    lens.fx = fx_;
    lens.fy = fy_;
    lens.ppx = ppx_;
    lens.ppy = ppy_;
    lens.model = RS_DISTORTION_NONE;
    return lens;
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
