#include "FrameLayout.h"

#include <cstdint>
#include <cstring>

namespace server {

namespace {

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
                          std::span<std::byte> frame) const {
    std::size_t offset = 0;
    const auto place = [&](const void* part, std::size_t size) {
        if (size == 0)
            return;
        if (part != nullptr)
            std::memcpy(frame.data() + offset, part, size);
        else if (!previous.empty())
            std::memcpy(frame.data() + offset, previous.data() + offset, size);
        else
            std::memset(frame.data() + offset, 0, size);
        offset += size;
    };
    place(parts.touches, touches_);
    if (parts.touches == nullptr && previous.empty())
        clearTouches(frame);
    place(parts.color, color_);
    place(parts.depth, depth_);
    place(parts.processed, processed_);
}

std::optional<FrameParts> FrameLayout::inPlace(const QVR::networkFrameData& parts) const {
    bool complete = true;
    const auto part = [&](const void* bytes, std::size_t size) {
        complete = complete && (bytes != nullptr || size == 0);
        return std::span(static_cast<const std::byte*>(bytes), bytes != nullptr ? size : 0);
    };
    const FrameParts found = {part(parts.touches, touches_), part(parts.color, color_),
                              part(parts.depth, depth_), part(parts.processed, processed_)};
    return complete ? std::optional(found) : std::nullopt;
}

void FrameLayout::clearTouches(std::span<std::byte> frame) const {
    const QVR::NetworkTouch inactive;
    for (std::size_t offset = 0; offset < touches_; offset += sizeof inactive)
        std::memcpy(frame.data() + offset, &inactive, sizeof inactive);
}

} // namespace server
