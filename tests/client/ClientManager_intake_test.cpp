// Connection, header and frames.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/FakeNetworkClient.h"

#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using client_test::FakeNetworkClient;
using client_test::noCalibrationFile;
using QVR::ClientManager;
using QVR::NetworkTouch;
using QVR::ProtocolHeader;
using support::bytesOf;
using support::LoopbackPeer;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;

const std::string headerFailed = "ERROR: Failed to get header from server.";

class ClientManagerIntake : public client_test::ClientFixture {
  protected:
    // The result of a first contact, made by an update, with a server that runs `script`.
    int firstContact(LoopbackPeer::Script script) {
        initWithoutServer();
        LoopbackPeer peer(std::move(script));
        client().port = peer.port();
        ClientManager::debugLogging = true;
        forgetMessages();
        const int result = ClientManager::Update();
        EXPECT_EQ(peer.finish(), "");
        return result;
    }

    int firstContact(const ProtocolHeader& header) {
        return firstContact([header](LoopbackPeer::Line& line) {
            line.accept();
            line.send(bytesOf(header));
        });
    }
};

std::vector<NetworkTouch> tenSlots() {
    std::vector<NetworkTouch> touches(10);
    touches[2] = {1, 0.1, 0.2, 0.3};
    return touches;
}

TEST_F(ClientManagerIntake, UpdateWithoutAClientSaysSo) {
    EXPECT_EQ(ClientManager::Update(), -100);
}

TEST_F(ClientManagerIntake, UpdateRetriesAServerThatIsDown) {
    initWithoutServer();
    const std::string port = client().port;
    ClientManager::debugLogging = true;
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -2);
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to 127.0.0.1:" + port, "Unable to connect to server",
                            "ERROR!  The networkClient could not connect!  Returned: -1",
                            "Client manager update failed with: -2"));

    ClientManager::debugLogging = false;
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + bytesOf(tenSlots()));
    });
    client().port = peer.port();
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(client().header.touchCount, 10u);
}

TEST_F(ClientManagerIntake, ANetworkClientThatDoesNotStartIsCleanedUp) {
    initWithoutServer();
    QVR::NetworkClient* real = client().networkClient;
    FakeNetworkClient fake;
    fake.initialised = false;
    fake.initResult = -7;
    client().networkClient = &fake;
    forgetMessages();
    EXPECT_EQ(client().CheckClientState(), -1);
    EXPECT_THAT(fake.calls, ElementsAre("init", "close", "cleanup"));
    EXPECT_THAT(messages(),
                ElementsAre("ERROR!  The networkClient could not initialize!  Returned: -7"));

    ClientManager::debugLogging = true;
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -1);
    EXPECT_THAT(messages(),
                ElementsAre("ERROR!  The networkClient could not initialize!  Returned: -7",
                            "Client manager update failed with: -1"));

    client().networkClient = nullptr;
    EXPECT_EQ(client().CheckClientState(), -1);
    client().networkClient = real;
}

TEST_F(ClientManagerIntake, StartsConnectsAndReadsInThisOrder) {
    initWithoutServer();
    QVR::NetworkClient* real = client().networkClient;
    FakeNetworkClient fake;
    fake.initialised = false;
    fake.connected = false;
    fake.recvResults = {63};
    client().networkClient = &fake;
    client().ip = "host";
    client().port = "12";
    EXPECT_EQ(client().CheckClientState(), -3);
    EXPECT_THAT(fake.calls, ElementsAre("init", "connect host 12", "recv 64", "close", "cleanup"));

    fake.calls.clear();
    fake.connectResult = -2;
    EXPECT_EQ(client().CheckClientState(), -2);
    EXPECT_THAT(fake.calls, ElementsAre("init", "connect host 12", "close", "cleanup"));
    client().networkClient = real;
}

TEST_F(ClientManagerIntake, AHeaderInPiecesIsAFailedHeader) {
    const int result = firstContact([](LoopbackPeer::Line& line) {
        line.accept();
        line.sendInPieces(bytesOf(support::touchesOnlyHeader()), {40});
    });
    EXPECT_EQ(result, -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + client().port,
                                        "Could not read ProtocolHeader: 24", headerFailed,
                                        "Client manager update failed with: -3"));
    EXPECT_FALSE(ClientManager::isConnected());

    // Ten slots are announced but there is no room for them: reading is safe and finds nothing.
    EXPECT_EQ(client().header.touchCount, 10u);
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), -9999.0);
}

TEST_F(ClientManagerIntake, AFailedHeaderIsNotReadAgain) {
    initWithoutServer();
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.close();
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
    });
    client().port = peer.port();
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port(),
                                        "Data reception failed with timeout.",
                                        "Could not read ProtocolHeader: -50"));
    EXPECT_EQ(client().header.protocolID, 0u);
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(client().header.protocolID, 0u);
    EXPECT_EQ(client().header.touchCount, 0u);
}

TEST_F(ClientManagerIntake, AnotherProtocolVersionIsRefused) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.protocolID = 2;
    EXPECT_EQ(firstContact(header), -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + client().port,
                                        "Wrong protocol version. Client 2 Server 1\n", headerFailed,
                                        "Client manager update failed with: -3"));
    EXPECT_EQ(client().header.touchCount, 10u);
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), -9999.0);
}

TEST_F(ClientManagerIntake, TheHeaderFailureLineNeedsDebugging) {
    initWithoutServer();
    ProtocolHeader header = support::touchesOnlyHeader();
    header.protocolID = 2;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
    });
    client().port = peer.port();
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + peer.port(),
                                        "Wrong protocol version. Client 2 Server 1\n"));
}

TEST_F(ClientManagerIntake, HeaderResultsTellShortFromWrong) {
    initWithoutServer();
    QVR::NetworkClient* real = client().networkClient;
    FakeNetworkClient fake;
    client().networkClient = &fake;
    fake.recvResults = {63, 64};
    EXPECT_EQ(client().GetHeaderFromServer(), -1);
    EXPECT_EQ(client().GetHeaderFromServer(), -2);
    EXPECT_EQ(client().header.protocolID, 0u);
    client().networkClient = real;
}

TEST_F(ClientManagerIntake, AFrameThatBreaksOffClosesAndTheNextUpdateGoesStraightToFrames) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + bytesOf(tenSlots()).substr(0, 100));
        line.close();
        line.accept();
        line.send(bytesOf(tenSlots()));
    });
    initWith(peer);
    ClientManager::debugLogging = true;
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_THAT(messages(), ElementsAre(noCalibrationFile, "Data reception failed with timeout.",
                                        "Client manager ProcessServerFrame() failed with -50"));
    EXPECT_FALSE(ClientManager::isConnected());

    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), 0);
    EXPECT_THAT(messages(),
                ElementsAre("Connecting to 127.0.0.1:" + peer.port(), noCalibrationFile));
    EXPECT_EQ(peer.finish(), "");
    client().prepareTouchCollection();
    EXPECT_EQ(readTouches()[6], 0.1);
}

TEST_F(ClientManagerIntake, AFailedFrameIsSilentWithoutDebugging) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
        line.close();
    });
    initWith(peer);
    forgetMessages();
    EXPECT_EQ(ClientManager::Update(), -101);
    EXPECT_THAT(messages(), ElementsAre(noCalibrationFile, "Data reception failed with timeout."));
}

TEST_F(ClientManagerIntake, ReceivesTouchesColourDepthAndProcessedInThisOrder) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = 5;
    header.colorY = 3;
    header.colorChannels = 3;
    header.colorDepth = 1;
    header.depthX = 7;
    header.depthY = 2;
    header.depthChannels = 1;
    header.depthDepth = 2;
    header.processedX = 4;
    header.processedY = 11;
    header.processedChannels = 1;
    header.processedDepth = 1;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
    });
    initWith(peer);
    QVR::NetworkClient* real = client().networkClient;
    FakeNetworkClient fake;
    client().networkClient = &fake;
    fake.recvResults = {1, 2, 3, 4};
    EXPECT_EQ(client().ProcessServerFrame(), 4);
    EXPECT_THAT(fake.calls, ElementsAre("recv 280", "recv 45", "recv 28", "recv 44"));

    fake.calls.clear();
    fake.recvResults = {1, 2, -50};
    EXPECT_EQ(client().ProcessServerFrame(), -50);
    EXPECT_THAT(fake.calls, ElementsAre("recv 280", "recv 45", "recv 28"));
    client().networkClient = real;
}

// Bit by bit: touches, colour, depth, processed.
class ClientManagerStreams : public client_test::ClientFixture,
                             public testing::WithParamInterface<int> {};

TEST_P(ClientManagerStreams, ArriveInEveryCombination) {
    const bool hasTouches = (GetParam() & 1) != 0;
    const bool hasColor = (GetParam() & 2) != 0;
    const bool hasDepth = (GetParam() & 4) != 0;
    const bool hasProcessed = (GetParam() & 8) != 0;

    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = hasTouches ? 10 : 0;
    header.colorX = header.colorY = 2;
    header.depthX = header.depthY = 2;
    header.processedX = header.processedY = 2;
    header.colorChannels = hasColor ? 3 : 0;
    header.colorDepth = hasColor ? 1 : 0;
    header.depthChannels = hasDepth ? 1 : 0;
    header.depthDepth = hasDepth ? 2 : 0;
    header.processedChannels = hasProcessed ? 1 : 0;
    header.processedDepth = hasProcessed ? 1 : 0;
    const std::string frame =
        (hasTouches ? bytesOf(tenSlots()) : "") + (hasColor ? "abcdefghijkl" : "") +
        (hasDepth ? bytesOf(std::vector<unsigned short>{0x1234, 0, 0xFFFF, 7}) : "") +
        (hasProcessed ? "wxyz" : "");
    // Twice, so that a frame of the wrong size would show in the second one.
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
        line.send(frame);
        line.send(frame);
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    ASSERT_EQ(ClientManager::Update(), 0);
    EXPECT_EQ(peer.finish(), "");

    client().prepareTouchCollection();
    EXPECT_EQ(readTouches().size(), hasTouches ? 30u : 0u);
    std::string color(16, '-');
    std::string depth(16, '-');
    std::string processed(16, '-');
    const auto bytes = [](std::string& text) {
        return reinterpret_cast<unsigned char*>(text.data());
    };
    client().colorTexture = bytes(color);
    client().depthTexture = bytes(depth);
    client().processedTexture = bytes(processed);
    client().updateColorTexture();
    client().updateDepthTexture();
    client().updateProcessedTexture();
    const std::string untouched(16, '-');
    EXPECT_EQ(color, hasColor ? "abc\xFF"
                                "def\xFF"
                                "ghi\xFF"
                                "jkl\xFF"
                              : untouched);
    EXPECT_EQ(depth, hasDepth
                         ? std::string("\x34\x12\0\xFF\0\0\0\xFF\xFF\xFF\0\xFF\x07\0\0\xFF", 16)
                         : untouched);
    EXPECT_EQ(processed, hasProcessed ? "www\xFFxxx\xFFyyy\xFFzzz\xFF" : untouched);
}

INSTANTIATE_TEST_SUITE_P(All, ClientManagerStreams, testing::Range(0, 16));

TEST_F(ClientManagerIntake, ListsTheTouchOfItsSlot) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + bytesOf(tenSlots()));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    client().prepareTouchCollection();
    for (int call = 1; call <= 30; ++call) {
        const double expected = call == 7 ? 0.1 : call == 8 ? 0.2 : call == 9 ? 0.3 : -1.0;
        EXPECT_EQ(client().getTouchData(), expected) << "call " << call;
    }
    EXPECT_EQ(client().getTouchData(), -9999.0);
    EXPECT_EQ(client().getTouchData(), -9999.0);

    NetworkTouch third;
    std::memcpy(&third, client().getNetworkTouches() + 2 * sizeof third, sizeof third);
    const double x = third.x;
    EXPECT_EQ(third.active, 1);
    EXPECT_EQ(x, 0.1);
}

TEST_F(ClientManagerIntake, OnlyAnActiveOfExactlyOneIsATouch) {
    std::vector<NetworkTouch> touches(10, NetworkTouch{0, 5.0, 6.0, 7.0});
    touches[1].active = 2;
    touches[2].active = -1;
    touches[3].active = 256;
    LoopbackPeer peer([&touches](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()) + bytesOf(touches));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    client().prepareTouchCollection();
    EXPECT_THAT(readTouches(), Each(-1.0));
}

TEST_F(ClientManagerIntake, BeforeTheFirstPreparationReadingBeginsAtTheSecondValue) {
    LoopbackPeer peer([](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(support::touchesOnlyHeader()));
    });
    initWith(peer);
    EXPECT_THAT(readTouches(), testing::AllOf(testing::SizeIs(29), Each(-1.0)));
    client().prepareTouchCollection();
    EXPECT_THAT(readTouches(), testing::AllOf(testing::SizeIs(30), Each(-1.0)));
    client().prepareTouchCollection();
    EXPECT_EQ(readTouches().size(), 30u);
}

TEST_F(ClientManagerIntake, PreparationWithoutSlotsOnlyGoesToTheBeginning) {
    initWithoutServer();
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), -9999.0);
    EXPECT_EQ(client().getTouchData(), -9999.0);
}

TEST_F(ClientManagerIntake, AnOddDepthProductReadsOneByteLess) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 0;
    header.depthX = 3;
    header.depthY = header.depthChannels = header.depthDepth = 1;
    header.processedX = 2;
    header.processedY = header.processedChannels = header.processedDepth = 1;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header) + "ddD" + "pq");
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    unsigned char texture[8] = {};
    client().processedTexture = texture;
    client().updateProcessedTexture();
    EXPECT_EQ(texture[0], 'D');
    EXPECT_EQ(texture[4], 'p');
}

TEST_F(ClientManagerIntake, ANegativeSizeAllocatesNothingAndFailsEveryFrame) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 0;
    header.colorX = 65536;
    header.colorY = 32768;
    header.colorChannels = header.colorDepth = 1;
    EXPECT_EQ(firstContact(header), -101);
    EXPECT_EQ(messages().back(), "Client manager ProcessServerFrame() failed with -2147483648");
    EXPECT_EQ(client().header.protocolID, 1u);
    unsigned char texture[4] = {9, 9, 9, 9};
    client().colorTexture = texture;
    client().updateColorTexture();
    EXPECT_THAT(texture, ElementsAre(9, 9, 9, 9));
}

TEST_F(ClientManagerIntake, ANegativeDepthSizeIsHalvedTowardZero) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 0;
    header.depthX = std::numeric_limits<std::uint32_t>::max() - 2; // -3 bytes: -1 value
    header.depthY = header.depthChannels = header.depthDepth = 1;
    EXPECT_EQ(firstContact(header), -101);
    EXPECT_EQ(messages().back(), "Client manager ProcessServerFrame() failed with -2");
}

TEST_F(ClientManagerIntake, TakesAsManyTouchesAsTheLimitAllows) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 65536;
    std::vector<NetworkTouch> touches(65536);
    touches.back() = {1, 7.0, 8.0, 9.0};
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header) + bytesOf(touches));
    });
    initWith(peer);
    ASSERT_EQ(ClientManager::Update(), 0);
    client().prepareTouchCollection();
    const std::vector<double> values = readTouches();
    ASSERT_EQ(values.size(), 3u * 65536);
    EXPECT_EQ(values.back(), 9.0);
}

TEST_F(ClientManagerIntake, RefusesMoreTouchesThanTheLimit) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 65537;
    EXPECT_EQ(firstContact(header), -3);
    EXPECT_THAT(messages(), ElementsAre("Connecting to 127.0.0.1:" + client().port, headerFailed,
                                        "Client manager update failed with: -3"));
    client().prepareTouchCollection();
    EXPECT_EQ(client().getTouchData(), -9999.0);
}

TEST_F(ClientManagerIntake, RefusesAnImageAboveItsLimitInEachOfTheThreeStreams) {
    using Field = std::uint32_t ProtocolHeader::*;
    struct Image {
        Field x, y, channels, depth;
    };
    const Image images[] = {
        {&ProtocolHeader::colorX, &ProtocolHeader::colorY, &ProtocolHeader::colorChannels,
         &ProtocolHeader::colorDepth},
        {&ProtocolHeader::depthX, &ProtocolHeader::depthY, &ProtocolHeader::depthChannels,
         &ProtocolHeader::depthDepth},
        {&ProtocolHeader::processedX, &ProtocolHeader::processedY,
         &ProtocolHeader::processedChannels, &ProtocolHeader::processedDepth},
    };
    for (const Image& image : images) {
        ProtocolHeader header = support::touchesOnlyHeader();
        header.*image.x = 16384;
        header.*image.y = 16385;
        header.*image.channels = 1;
        header.*image.depth = 1;
        EXPECT_EQ(firstContact(header), -3);
        EXPECT_THAT(messages(), Contains(headerFailed));
        // The slots are known but no record can arrive: they are empty.
        client().prepareTouchCollection();
        EXPECT_THAT(readTouches(), Each(-1.0));
        ClientManager::debugLogging = false;
        ClientManager::Destroy();
    }
}

TEST_F(ClientManagerIntake, CountsAnImagesBytesNotItsPixels) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = 16384;
    header.colorY = 5462; // 48 KiB a row: one row above the limit
    header.colorChannels = 3;
    header.colorDepth = 1;
    EXPECT_EQ(firstContact(header), -3);
}

TEST_F(ClientManagerIntake, TakesAnImageOfExactlyTheLimit) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.touchCount = 0;
    header.processedX = header.processedY = 16384;
    header.processedChannels = header.processedDepth = 1;
    LoopbackPeer peer([header](LoopbackPeer::Line& line) {
        line.accept();
        line.send(bytesOf(header));
    });
    initWith(peer);
    EXPECT_TRUE(ClientManager::isConnected());
    EXPECT_EQ(peer.finish(), "");
}

TEST_F(ClientManagerIntake, RefusesAnImageWhoseBytesWrapButWhosePixelsDoNot) {
    ProtocolHeader header = support::touchesOnlyHeader();
    header.colorX = 0x40000001; // four channels make 4 bytes after wrapping
    header.colorY = header.colorDepth = 1;
    header.colorChannels = 4;
    EXPECT_EQ(firstContact(header), -3);
}

// Every field with every value at the edge of its range; whatever comes of it, nothing breaks.
TEST_F(ClientManagerIntake, SurvivesEdgeValuesInEveryHeaderField) {
    for (std::size_t field = 0; field < 16; ++field) {
        for (const std::uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            ProtocolHeader header = support::touchesOnlyHeader();
            header.colorX = header.depthX = header.processedX = 4;
            header.colorY = header.depthY = header.processedY = 2;
            header.colorChannels = 3;
            header.colorDepth = header.depthChannels = 1;
            header.depthDepth = 2;
            header.processedChannels = header.processedDepth = 1;
            std::string bytes = bytesOf(header);
            std::memcpy(bytes.data() + 4 * field, &value, sizeof value);
            LoopbackPeer peer([&bytes](LoopbackPeer::Line& line) {
                line.accept();
                line.send(bytes + std::string(1000, 'x'));
                line.close();
            });
            initWith(peer);
            const int result = ClientManager::Update();
            EXPECT_THAT(result, testing::AnyOf(0, -2, -101)) << field << " " << value;
            // A host can offer a texture only where it could allocate one.
            const auto textureFor = [](std::uint32_t x, std::uint32_t y) {
                const std::uint64_t size = std::uint64_t{4} * x * y;
                return std::vector<unsigned char>(size < 1'000'000 ? size : 0);
            };
            const ProtocolHeader& got = client().header;
            std::vector<unsigned char> color = textureFor(got.colorX, got.colorY);
            std::vector<unsigned char> depth = textureFor(got.depthX, got.depthY);
            std::vector<unsigned char> processed = textureFor(got.processedX, got.processedY);
            client().colorTexture = color.empty() ? nullptr : color.data();
            client().depthTexture = depth.empty() ? nullptr : depth.data();
            client().processedTexture = processed.empty() ? nullptr : processed.data();
            client().updateColorTexture();
            client().updateDepthTexture();
            client().updateProcessedTexture();
            client().prepareTouchCollection();
            EXPECT_LE(readTouches().size(), 3u * 65536);
            EXPECT_EQ(peer.finish(), "");
            ClientManager::Destroy();
        }
    }
}

} // namespace
