// Images as the host's textures.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"

#include <string>
#include <vector>

namespace {

using QVR::ClientManager;
using QVR::ProtocolHeader;
using support::bytesOf;
using support::LoopbackPeer;

class ClientManagerTextures : public client_test::ClientFixture {
  protected:
    // Receives one frame of these images, and hands out three textures of 64 bytes.
    void receive(const ProtocolHeader& header, const std::string& frame) {
        peer = std::make_unique<LoopbackPeer>([header, frame](LoopbackPeer::Line& line) {
            line.accept();
            line.send(bytesOf(header) + frame);
        });
        initWith(*peer);
        ASSERT_EQ(ClientManager::Update(), 0);
        client().colorTexture = bytes(color);
        client().depthTexture = bytes(depth);
        client().processedTexture = bytes(processed);
    }

    static unsigned char* bytes(std::string& text) {
        return reinterpret_cast<unsigned char*>(text.data());
    }

    static ProtocolHeader noTouches() {
        ProtocolHeader header = support::touchesOnlyHeader();
        header.touchCount = 0;
        return header;
    }

    static ProtocolHeader colorHeader(std::uint32_t channels) {
        ProtocolHeader header = noTouches();
        header.colorX = header.colorY = 2;
        header.colorChannels = channels;
        header.colorDepth = 1;
        return header;
    }

    static ProtocolHeader depthHeader(std::uint32_t bytesPerValue) {
        ProtocolHeader header = noTouches();
        header.depthX = header.depthY = 2;
        header.depthChannels = 1;
        header.depthDepth = bytesPerValue;
        return header;
    }

    static ProtocolHeader processedHeader(std::uint32_t channels) {
        ProtocolHeader header = noTouches();
        header.processedX = header.processedY = 2;
        header.processedChannels = channels;
        header.processedDepth = 1;
        return header;
    }

    // `start`, then what was there before.
    static std::string filled(const std::string& start) {
        return start + std::string(64 - start.size(), '-');
    }

    std::string color = std::string(64, '-');
    std::string depth = std::string(64, '-');
    std::string processed = std::string(64, '-');
    std::unique_ptr<LoopbackPeer> peer;
};

TEST_F(ClientManagerTextures, ColourGetsAnOpaqueFourthChannel) {
    receive(colorHeader(3), "abcdefghijkl");
    client().updateColorTexture();
    EXPECT_EQ(color, filled("abc\xFF"
                            "def\xFF"
                            "ghi\xFF"
                            "jkl\xFF"));
    EXPECT_EQ(depth, filled(""));
    EXPECT_EQ(processed, filled(""));
}

TEST_F(ClientManagerTextures, DepthIsLowByteThenHighByte) {
    receive(depthHeader(2), bytesOf(std::vector<unsigned short>{0x1234, 0x00FF, 0xFF00, 1}));
    client().updateDepthTexture();
    EXPECT_EQ(depth, filled(std::string("\x34\x12\0\xFF\xFF\0\0\xFF\0\xFF\0\xFF\x01\0\0\xFF", 16)));
    EXPECT_EQ(color, filled(""));
}

TEST_F(ClientManagerTextures, ProcessedIsGrey) {
    receive(processedHeader(1), std::string("\0\xFF\x80\x01", 4));
    client().updateProcessedTexture();
    EXPECT_EQ(processed, filled(std::string("\0\0\0\xFF\xFF\xFF\xFF\xFF\x80\x80\x80\xFF"
                                            "\x01\x01\x01\xFF",
                                            16)));
    EXPECT_EQ(depth, filled(""));
}

TEST_F(ClientManagerTextures, AreCopiesWithConversionOff) {
    ProtocolHeader header = colorHeader(3);
    header.depthX = header.depthY = 2;
    header.depthChannels = 1;
    header.depthDepth = 2;
    header.processedX = header.processedY = 2;
    header.processedChannels = header.processedDepth = 1;
    receive(header, "abcdefghijkl"
                    "DEPTHval"
                    "pqrs");
    ClientManager::convertImageBuffersTo8bit4channel = false;
    client().updateColorTexture();
    client().updateDepthTexture();
    client().updateProcessedTexture();
    EXPECT_EQ(color, filled("abcdefghijkl"));
    EXPECT_EQ(depth, filled("DEPTHval"));
    EXPECT_EQ(processed, filled("pqrs"));
}

TEST_F(ClientManagerTextures, NeedABuffer) {
    receive(colorHeader(3), "abcdefghijkl");
    client().colorTexture = nullptr;
    client().updateColorTexture();
    ClientManager::convertImageBuffersTo8bit4channel = false;
    client().updateColorTexture();
    EXPECT_EQ(color, filled(""));
}

TEST_F(ClientManagerTextures, AreLeftAloneBeforeTheFirstHeader) {
    initWithoutServer();
    for (const bool convert : {true, false}) {
        ClientManager::convertImageBuffersTo8bit4channel = convert;
        client().colorTexture = bytes(color);
        client().depthTexture = bytes(depth);
        client().processedTexture = bytes(processed);
        client().updateColorTexture();
        client().updateDepthTexture();
        client().updateProcessedTexture();
        EXPECT_EQ(color + depth + processed, filled("") + filled("") + filled(""));
    }
}

TEST_F(ClientManagerTextures, BytesThatAColourImageLacksAreZero) {
    receive(colorHeader(1), "abcd");
    client().updateColorTexture();
    EXPECT_EQ(color, filled(std::string("abc\xFF"
                                        "d\0\0\xFF"
                                        "\0\0\0\xFF"
                                        "\0\0\0\xFF",
                                        16)));
}

TEST_F(ClientManagerTextures, ColourIsTakenAsThreeBytesAPixelWhateverTheHeaderSays) {
    receive(colorHeader(4), "abcdefghijklmnop");
    client().updateColorTexture();
    EXPECT_EQ(color, filled("abc\xFF"
                            "def\xFF"
                            "ghi\xFF"
                            "jkl\xFF"));
}

TEST_F(ClientManagerTextures, ValuesThatADepthImageLacksAreZero) {
    receive(depthHeader(1), "abcd");
    client().updateDepthTexture();
    EXPECT_EQ(depth, filled(std::string("ab\0\xFF"
                                        "cd\0\xFF"
                                        "\0\0\0\xFF"
                                        "\0\0\0\xFF",
                                        16)));
}

TEST_F(ClientManagerTextures, ProcessedIsTakenAsOneByteAPixelWhateverTheHeaderSays) {
    receive(processedHeader(2), "abcdefgh");
    client().updateProcessedTexture();
    EXPECT_EQ(processed, filled("aaa\xFF"
                                "bbb\xFF"
                                "ccc\xFF"
                                "ddd\xFF"));
}

} // namespace
