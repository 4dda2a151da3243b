#include "foundation/utils.h"
#include "serverClient/frameProtocol.h"

#include <cstddef>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

using QVR::NetworkTouch;
using QVR::ProtocolHeader;

ProtocolHeader fullHeader() {
    ProtocolHeader header;
    header.protocolID = 1;
    header.endianTest = 2;
    header.oneMeterValue = 3;
    header.depthX = 640;
    header.depthY = 480;
    header.depthChannels = 1;
    header.depthDepth = 2;
    header.processedX = 641;
    header.processedY = 481;
    header.processedChannels = 5;
    header.processedDepth = 6;
    header.colorX = 1920;
    header.colorY = 1080;
    header.colorChannels = 3;
    header.colorDepth = 1;
    header.touchCount = 10;
    return header;
}

TEST(ProtocolHeader, LaysItsFieldsOutWithoutGaps) {
    EXPECT_EQ(sizeof(ProtocolHeader), 64u);
    EXPECT_EQ(offsetof(ProtocolHeader, protocolID), 0u);
    EXPECT_EQ(offsetof(ProtocolHeader, endianTest), 4u);
    EXPECT_EQ(offsetof(ProtocolHeader, oneMeterValue), 8u);
    EXPECT_EQ(offsetof(ProtocolHeader, depthX), 12u);
    EXPECT_EQ(offsetof(ProtocolHeader, depthY), 16u);
    EXPECT_EQ(offsetof(ProtocolHeader, depthChannels), 20u);
    EXPECT_EQ(offsetof(ProtocolHeader, depthDepth), 24u);
    EXPECT_EQ(offsetof(ProtocolHeader, processedX), 28u);
    EXPECT_EQ(offsetof(ProtocolHeader, processedY), 32u);
    EXPECT_EQ(offsetof(ProtocolHeader, processedChannels), 36u);
    EXPECT_EQ(offsetof(ProtocolHeader, processedDepth), 40u);
    EXPECT_EQ(offsetof(ProtocolHeader, colorX), 44u);
    EXPECT_EQ(offsetof(ProtocolHeader, colorY), 48u);
    EXPECT_EQ(offsetof(ProtocolHeader, colorChannels), 52u);
    EXPECT_EQ(offsetof(ProtocolHeader, colorDepth), 56u);
    EXPECT_EQ(offsetof(ProtocolHeader, touchCount), 60u);
}

TEST(NetworkTouch, PacksItsDoublesAtFourByteOffsets) {
    EXPECT_EQ(sizeof(NetworkTouch), 28u);
    EXPECT_EQ(offsetof(NetworkTouch, active), 0u);
    EXPECT_EQ(offsetof(NetworkTouch, x), 4u);
    EXPECT_EQ(offsetof(NetworkTouch, y), 12u);
    EXPECT_EQ(offsetof(NetworkTouch, z), 20u);
}

TEST(NetworkTouch, IsAnEmptySlotByDefault) {
    const NetworkTouch touch;
    EXPECT_EQ(touch.active, 0);
    const double x = touch.x;
    const double y = touch.y;
    const double z = touch.z;
    EXPECT_EQ(x, -1.0);
    EXPECT_EQ(y, -1.0);
    EXPECT_EQ(z, -1.0);
}

TEST(networkFrameData, HoldsNothingByDefault) {
    const QVR::networkFrameData frame;
    EXPECT_EQ(frame.touches, nullptr);
    EXPECT_EQ(frame.color, nullptr);
    EXPECT_EQ(frame.depth, nullptr);
    EXPECT_EQ(frame.processed, nullptr);
}

TEST(GetNetworkFrameSize, SumsImagesAndTouches) {
    ProtocolHeader header = fullHeader();
    header.processedX = 640;
    header.processedY = 480;
    header.processedChannels = 1;
    header.processedDepth = 1;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 7142680u);
    header.touchCount = 0;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 7142400u);
    header.colorChannels = 0;
    header.colorDepth = 0;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 921600u);
    header.depthChannels = 0;
    header.depthDepth = 0;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 307200u);
    header.processedChannels = 0;
    header.processedDepth = 0;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 0u);
}

TEST(GetNetworkFrameSize, MultipliesAllFourFactorsOfEachImage) {
    const ProtocolHeader header = fullHeader();
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header),
              640u * 480 * 2 + 1920u * 1080 * 3 + 641u * 481 * 5 * 6 + 280u);
}

TEST(GetNetworkFrameSize, WrapsEachProductButNotTheSum) {
    ProtocolHeader header;
    header.depthX = 65536;
    header.depthY = 65536;
    header.depthChannels = 1;
    header.depthDepth = 1;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), 0u);

    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    header.depthX = most;
    header.depthY = 1;
    header.colorX = most;
    header.colorY = 1;
    header.colorChannels = 1;
    header.colorDepth = 1;
    header.touchCount = most;
    EXPECT_EQ(QVR::utils::getNetworkFrameSize(header), std::size_t{most} * 30);
}

TEST(HeaderToString, PrintsOneLineAnItemWithItsTwoDeliberateMixUps) {
    ProtocolHeader header = fullHeader();
    header.depthChannels = 11;
    EXPECT_EQ(QVR::utils::headerToString(header), "Protocol ID: 1\n"
                                                  "Endian test: 2\n"
                                                  "One meter value: 3\n"
                                                  "Touch count: 10\n"
                                                  "Color x: 1920\n"
                                                  "Color y: 1080\n"
                                                  "Color depth: 1\n"
                                                  "Color channels: 1\n"
                                                  "Depth x: 640\n"
                                                  "Depth y: 1080\n"
                                                  "Depth depth: 2\n"
                                                  "Depth channels: 11\n"
                                                  "Processed x: 641\n"
                                                  "Processed y: 481\n"
                                                  "Processed depth: 6\n"
                                                  "Processed channels: 5\n");
}

TEST(HeaderToString, PrintsUnsignedDecimals) {
    ProtocolHeader header;
    header.protocolID = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(QVR::utils::headerToString(header).substr(0, 24), "Protocol ID: 4294967295\n");
}

} // namespace
