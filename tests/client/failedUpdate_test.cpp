// What a host reads after an update that failed, to the byte.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "client/smallStream.h"

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

using client_test::smallFrame;
using client_test::smallHeader;
using client_test::smallPixels;
using client_test::smallSlots;
using QVR::NetworkTouch;
using QVR::ProtocolHeader;
using support::bytesOf;
using support::LoopbackPeer;
using testing::Each;
using testing::ElementsAre;

// What getTouchData gives for the slots of `frame` from the beginning of the list.
std::vector<float> valuesOf(const std::string& frame) {
    std::vector<float> values;
    for (std::size_t slot = 0; slot < smallSlots; ++slot) {
        NetworkTouch touch;
        std::memcpy(&touch, frame.data() + slot * sizeof touch, sizeof touch);
        for (const double value : {touch.x, touch.y, touch.z}) {
            values.push_back(touch.active == 1 ? static_cast<float>(value) : -1.0f);
        }
    }
    return values;
}

std::vector<float> listedValues() {
    std::vector<float> values;
    EXPECT_TRUE(prepareTouchCollection());
    for (float value = getTouchData(); value != -9999.0f; value = getTouchData()) {
        values.push_back(value);
    }
    return values;
}

// The three textures with what they are lent for.
struct Textures {
    std::array<unsigned char, 4 * smallPixels> color, depth, processed;

    Textures() {
        color.fill('-');
        depth.fill('-');
        processed.fill('-');
        setColorTexture(color.data());
        setDepthTexture(depth.data());
        setProcessedTexture(processed.data());
    }
    Textures(const Textures&) = delete;
    Textures& operator=(const Textures&) = delete;

    void update() const {
        updateColorTexture();
        updateDepthTexture();
        updateProcessedTexture();
    }

    // The image bytes of a frame as they are found in the textures.
    std::string imageBytes() const {
        std::string bytes;
        const auto add = [&bytes](const auto& texture, std::size_t each) {
            for (std::size_t at = 0; at < texture.size(); at += 4) {
                bytes.append(texture.begin() + at, texture.begin() + at + each);
            }
        };
        add(color, 3);
        add(depth, 2);
        add(processed, 1);
        return bytes;
    }
};

class FailedUpdate : public client_test::ClientFixture, public testing::WithParamInterface<bool> {
  protected:
    FailedUpdate() { setReconnectReadsHeader(GetParam()); }

    static bool readsHeaders() { return GetParam(); }
};

TEST_P(FailedUpdate, MinusOneHundredAndOneLeavesThePiecesOfTheFrameButNoTouchThatLingers) {
    const std::string first = smallFrame(1, 'a');
    const std::string second = smallFrame(2, 'b');
    for (std::size_t cut = 0; cut < second.size(); ++cut) {
        SCOPED_TRACE(cut);
        LoopbackPeer peer([&](LoopbackPeer::Line& line) {
            line.accept();
            line.send(bytesOf(smallHeader()) + first + second.substr(0, cut));
            line.close();
        });
        initWith(peer);
        Textures textures;
        ASSERT_EQ(update(), 0);
        ASSERT_THAT(listedValues(), Each(1.0f));
        EXPECT_EQ(update(), -101);

        EXPECT_EQ(getTouchPoolSize(), 2);
        EXPECT_EQ(getDimX(), 2);
        EXPECT_EQ(getColorDimY(), 1);
        // What came of the frame lies over what was there.
        const std::string pieces = second.substr(0, cut) + first.substr(cut);
        const std::vector<float> empty(3 * smallSlots, -1.0f);
        EXPECT_EQ(listedValues(), readsHeaders() ? empty : valuesOf(pieces));
        textures.update();
        EXPECT_EQ(textures.imageBytes(), pieces.substr(smallSlots * sizeof(NetworkTouch)));

        // Without a server it stays like that.
        client().port = support::unusedPort();
        EXPECT_EQ(update(), -2);
        EXPECT_EQ(getTouchPoolSize(), 2);
        EXPECT_EQ(listedValues(), readsHeaders() ? empty : valuesOf(pieces));
        EXPECT_EQ(peer.finish(), "");
        shutDown();
    }
}

TEST_P(FailedUpdate, MinusTwoBeforeTheFirstContactHasNeitherSizesNorTouches) {
    initWithoutServer();
    const Textures textures;
    EXPECT_EQ(update(), -2);
    for (const int size :
         {getTouchPoolSize(), getDimX(), getDimY(), getColorDimX(), getColorDimY()}) {
        EXPECT_EQ(size, 0);
    }
    EXPECT_THAT(listedValues(), ElementsAre());
    textures.update();
    EXPECT_EQ(textures.imageBytes(), std::string(6 * smallPixels, '-'));
}

TEST_P(FailedUpdate, MinusThreeHasTheSizesThatCameOrNoneButNoTouch) {
    const std::string bytes = bytesOf(smallHeader());
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        SCOPED_TRACE(cut);
        initWithoutServer();
        // The fields of a header that breaks off are those that came, and 0.
        std::string pieces(sizeof(ProtocolHeader), '\0');
        if (!readsHeaders()) {
            pieces.replace(0, cut, bytes, 0, cut);
        }
        ProtocolHeader expected;
        std::memcpy(&expected, pieces.data(), sizeof expected);
        LoopbackPeer peer([&](LoopbackPeer::Line& line) {
            line.accept();
            line.send(bytes.substr(0, cut));
            line.close();
        });
        client().port = peer.port();
        const Textures textures;
        EXPECT_EQ(update(), -3);

        EXPECT_EQ(getTouchPoolSize(), static_cast<int>(expected.touchCount));
        EXPECT_EQ(getDimX(), static_cast<int>(expected.depthX));
        EXPECT_EQ(getDimY(), static_cast<int>(expected.depthY));
        EXPECT_EQ(getColorDimX(), static_cast<int>(expected.colorX));
        EXPECT_EQ(getColorDimY(), static_cast<int>(expected.colorY));
        EXPECT_THAT(listedValues(), ElementsAre());
        textures.update();
        EXPECT_EQ(textures.imageBytes(), std::string(6 * smallPixels, '-'));
        EXPECT_EQ(peer.finish(), "");
        shutDown();
    }
}

INSTANTIATE_TEST_SUITE_P(ReadingHeadersOnceOrAlways, FailedUpdate, testing::Bool());

} // namespace
