// The pictures of a folder in playing order.
#pragma once

#include "source_options.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace camera {

// Depth images are all PNGs of the folder in name order, save those named color_*.png. Each gets
// the colour picture of its own name (depth_7.png or 7.png goes with color_7.png) when every one
// has such a picture, else the colour picture at its place in name order, over and over.
class ImageFolder {
  public:
    static constexpr std::size_t usualMemoryBound = std::size_t{256} * 1024 * 1024;

    // Checks every file and reads them all when they take no more bytes than `memoryBound`; else
    // a picture is read each time it is shown. Throws std::runtime_error naming the folder or
    // file and what is needed.
    explicit ImageFolder(const std::filesystem::path& folder,
                         std::size_t memoryBound = usualMemoryBound);
    // The same of these files of a folder alone, in the order given.
    explicit ImageFolder(std::vector<std::filesystem::path> files,
                         std::size_t memoryBound = usualMemoryBound);

    std::size_t count() const { return frames_.size(); }
    ImageSize depthSize() const { return depthSize_; }
    // The size of the first colour picture; nothing when there is none.
    std::optional<ImageSize> colorSize() const;

    void copyDepth(std::size_t index, std::span<std::uint16_t> to) const;
    // Paints the colour picture, or a grey one made from the depth.
    void paintColor(std::size_t index, std::span<std::uint8_t> to, ImageSize toSize) const;

  private:
    struct ColorFile {
        std::filesystem::path file;
        ImageSize size;
        std::vector<std::uint8_t> pixels; // empty unless kept in memory
    };
    struct Frame {
        std::filesystem::path file;
        std::vector<std::uint16_t> samples; // empty unless kept in memory
        std::size_t color = 0;              // place in colors_, when there are any
    };

    void checkHeaders();
    void pairColors();
    void keepInMemory(std::size_t memoryBound);

    std::vector<Frame> frames_;
    std::vector<ColorFile> colors_;
    ImageSize depthSize_;
};

} // namespace camera
