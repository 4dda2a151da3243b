// A client that reads the header of every connection goes on after a failure by itself.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/plugin.h"

#include <string>
#include <vector>

namespace {

using client_test::identityCalibration;
using QVR::ClientManager;
using QVR::NetworkTouch;
using QVR::ProtocolHeader;
using support::bytesOf;
using support::LoopbackPeer;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

// All streams; images of `width` by 2 pixels.
ProtocolHeader headerOf(std::uint32_t width, std::uint32_t slots) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = slots;
    header.colorX = header.depthX = header.processedX = width;
    header.colorY = header.depthY = header.processedY = 2;
    header.colorChannels = 3;
    header.depthDepth = 2;
    header.colorDepth = header.depthChannels = 1;
    header.processedChannels = header.processedDepth = 1;
    return header;
}

// Every slot is touched at (value, value, value), every image byte is `fill`.
std::string frameOf(const ProtocolHeader& header, double value, char fill) {
    const std::vector<NetworkTouch> touches(header.touchCount,
                                            NetworkTouch{1, value, value, value});
    const std::size_t imageBytes = header.colorX * header.colorY * header.colorChannels +
                                   2U * header.depthX * header.depthY +
                                   std::size_t{header.processedX} * header.processedY;
    return bytesOf(touches) + std::string(imageBytes, fill);
}

class ClientManagerReconnect : public client_test::ClientFixture {
  protected:
    ClientManagerReconnect() { ClientManager::reconnectReadsHeader = true; }

    static std::vector<double> listTouches() {
        client().prepareTouchCollection();
        return readTouches();
    }

    // Sends `stream` on a connection of its own and closes it.
    static void serve(LoopbackPeer::Line& line, const std::string& stream) {
        line.accept();
        line.send(stream);
        line.close();
    }

    // Lends a buffer of exactly the size that the client tells for the colour image.
    static std::vector<unsigned char> lendColorTexture() {
        const auto pixels = static_cast<std::size_t>(getColorDimX() * getColorDimY());
        std::vector<unsigned char> texture(4 * pixels, '-');
        setColorTexture(texture.data());
        return texture;
    }
};

TEST(ClientManagerSwitches, ReadsOneHeaderUnlessToldOtherwise) {
    EXPECT_FALSE(ClientManager::reconnectReadsHeader);
    setReconnectReadsHeader(true);
    EXPECT_TRUE(ClientManager::reconnectReadsHeader);
    setReconnectReadsHeader(false);
    EXPECT_FALSE(ClientManager::reconnectReadsHeader);
}

TEST_F(ClientManagerReconnect, KeepsTheFramesOfARestartedServerInStep) {
    const ProtocolHeader header = headerOf(4, 2);
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(header) + frameOf(header, 1, 'a') + frameOf(header, 2, 'b'));
        serve(line, bytesOf(header) + frameOf(header, 3, 'c') + frameOf(header, 4, 'd'));
    });
    initWith(peer);
    std::vector<unsigned char> texture = lendColorTexture();
    for (const double value : {1.0, 2.0}) {
        EXPECT_EQ(ClientManager::Update(), 0);
        EXPECT_THAT(listTouches(), testing::AllOf(SizeIs(6), Each(value)));
    }
    EXPECT_EQ(ClientManager::Update(), -101);
    for (const double value : {3.0, 4.0}) {
        EXPECT_EQ(ClientManager::Update(), 0);
        EXPECT_THAT(listTouches(), testing::AllOf(SizeIs(6), Each(value)));
    }
    // Its size is what it was: the texture is still the host's.
    updateColorTexture();
    EXPECT_EQ(texture[0], 'd');
    EXPECT_EQ(texture.back(), 255);
    EXPECT_EQ(peer.finish(), "");
}

// A wider and a narrower server after the first one.
class RestartedServer : public ClientManagerReconnect,
                        public testing::WithParamInterface<std::uint32_t> {};

TEST_P(RestartedServer, MayHaveOtherSizes) {
    const ProtocolHeader first = headerOf(4, 3);
    const ProtocolHeader second = headerOf(GetParam(), GetParam());
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(first) + frameOf(first, 1, 'a'));
        serve(line, bytesOf(second) + frameOf(second, 2, 'b') + frameOf(second, 3, 'c'));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    std::vector<unsigned char> before = lendColorTexture();
    std::vector<unsigned char> depth(4 * 8, '-');
    std::vector<unsigned char> processed(4 * 8, '-');
    setDepthTexture(depth.data());
    setProcessedTexture(processed.data());

    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(getColorDimX(), 4);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(getColorDimX(), static_cast<int>(GetParam()));
    EXPECT_EQ(getDimX(), static_cast<int>(GetParam()));
    EXPECT_EQ(getTouchPoolSize(), static_cast<int>(GetParam()));
    EXPECT_THAT(listTouches(), testing::AllOf(SizeIs(3 * GetParam()), Each(3.0)));

    // Buffers of another size are never written.
    updateColorTexture();
    updateDepthTexture();
    updateProcessedTexture();
    EXPECT_THAT(before, Each('-'));
    EXPECT_THAT(depth, Each('-'));
    EXPECT_THAT(processed, Each('-'));
    std::vector<unsigned char> after = lendColorTexture();
    updateColorTexture();
    EXPECT_EQ(after[after.size() - 2], 'c');
    EXPECT_EQ(after.back(), 255);
    EXPECT_EQ(peer.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Sizes, RestartedServer, testing::Values(1u, 2u, 7u, 100u));

TEST_F(ClientManagerReconnect, ForgetsOnlyTheTextureWhoseImageIsAnother) {
    const ProtocolHeader first = headerOf(4, 1);
    ProtocolHeader second = first;
    second.processedX = 2; // as many pixels in another shape
    second.processedY = 4;
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(first));
        serve(line, bytesOf(second) + frameOf(second, 1, 'a'));
    });
    initWith(peer);
    unsigned char color[32];
    unsigned char depth[32];
    unsigned char processed[32];
    setColorTexture(color);
    setDepthTexture(depth);
    setProcessedTexture(processed);
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(client().colorTexture, color);
    EXPECT_EQ(client().depthTexture, depth);
    EXPECT_EQ(client().processedTexture, nullptr);
}

TEST_F(ClientManagerReconnect, KeepsTexturesThatWereSetBeforeTheFirstHeader) {
    const ProtocolHeader header = headerOf(4, 1);
    LoopbackPeer peer([&](LoopbackPeer::Line& line) { serve(line, bytesOf(header)); });
    initWithoutServer();
    unsigned char color[32];
    setColorTexture(color);
    client().port = peer.port();
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(client().colorTexture, color);
}

TEST_F(ClientManagerReconnect, TriesAgainAfterAFailedHeader) {
    const ProtocolHeader header = headerOf(4, 1);
    ProtocolHeader future = header;
    future.protocolID = 2;
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(future));
        serve(line, bytesOf(header).substr(0, 63));
        serve(line, "");
        serve(line, bytesOf(header) + frameOf(header, 5, 'a'));
    });
    initWith(peer);
    EXPECT_EQ(ClientManager::Update(), -3);
    EXPECT_EQ(client().header.protocolID, ClientManager::noHeaderYet);
    EXPECT_EQ(getColorDimX(), 0);
    EXPECT_EQ(ClientManager::Update(), -3);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_THAT(listTouches(), ElementsAre(5, 5, 5));
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerReconnect, StaysWithTheSizesOfTheLastHeaderThatCounted) {
    const ProtocolHeader header = headerOf(4, 2);
    ProtocolHeader garbage = headerOf(5000, 65537);
    ProtocolHeader huge = headerOf(16384, 7);
    huge.processedY = 16385;
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(header) + frameOf(header, 1, 'a'));
        serve(line, bytesOf(garbage));
        serve(line, bytesOf(huge));
        serve(line, bytesOf(header) + frameOf(header, 2, 'b'));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    std::vector<unsigned char> texture = lendColorTexture();
    EXPECT_EQ(ClientManager::Update(), -101);
    for (int failure = 0; failure < 2; ++failure) {
        EXPECT_EQ(ClientManager::Update(), -3);
        EXPECT_EQ(getColorDimX(), 4);
        EXPECT_EQ(getDimY(), 2);
        EXPECT_EQ(getTouchPoolSize(), 2);
        EXPECT_THAT(listTouches(), ElementsAre(-1, -1, -1, -1, -1, -1));
        updateColorTexture();
    }
    EXPECT_EQ(ClientManager::Update(), 0);
    updateColorTexture();
    EXPECT_EQ(texture[0], 'b');
    EXPECT_THAT(listTouches(), Each(2.0));
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerReconnect, LeavesNoSlotWithATouchAfterAFailure) {
    const ProtocolHeader header = headerOf(4, 2);
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        // The second frame breaks off within the second slot.
        serve(line,
              bytesOf(header) + frameOf(header, 1, 'a') + frameOf(header, 2, 'b').substr(0, 40));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    EXPECT_THAT(listTouches(), Each(1.0));
    client().prepareTouchCollection();
    EXPECT_EQ(ClientManager::Update(), -101);
    // What was listed before is gone as well.
    EXPECT_THAT(readTouches(), ElementsAre(-1, -1, -1, -1, -1, -1));
    EXPECT_THAT(listTouches(), ElementsAre(-1, -1, -1, -1, -1, -1));
    client().port = support::unusedPort();
    EXPECT_EQ(ClientManager::Update(), -2);
    EXPECT_THAT(listTouches(), ElementsAre(-1, -1, -1, -1, -1, -1));
    EXPECT_EQ(getTouchPoolSize(), 2);
}

TEST_F(ClientManagerReconnect, IsOnFromTheNextConnectionAfterItWasSwitched) {
    const ProtocolHeader header = headerOf(4, 1);
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, "");
        serve(line, bytesOf(header) + frameOf(header, 1, 'a'));
    });
    ClientManager::reconnectReadsHeader = false;
    initWith(peer);
    setReconnectReadsHeader(true);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_THAT(listTouches(), ElementsAre(1, 1, 1));
}

TEST_F(ClientManagerReconnect, ReadsTheCalibrationAgainForAnotherDepthUnit) {
    volume.write("QVR_calibration/touch.json", identityCalibration());
    volume.write("touch_projectionMap.json", "{" + client_test::projectionMap(0) + "}");
    ProtocolHeader finer = headerOf(4, 1);
    const ProtocolHeader coarse = finer;
    finer.oneMeterValue = 8000; // 1000 units are nearer than the near clip then
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        serve(line, bytesOf(coarse));
        serve(line, bytesOf(coarse));
        serve(line, bytesOf(finer));
    });
    initWith(peer);
    const auto calibrated = [] {
        applyCalibrationToCoord(320, 240, 1000);
        return getCalibratedX();
    };
    EXPECT_EQ(calibrated(), 0.5f);
    // The same unit: what the host has set since stays.
    const std::string map = "{" + client_test::projectionMap(0, "10") + "}";
    ASSERT_TRUE(setProjectionMapping(map.c_str(), 0));
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_EQ(calibrated(), 5.0f);
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_NE(calibrated(), 5.0f);
    EXPECT_LT(calibrated(), 0.0f);
}

} // namespace
