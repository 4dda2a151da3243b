#include "images/image_folder.h"

#include "images/color_picture.h"
#include "images/png_image.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace camera {
namespace {

constexpr std::string_view colorPrefix = "color_";
constexpr std::string_view depthPrefix = "depth_";

std::size_t pixelCount(ImageSize size) {
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

bool isPng(const std::filesystem::path& file) {
    const std::string extension = file.extension().string();
    return extension == ".png" || extension == ".PNG";
}

// What is the same in the names of a depth image and its colour picture.
std::string commonName(const std::filesystem::path& file, std::string_view prefix) {
    const std::string stem = file.stem().string();
    return stem.starts_with(prefix) ? stem.substr(prefix.size()) : stem;
}

bool isColor(const std::filesystem::path& file) {
    return file.filename().string().starts_with(colorPrefix);
}

// In name order, depth images among them.
std::vector<std::filesystem::path> picturesOf(const std::filesystem::path& folder) {
    std::error_code problem;
    if (!std::filesystem::is_directory(folder, problem)) {
        throw std::runtime_error("image folder " + folder.string() +
                                 " does not exist or is no folder");
    }
    std::vector<std::filesystem::path> files;
    for (auto entry = std::filesystem::directory_iterator(folder, problem);
         !problem && entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
        if (isPng(entry->path())) {
            files.push_back(entry->path());
        }
    }
    if (problem) {
        throw std::runtime_error("image folder " + folder.string() +
                                 " cannot be read: " + problem.message());
    }
    if (std::all_of(files.begin(), files.end(), isColor)) {
        throw std::runtime_error("image folder " + folder.string() +
                                 " has no depth images; 16-bit grey PNGs are needed");
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

ImageFolder::ImageFolder(const std::filesystem::path& folder, std::size_t memoryBound)
    : ImageFolder(picturesOf(folder), memoryBound) {}

ImageFolder::ImageFolder(std::vector<std::filesystem::path> files, std::size_t memoryBound) {
    for (auto& file : files) {
        if (isColor(file)) {
            colors_.push_back({std::move(file), {}, {}});
        } else {
            frames_.push_back({std::move(file), {}, 0});
        }
    }
    checkHeaders();
    pairColors();
    keepInMemory(memoryBound);
}

std::optional<ImageSize> ImageFolder::colorSize() const {
    return colors_.empty() ? std::nullopt : std::optional(colors_.front().size);
}

void ImageFolder::copyDepth(std::size_t index, std::span<std::uint16_t> to) const {
    const Frame& frame = frames_[index];
    const auto samples =
        frame.samples.empty() ? readDepthPng(frame.file, depthSize_) : std::vector<std::uint16_t>();
    std::copy_n(frame.samples.empty() ? samples.data() : frame.samples.data(), to.size(),
                to.data());
}

void ImageFolder::paintColor(std::size_t index, std::span<std::uint8_t> to,
                             ImageSize toSize) const {
    if (colors_.empty()) {
        std::vector<std::uint16_t> depth(pixelCount(depthSize_));
        copyDepth(index, depth);
        paintDepth(depth, depthSize_, to, toSize);
        return;
    }
    const ColorFile& color = colors_[frames_[index].color];
    if (color.pixels.empty()) {
        scaleColor(readColorPng(color.file, color.size), color.size, to, toSize);
    } else {
        scaleColor(color.pixels, color.size, to, toSize);
    }
}

void ImageFolder::checkHeaders() {
    depthSize_ = depthPngSize(frames_.front().file);
    for (const Frame& frame : frames_) {
        const ImageSize size = depthPngSize(frame.file);
        if (size != depthSize_) {
            throw std::runtime_error(
                "image " + frame.file.string() + " is " + std::to_string(size.width) + "x" +
                std::to_string(size.height) +
                "; all depth images of a folder must have one size, " +
                std::to_string(depthSize_.width) + "x" + std::to_string(depthSize_.height) +
                " like " + frames_.front().file.filename().string());
        }
    }
    for (ColorFile& color : colors_) {
        color.size = colorPngSize(color.file);
    }
}

void ImageFolder::pairColors() {
    if (colors_.empty()) {
        return;
    }
    std::unordered_map<std::string, std::size_t> colorNamed;
    for (std::size_t i = 0; i < colors_.size(); ++i) {
        colorNamed.emplace(commonName(colors_[i].file, colorPrefix), i);
    }
    std::vector<std::size_t> byName;
    for (const Frame& frame : frames_) {
        const auto pair = colorNamed.find(commonName(frame.file, depthPrefix));
        if (pair != colorNamed.end()) {
            byName.push_back(pair->second);
        }
    }
    const bool everyOne = byName.size() == frames_.size();
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        frames_[i].color = everyOne ? byName[i] : i % colors_.size();
    }
}

void ImageFolder::keepInMemory(std::size_t memoryBound) {
    std::size_t bytes = frames_.size() * pixelCount(depthSize_) * sizeof(std::uint16_t);
    for (const ColorFile& color : colors_) {
        bytes += pixelCount(color.size) * 3;
    }
    if (bytes > memoryBound) {
        return;
    }
    for (Frame& frame : frames_) {
        frame.samples = readDepthPng(frame.file, depthSize_);
    }
    for (ColorFile& color : colors_) {
        color.pixels = readColorPng(color.file, color.size);
    }
}

} // namespace camera
