// A client and everything that can go wrong on its wire.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "client/smallStream.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using client_test::smallFrame;
using client_test::smallHeader;
using client_test::smallPixels;
using client_test::smallStream;
using QVR::ClientManager;
using QVR::ProtocolHeader;
using support::bytesOf;
using support::LoopbackPeer;
using testing::AllOf;
using testing::AnyOf;
using testing::Each;
using testing::SizeIs;

// Textures of exactly the sizes that the client tells: memory checkers see a byte too many.
class LentTextures {
  public:
    LentTextures()
        : color_(bytes(getColorDimX(), getColorDimY())), depth_(bytes(getDimX(), getDimY())),
          processed_(bytes(static_cast<int>(ClientManager::Get()->header.processedX),
                           static_cast<int>(ClientManager::Get()->header.processedY))) {
        setColorTexture(color_.get());
        setDepthTexture(depth_.get());
        setProcessedTexture(processed_.get());
    }
    ~LentTextures() {
        setColorTexture(nullptr);
        setDepthTexture(nullptr);
        setProcessedTexture(nullptr);
    }
    LentTextures(const LentTextures&) = delete;
    LentTextures& operator=(const LentTextures&) = delete;

    static void update() {
        updateColorTexture();
        updateDepthTexture();
        updateProcessedTexture();
    }

    unsigned char firstOfColor() const { return color_[0]; }

  private:
    // Null where no host would have the memory.
    static std::unique_ptr<unsigned char[]> bytes(int width, int height) {
        const std::uint64_t pixels =
            std::uint64_t{static_cast<std::uint32_t>(width)} * static_cast<std::uint32_t>(height);
        constexpr std::uint64_t most = 1'000'000;
        return pixels <= most ? std::make_unique<unsigned char[]>(4 * pixels) : nullptr;
    }

    std::unique_ptr<unsigned char[]> color_, depth_, processed_;
};

// What an update may say of a connection that is reset after so many bytes of the stream.
testing::Matcher<int> failureOfAReset(std::size_t bytes) {
    if (bytes == 0) {
        // The client may learn of the reset before it learns that it was connected.
        return AnyOf(-2, -3);
    }
    return testing::Eq(bytes < sizeof(ProtocolHeader) ? -3 : -101);
}

class WireFaults : public client_test::ClientFixture {
  protected:
    WireFaults() {
        setReconnectReadsHeader(true);
        setReceiveTimeout(60000); // no wait of these tests is for ever
    }

    static std::vector<double> listedTouches() {
        client().prepareTouchCollection();
        return readTouches();
    }

    static void expectFrame(double value, char fill) {
        EXPECT_THAT(listedTouches(), AllOf(SizeIs(6), Each(value)));
        const LentTextures textures;
        LentTextures::update();
        EXPECT_EQ(textures.firstOfColor(), fill);
    }
};

TEST_F(WireFaults, AResetAtAnyByteIsAFailureAndTheNextConnectionIsInStep) {
    const std::string stream = smallStream(1, 'a');
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        for (std::size_t cut = 0; cut < stream.size(); ++cut) {
            line.accept();
            line.send(stream.substr(0, cut));
            line.waitUntilRead();
            line.reset();
            line.accept();
            line.send(smallStream(static_cast<double>(cut), 'b'));
            line.waitUntilClosed();
        }
    });
    for (std::size_t cut = 0; cut < stream.size(); ++cut) {
        SCOPED_TRACE(cut);
        // The first header's fate is not told by init: it is the update's matter here.
        initWithoutServer();
        client().port = peer.port();
        EXPECT_THAT(update(), failureOfAReset(cut));
        EXPECT_FALSE(ClientManager::isConnected());
        EXPECT_THAT(listedTouches(), Each(-1.0));
        EXPECT_EQ(update(), 0);
        expectFrame(static_cast<double>(cut), 'b');
        shutDown();
    }
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(WireFaults, AResetWithoutTheSwitchesFailsAsWell) {
    setReconnectReadsHeader(false);
    const std::string stream = smallStream(1, 'a');
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        for (std::size_t cut = 0; cut < stream.size(); ++cut) {
            line.accept();
            line.send(stream.substr(0, cut));
            line.waitUntilRead();
            line.reset();
        }
    });
    for (std::size_t cut = 0; cut < stream.size(); ++cut) {
        SCOPED_TRACE(cut);
        initWithoutServer();
        client().port = peer.port();
        EXPECT_THAT(update(), failureOfAReset(cut));
        EXPECT_FALSE(ClientManager::isConnected());
        shutDown();
    }
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(WireFaults, AFrameByteByByteIsAFrameButAHeaderIsNot) {
    const std::string frame = smallFrame(1, 'a');
    const std::string header = bytesOf(smallHeader());
    const auto single = [](const std::string& bytes) {
        return std::vector<std::size_t>(bytes.size() - 1, 1);
    };
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(header);
        line.sendInPieces(frame, single(frame));
        line.close();
        line.accept();
        line.sendInPieces(header, single(header));
        line.waitUntilClosed();
        line.accept();
        line.send(smallStream(2, 'b'));
        line.waitUntilClosed();
    });
    initWith(peer);
    EXPECT_EQ(update(), 0);
    expectFrame(1, 'a');
    EXPECT_EQ(update(), -101);
    EXPECT_EQ(update(), -3);
    EXPECT_EQ(update(), 0);
    expectFrame(2, 'b');
    shutDown();
    EXPECT_EQ(peer.finish(), "");
}

// Nothing in the stream says that this is no frame: what must hold is that it does no harm, and
// that the next connection is in step.
TEST_F(WireFaults, ASecondHeaderIsTakenForTheBeginningOfAFrame) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(smallHeader()) + smallStream(1, 'a'));
        line.close();
        line.accept();
        line.send(smallStream(2, 'b'));
    });
    initWith(peer);
    EXPECT_EQ(update(), 0);
    EXPECT_THAT(listedTouches(), SizeIs(6));
    const LentTextures textures;
    LentTextures::update();
    EXPECT_EQ(update(), -101);
    EXPECT_EQ(update(), 0);
    expectFrame(2, 'b');
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(WireFaults, AnEndlessStreamForAHeaderOfNothingIsNeverRead) {
    ProtocolHeader nothing;
    nothing.protocolID = 1;
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(nothing) + std::string(10'000, 'x'));
        line.waitUntilClosed();
    });
    initWith(peer);
    for (int turn = 0; turn < 100; ++turn) {
        EXPECT_EQ(update(), 0);
        EXPECT_THAT(listedTouches(), SizeIs(0));
    }
    shutDown();
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(WireFaults, AnEndlessStreamOfRubbishNeverGetsPastTheHeader) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        for (int turn = 0; turn < 20; ++turn) {
            line.accept();
            line.send(std::string(100'000, 'x'));
            line.waitUntilClosed();
        }
    });
    initWith(peer);
    for (int turn = 1; turn < 20; ++turn) {
        EXPECT_EQ(update(), -3);
        EXPECT_EQ(getTouchPoolSize(), 0);
    }
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(WireFaults, AnEndlessFrameEndsInTime) {
    ProtocolHeader header = smallHeader();
    header.processedX = header.processedY = 16384; // a quarter of a gigabyte, and as good as none
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
        line.trickle(std::string(100'000, 'x'), std::chrono::milliseconds(1));
    });
    initWith(peer);
    setReceiveTimeout(50);
    EXPECT_EQ(update(), -101);
    EXPECT_EQ(peer.finish(), "");
}

// Field by field the edges of its range; the frame that follows fits the true header.
class GarbageHeader : public WireFaults, public testing::WithParamInterface<int> {};

TEST_P(GarbageHeader, DoesNoHarmAndTheNextConnectionIsInStep) {
    const auto field = static_cast<std::size_t>(GetParam());
    const std::vector<std::uint32_t> values = {0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        for (const std::uint32_t value : values) {
            std::string bytes = smallStream(1, 'a');
            std::memcpy(bytes.data() + 4 * field, &value, sizeof value);
            line.accept();
            line.send(bytes + smallFrame(1, 'a'));
            line.waitUntilRead();
            line.close();
            line.accept();
            line.send(smallStream(2, 'b'));
            line.waitUntilClosed();
        }
    });
    for (const std::uint32_t value : values) {
        SCOPED_TRACE(value);
        initWithoutServer();
        client().port = peer.port();
        int result = update();
        EXPECT_THAT(result, AnyOf(0, -3, -101));
        for (int turn = 0; result == 0 && turn < 20; ++turn) {
            const LentTextures textures;
            LentTextures::update();
            EXPECT_LE(listedTouches().size(), 3u * 65536);
            result = update();
        }
        EXPECT_LT(result, 0);
        EXPECT_THAT(listedTouches(), Each(-1.0));
        EXPECT_EQ(update(), 0);
        expectFrame(2, 'b');
        shutDown();
    }
    EXPECT_EQ(peer.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Fields, GarbageHeader, testing::Range(0, 16));

} // namespace
