// A stream of two slots and 2 x 1 pixels in every image: small enough to break at every byte.
#pragma once

#include "support/streamBytes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace client_test {

constexpr std::size_t smallSlots = 2;
constexpr std::size_t smallPixels = 2;

inline QVR::ProtocolHeader smallHeader() {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = smallSlots;
    header.colorX = header.depthX = header.processedX = smallPixels;
    header.colorY = header.depthY = header.processedY = 1;
    header.colorChannels = 3;
    header.depthDepth = 2;
    header.colorDepth = header.depthChannels = 1;
    header.processedChannels = header.processedDepth = 1;
    return header;
}

// Both slots are touched at `value`, then 3 + 2 + 1 bytes a pixel of `fill`.
inline std::string smallFrame(double value, char fill) {
    const std::vector<QVR::NetworkTouch> touches(smallSlots,
                                                 QVR::NetworkTouch{1, value, value, value});
    return support::bytesOf(touches) + std::string(6 * smallPixels, fill);
}

// A connection's beginning: header and one frame.
inline std::string smallStream(double value, char fill) {
    return support::bytesOf(smallHeader()) + smallFrame(value, fill);
}

} // namespace client_test
