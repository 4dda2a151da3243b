// The client when memory runs out. This program replaces the allocation functions.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "serverClient/TcpClientWin.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

bool refuseNothrow = false;
std::size_t largest = static_cast<std::size_t>(-1);
std::atomic<int> allocations = 0;
std::atomic<std::size_t> allocatedBytes = 0;

void* allocate(std::size_t size) {
    ++allocations;
    allocatedBytes += size;
    void* memory = size <= largest ? std::malloc(size) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return refuseNothrow ? nullptr : std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace {

using QVR::ClientManager;
using support::bytesOf;
using support::LoopbackPeer;
using testing::ElementsAre;

class ClientManagerMemory : public client_test::ClientFixture {
  protected:
    ~ClientManagerMemory() override {
        refuseNothrow = false;
        largest = static_cast<std::size_t>(-1);
    }
};

TEST_F(ClientManagerMemory, AClientWithoutNetworkClientIsStillThere) {
    refuseNothrow = true;
    ClientManager::Init("127.0.0.1", 1);
    EXPECT_THAT(messages(), ElementsAre("FATAL ERROR: Could not instantiate client!!"));
    ASSERT_TRUE(ClientManager::HasInstance());
    EXPECT_EQ(client().networkClient, nullptr);
    EXPECT_FALSE(ClientManager::isConnected());

    forgetMessages();
    EXPECT_EQ(update(), -1);
    EXPECT_THAT(messages(),
                ElementsAre("ERROR!  The networkClient could not initialize!  Returned: -1"));
    client().closeClient();
    shutDown();
    EXPECT_FALSE(hasDepthCamera());
}

TEST_F(ClientManagerMemory, ImagesThatDoNotFitAreAFailedHeader) {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = header.colorY = 1024;
    header.colorChannels = 3;
    header.colorDepth = 1;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
        line.waitUntilClosed();
    });
    ClientManager::debugLogging = true;
    largest = 1'000'000;
    initWith(peer);
    EXPECT_EQ(peer.finish(), "");
    ASSERT_EQ(messages().size(), 5u);
    EXPECT_EQ(messages()[3], "ERROR: Failed to get header from server.");
    EXPECT_FALSE(ClientManager::isConnected());
    client().prepareTouchCollection();
    EXPECT_EQ(readTouches().size(), 30u);
}

TEST_F(ClientManagerMemory, SlotsThatDoNotFitAreAFailedHeader) {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 65536;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
        line.waitUntilClosed();
    });
    largest = 1'000'000;
    initWith(peer);
    EXPECT_EQ(peer.finish(), "");
    EXPECT_FALSE(ClientManager::isConnected());
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), -9999.0);
}

TEST_F(ClientManagerMemory, ARestartedServerWhoseImagesDoNotFitIsTriedAgain) {
    const QVR::ProtocolHeader small = support::touchesOnlyHeader();
    QVR::ProtocolHeader large = small;
    large.touchCount = 2;
    large.colorX = large.colorY = 1024;
    large.colorChannels = 3;
    large.colorDepth = 1;
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        for (const QVR::ProtocolHeader& header : {small, large, small}) {
            line.accept();
            line.send(bytesOf(header) + std::string(280, '\0'));
            line.close();
        }
    });
    ClientManager::reconnectReadsHeader = true;
    largest = 1'000'000;
    initWith(peer);
    EXPECT_EQ(update(), 0);
    EXPECT_EQ(update(), -101);
    EXPECT_EQ(update(), -3);
    EXPECT_EQ(getTouchPoolSize(), 10);
    EXPECT_EQ(getColorDimX(), 0);
    client().prepareTouchCollection();
    EXPECT_EQ(readTouches().size(), 30u);
    EXPECT_EQ(update(), 0);
    EXPECT_EQ(peer.finish(), "");
}

// A server that begins with any header, without the network's time.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class HeaderClient final : public QVR::TcpClientWin {
  public:
    int connect(const char*, const char*) override {
        socket = 0;
        return 0;
    }
    int close() override {
        socket = -1;
        return 0;
    }
    int recv(char* buffer, int length) override {
        if (length != sizeof header) {
            return -1;
        }
        std::memcpy(buffer, &header, sizeof header);
        return length;
    }
    QVR::ProtocolHeader header;
};
#pragma GCC diagnostic pop

TEST_F(ClientManagerMemory, GarbageHeadersAllocateNoMoreThanTheirLimits) {
    using Field = std::uint32_t QVR::ProtocolHeader::*;
    using Header = QVR::ProtocolHeader;
    constexpr std::array<std::array<Field, 4>, 3> images = {{
        {&Header::colorX, &Header::colorY, &Header::colorChannels, &Header::colorDepth},
        {&Header::depthX, &Header::depthY, &Header::depthChannels, &Header::depthDepth},
        {&Header::processedX, &Header::processedY, &Header::processedChannels,
         &Header::processedDepth},
    }};
    constexpr std::array<std::uint32_t, 5> values = {0, 1, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF};
    constexpr std::size_t imageLimit = ClientManager::maxImageBytes;
    constexpr std::size_t slotLimit = std::size_t{65536} * (28 + 3 * sizeof(double));
    constexpr std::size_t messages = 100'000;

    initWithoutServer();
    ClientManager::reconnectReadsHeader = true;
    QVR::NetworkClient* real = client().networkClient;
    HeaderClient scripted;
    client().networkClient = &scripted;
    for (const auto& image : images) {
        constexpr std::size_t combinations = 5 * 5 * 5 * 5;
        for (std::size_t number = 0; number < combinations; ++number) {
            scripted.header = support::touchesOnlyHeader();
            std::size_t rest = number;
            for (const Field field : image) {
                scripted.header.*field = values.at(rest % values.size());
                rest /= values.size();
            }
            scripted.header.touchCount = values.at(number % values.size());
            const std::size_t before = allocatedBytes;
            EXPECT_THAT(update(), testing::AnyOf(-3, -101));
            ASSERT_LE(allocatedBytes - before, imageLimit + slotLimit + messages) << number;
        }
    }
    client().networkClient = real;
}

TEST_F(ClientManagerMemory, AFrameNeedsNoMoreMemory) {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = header.colorY = header.depthX = header.depthY = 2;
    header.processedX = header.processedY = 2;
    header.colorChannels = 3;
    header.depthDepth = 2;
    header.colorDepth = header.depthChannels = 1;
    header.processedChannels = header.processedDepth = 1;
    const std::string frame(280 + 12 + 8 + 4, '\0');
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header) + frame + frame);
    });
    volume.write("QVR_calibration/touch.json", client_test::identityCalibration());
    volume.write("touch_projectionMap.json", "{" + client_test::projectionMap(0) + "}");
    ClientManager::receiveTimeoutMs = 60000;
    initWith(peer);
    EXPECT_EQ(peer.finish(), "");
    unsigned char texture[16];
    setColorTexture(texture);
    setDepthTexture(texture);
    setProcessedTexture(texture);
    const unsigned char* touches = client().getNetworkTouches();

    const int before = allocations;
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(update(), 0);
        prepareTouchCollection();
        getTouchData();
        updateColorTexture();
        updateDepthTexture();
        updateProcessedTexture();
        applyCalibrationToCoord(1.0f, 2.0f, 3.0f);
    }
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(client().getNetworkTouches(), touches);
}

TEST_F(ClientManagerMemory, ADownsampledImageThatDoesNotFitIsALogLineAndTheRestCounts) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
        line.waitUntilClosed();
    });
    volume.write("QVR_calibration/touch.json", client_test::identityCalibration());
    volume.write("touch_projectionMap.json", "{" + client_test::projectionMap(0) + "}");
    initWith(peer);
    forgetMessages();
    largest = 1'000'000;
    EXPECT_EQ(client().setCalibrationData(client_test::identityCalibration(
                  R"("downsampleDepthX": 1000, "downsampleDepthY": 1000, )")),
              0);
    EXPECT_THAT(messages(),
                ElementsAre("WARNING: There is no memory for an image of downsampleDepthX and "
                            "downsampleDepthY, which are ignored."));
    QVR::Vector3 point{320, 240, 1000};
    client().applyCalibrationToCoord(point);
    EXPECT_EQ(point.x, 0.5);
    EXPECT_EQ(point.y, 0.5);
    shutDown();
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerMemory, ATextThatDoesNotFitIsALogLineAndTheSentinel) {
    initWithoutServer();
    forgetMessages();
    const std::string text(2'000'000, ' ');
    largest = 1'000'000;
    EXPECT_FALSE(setProjectionMapping(text.c_str(), 0));
    setCalibration(text.c_str());
    EXPECT_THAT(messages(), ElementsAre("ERROR: setProjectionMapping() failed: std::bad_alloc",
                                        "ERROR: setCalibration() failed: std::bad_alloc"));
}

} // namespace
