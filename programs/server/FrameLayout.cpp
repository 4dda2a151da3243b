#include "FrameLayout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace server {

namespace {

// Large enough that telling of a block costs little beside copying it.
constexpr std::size_t blockBytes = std::size_t{512} * 1024;

// Wraps in 32 bits as every reader of the header computes it.
std::size_t imageBytes(std::uint32_t width, std::uint32_t height, std::uint32_t channels,
                       std::uint32_t bytesPerChannel) {
    return static_cast<std::uint32_t>(width * height * channels * bytesPerChannel);
}

} // namespace

FrameLayout::FrameLayout(const QVR::ProtocolHeader& header)
    : touches_(std::size_t{header.touchCount} * sizeof(QVR::NetworkTouch)),
      color_(imageBytes(header.colorX, header.colorY, header.colorChannels, header.colorDepth)),
      depth_(imageBytes(header.depthX, header.depthY, header.depthChannels, header.depthDepth)),
      processed_(imageBytes(header.processedX, header.processedY, header.processedChannels,
                            header.processedDepth)) {}

void FrameLayout::compose(const QVR::networkFrameData& parts, std::span<const std::byte> previous,
                          std::span<std::byte> frame, const Progress& progress) const {
    std::size_t offset = 0;
    std::size_t told = 0;
    const auto tell = [&] {
        told = offset;
        if (progress)
            progress(offset);
    };
    const auto placeBlock = [&](const std::byte* part, std::size_t size) {
        if (part != nullptr)
            std::memcpy(frame.data() + offset, part, size);
        else if (!previous.empty())
            std::memcpy(frame.data() + offset, previous.data() + offset, size);
        else
            std::memset(frame.data() + offset, 0, size);
        offset += size;
    };
    const auto place = [&](const void* part, std::size_t size) {
        const auto* rest = static_cast<const std::byte*>(part);
        while (size != 0) {
            const std::size_t block = std::min(size, told + blockBytes - offset);
            placeBlock(rest, block);
            rest = rest == nullptr ? nullptr : rest + block;
            size -= block;
            if (offset == told + blockBytes && offset != frameBytes())
                tell();
        }
    };
    place(parts.touches, touches_);
    if (parts.touches == nullptr && previous.empty())
        clearTouches(frame);
    place(parts.color, color_);
    place(parts.depth, depth_);
    place(parts.processed, processed_);
    tell();
}

void FrameLayout::clearTouches(std::span<std::byte> frame) const {
    const QVR::NetworkTouch inactive;
    for (std::size_t offset = 0; offset < touches_; offset += sizeof inactive)
        std::memcpy(frame.data() + offset, &inactive, sizeof inactive);
}

} // namespace server
