// The client when memory runs out. This program replaces the allocation functions.
#include "client/ClientFixture.h"
#include "client/ClientManager.h"
#include "client/plugin.h"

#include <cstdlib>
#include <new>
#include <string>

namespace {

bool refuseNothrow = false;
std::size_t largest = static_cast<std::size_t>(-1);

void* allocate(std::size_t size) {
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
