#include "host/Textures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include <sys/mman.h>

namespace host {

namespace {

constexpr std::size_t bytesPerPixel = 4;
constexpr std::uint64_t mostPixels = std::uint64_t{1} << 26;
// A pixel count is a 32-bit number.
constexpr std::size_t reserveBytes = (std::size_t{1} << 32) * bytesPerPixel;

// Alpha tells what was written: the buffers are cleared before, the plug-in writes 255.
bool written(const unsigned char* pixel) {
    return pixel[3] == 255;
}

} // namespace

Textures::Textures() {
    void* memory = mmap(nullptr, reserveBytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory != MAP_FAILED) {
        reserve_ = static_cast<unsigned char*>(memory);
    }
}

Textures::~Textures() {
    if (reserve_ != nullptr) {
        munmap(reserve_, reserveBytes);
    }
}

void Textures::resize(Buffer& buffer, int width, int height) {
    const bool usable =
        width > 0 && height > 0 &&
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) <= mostPixels;
    buffer.width = usable ? width : 0;
    buffer.height = usable ? height : 0;
    buffer.bytes.assign(static_cast<std::size_t>(buffer.width) *
                            static_cast<std::size_t>(buffer.height) * bytesPerPixel,
                        0);
}

void Textures::lend(const PluginFunctions& plugin) {
    resize(color_, plugin.getColorDimX(), plugin.getColorDimY());
    resize(depth_, plugin.getDimX(), plugin.getDimY());
    plugin.setColorTexture(color_.bytes.empty() ? nullptr : color_.bytes.data());
    plugin.setDepthTexture(depth_.bytes.empty() ? nullptr : depth_.bytes.data());
    plugin.setProcessedTexture(reserve_);
}

Snapshot Textures::take(const PluginFunctions& plugin) {
    Snapshot snapshot;
    std::fill(color_.bytes.begin(), color_.bytes.end(), static_cast<unsigned char>(0));
    plugin.updateColorTexture();
    if (!color_.bytes.empty() && written(color_.bytes.data())) {
        snapshot.color = programs::ColorImage(color_.width, color_.height);
        const unsigned char* pixel = color_.bytes.data();
        for (programs::Color& value : snapshot.color.values) {
            value = {pixel[0], pixel[1], pixel[2]};
            pixel += bytesPerPixel;
        }
    }
    std::fill(depth_.bytes.begin(), depth_.bytes.end(), static_cast<unsigned char>(0));
    plugin.updateDepthTexture();
    if (!depth_.bytes.empty() && written(depth_.bytes.data())) {
        snapshot.depth = programs::DepthImage(depth_.width, depth_.height);
        const unsigned char* pixel = depth_.bytes.data();
        for (std::uint16_t& value : snapshot.depth.values) {
            value = static_cast<std::uint16_t>(pixel[0] | pixel[1] << 8);
            pixel += bytesPerPixel;
        }
    }
    snapshot.processed = takeProcessed(plugin);
    return snapshot;
}

programs::GrayImage Textures::takeProcessed(const PluginFunctions& plugin) {
    programs::GrayImage image;
    if (reserve_ == nullptr) {
        return image;
    }
    plugin.updateProcessedTexture();
    std::size_t pixels = 0;
    while (pixels <= mostPixels && written(reserve_ + pixels * bytesPerPixel)) {
        ++pixels;
    }
    const auto size = sizeLike(pixels, depth_.width, depth_.height);
    if (size && pixels <= mostPixels) {
        image = programs::GrayImage(size->first, size->second);
        for (std::size_t i = 0; i < image.values.size(); ++i) {
            image.values[i] = reserve_[i * bytesPerPixel];
        }
    }
    std::memset(reserve_, 0, std::min<std::size_t>(pixels, mostPixels + 1) * bytesPerPixel);
    return image;
}

std::optional<std::pair<int, int>> Textures::sizeLike(std::size_t pixels, int width, int height) {
    if (pixels == 0 || pixels > mostPixels || width <= 0 || height <= 0) {
        return std::nullopt;
    }
    const double wanted = std::log(static_cast<double>(width) / static_cast<double>(height));
    std::optional<std::pair<int, int>> best;
    double bestDifference = 0;
    for (std::size_t columns = 1; columns <= pixels && columns <= 65536; ++columns) {
        if (pixels % columns != 0 || pixels / columns > 65536) {
            continue;
        }
        const std::size_t rows = pixels / columns;
        const double shape = std::log(static_cast<double>(columns) / static_cast<double>(rows));
        const double difference = std::fabs(shape - wanted);
        if (!best || difference < bestDifference) {
            best = {static_cast<int>(columns), static_cast<int>(rows)};
            bestDifference = difference;
        }
    }
    return best;
}

} // namespace host
