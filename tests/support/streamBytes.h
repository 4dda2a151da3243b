// The bytes of a camera server's stream, for tests.
#pragma once

#include "serverClient/frameProtocol.h"

#include <cstring>
#include <string>
#include <vector>

namespace support {

inline std::string bytesOf(const QVR::ProtocolHeader& header) {
    std::string bytes(sizeof header, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

inline std::string bytesOf(const std::vector<QVR::NetworkTouch>& touches) {
    std::string bytes(touches.size() * sizeof(QVR::NetworkTouch), '\0');
    if (!touches.empty()) {
        std::memcpy(bytes.data(), touches.data(), bytes.size());
    }
    return bytes;
}

inline std::string bytesOf(const std::vector<unsigned short>& depth) {
    std::string bytes(depth.size() * sizeof(unsigned short), '\0');
    if (!depth.empty()) {
        std::memcpy(bytes.data(), depth.data(), bytes.size());
    }
    return bytes;
}

// A header of protocol 1 that announces ten touches and no image.
inline QVR::ProtocolHeader touchesOnlyHeader() {
    QVR::ProtocolHeader header;
    header.protocolID = 1;
    header.endianTest = 0x01020304;
    header.oneMeterValue = 1000;
    header.touchCount = 10;
    return header;
}

} // namespace support
