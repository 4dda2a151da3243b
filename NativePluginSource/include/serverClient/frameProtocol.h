// What passes from camera server to client: one header per connection, then frames.
//
// Little-endian, as the machines at both ends are; nothing travels from client to server.
#pragma once

#include <cstdint>

namespace QVR {

// Sent once per connection; 64 bytes without gaps. An image whose channels and bytes per channel
// are both 0 is not sent.
struct ProtocolHeader {
    std::uint32_t protocolID = 0;    // protocol version; a client accepts only 1
    std::uint32_t endianTest = 0;    // byte-order marker of the sending program; not tested
    std::uint32_t oneMeterValue = 0; // depth units per metre, a whole number
    std::uint32_t depthX = 0;        // width in pixels; likewise below
    std::uint32_t depthY = 0;        // height in pixels; likewise below
    std::uint32_t depthChannels = 0;
    std::uint32_t depthDepth = 0; // bytes per channel; likewise below
    std::uint32_t processedX = 0;
    std::uint32_t processedY = 0;
    std::uint32_t processedChannels = 0;
    std::uint32_t processedDepth = 0;
    std::uint32_t colorX = 0;
    std::uint32_t colorY = 0;
    std::uint32_t colorChannels = 0;
    std::uint32_t colorDepth = 0;
    std::uint32_t touchCount = 0; // touch records per frame
};
static_assert(sizeof(ProtocolHeader) == 64);

// One touch slot. The doubles sit at 4-byte offsets: copy a record out of a byte buffer, never
// point into one.
#pragma pack(push, 4)
struct NetworkTouch {
    std::int32_t active = 0; // 1: a valid touch; 0: an empty slot, sent with x = y = z = -1
    double x = -1.0;
    double y = -1.0;
    double z = -1.0;
};
#pragma pack(pop)
static_assert(sizeof(NetworkTouch) == 28);

// One frame as the pipeline hands it out. A null pointer means not produced this frame. The
// pointers stay valid until the next camera update.
struct networkFrameData {
    const NetworkTouch* touches = nullptr;
    const unsigned char* color = nullptr;     // RGB, 3 bytes a pixel, row-major
    const unsigned short* depth = nullptr;    // depth units, 0 is no measurement
    const unsigned char* processed = nullptr; // detection mask, one byte a pixel
};

} // namespace QVR
