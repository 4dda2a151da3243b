// Where touches and images lie in a frame's bytes, as the header that clients got says it.
#pragma once

#include "Frame.h"
#include "serverClient/frameProtocol.h"

#include <cstddef>
#include <optional>
#include <span>

namespace server {

// Sizes in bytes, in the order on the wire. A frame is always this long, whatever the pipeline
// had to give: a client has nothing else to find the next frame by.
class FrameLayout {
  public:
    FrameLayout() = default;
    explicit FrameLayout(const QVR::ProtocolHeader& header);

    std::size_t touchBytes() const { return touches_; }
    std::size_t colorBytes() const { return color_; }
    std::size_t depthBytes() const { return depth_; }
    std::size_t processedBytes() const { return processed_; }
    std::size_t frameBytes() const { return touches_ + color_ + depth_ + processed_; }

    // Writes `parts` into `frame` (frameBytes() long) in one pass. A part that is announced but
    // null comes from `previous`, the frame before, or is blank when that is empty: images zero,
    // touch records inactive. What `parts` points to must be as large as announced.
    void compose(const QVR::networkFrameData& parts, std::span<const std::byte> previous,
                 std::span<std::byte> frame) const;

    // The same frame where it lies already. Nothing when a part that is announced is null.
    std::optional<FrameParts> inPlace(const QVR::networkFrameData& parts) const;

    // Makes every touch record of `frame` inactive.
    void clearTouches(std::span<std::byte> frame) const;

  private:
    std::size_t touches_ = 0;
    std::size_t color_ = 0;
    std::size_t depth_ = 0;
    std::size_t processed_ = 0;
};

} // namespace server
