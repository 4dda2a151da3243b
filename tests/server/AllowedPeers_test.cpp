#include "AllowedPeers.h"

#include <initializer_list>
#include <string>

#include <boost/asio/ip/address.hpp>
#include <gtest/gtest.h>

using server::AllowedPeers;

namespace {

AllowedPeers allow(std::initializer_list<const char*> texts) {
    AllowedPeers peers;
    for (const char* text : texts)
        EXPECT_TRUE(peers.add(text)) << text;
    return peers;
}

bool admits(const AllowedPeers& peers, const char* address) {
    return peers.admits(boost::asio::ip::make_address(address));
}

} // namespace

TEST(AllowedPeers, AreNobodyAtFirst) {
    const AllowedPeers nobody;
    EXPECT_TRUE(nobody.empty());
    EXPECT_FALSE(admits(nobody, "127.0.0.1"));
    EXPECT_FALSE(admits(nobody, "::1"));
}

TEST(AllowedPeers, OfThisMachineAreLoopbackAddresses) {
    const AllowedPeers local = AllowedPeers::thisMachine();
    for (const char* address : {"127.0.0.1", "127.255.255.254", "::1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(admits(local, address)) << address;
    for (const char* address : {"126.255.255.255", "128.0.0.0", "192.168.1.1", "::2", "fe80::1"})
        EXPECT_FALSE(admits(local, address)) << address;
}

TEST(AllowedPeers, AreOneAddress) {
    const AllowedPeers peers = allow({"192.168.1.20", "fd00::5"});
    EXPECT_TRUE(admits(peers, "192.168.1.20"));
    EXPECT_TRUE(admits(peers, "fd00::5"));
    EXPECT_FALSE(admits(peers, "192.168.1.21"));
    EXPECT_FALSE(admits(peers, "192.168.1.0"));
    EXPECT_FALSE(admits(peers, "fd00::4"));
    EXPECT_FALSE(admits(peers, "127.0.0.1"));
}

TEST(AllowedPeers, AreNetworksToTheBit) {
    const AllowedPeers peers = allow({"192.168.1.77/24", "10.0.0.4/30", "fd00:1::/33"});
    for (const char* address : {"192.168.1.0", "192.168.1.255", "10.0.0.4", "10.0.0.7",
                                "fd00:1::", "fd00:1:7fff:ffff:ffff:ffff:ffff:ffff"})
        EXPECT_TRUE(admits(peers, address)) << address;
    for (const char* address :
         {"192.168.0.255", "192.168.2.0", "10.0.0.3", "10.0.0.8", "fd00:0:ffff::", "fd00:1:8000::"})
        EXPECT_FALSE(admits(peers, address)) << address;
}

// As a socket that listens for both sees them.
TEST(AllowedPeers, KnowAnIPv4AddressInItsIPv6Form) {
    EXPECT_TRUE(admits(allow({"192.168.1.0/24"}), "::ffff:192.168.1.9"));
    EXPECT_TRUE(admits(allow({"::ffff:192.168.1.0/120"}), "192.168.1.9"));
    EXPECT_FALSE(admits(allow({"0.0.0.0/0"}), "::c0a8:109"));
}

TEST(AllowedPeers, AreTheSameOnEveryLinkLocalZone) {
    const AllowedPeers peers = allow({"fe80::/64"});
    EXPECT_TRUE(admits(peers, "fe80::1%7"));
    EXPECT_TRUE(admits(peers, "fe80::1"));
    EXPECT_FALSE(admits(peers, "fe80:0:0:1::1%7"));
}

TEST(AllowedPeers, AreAnybodyOnlyWhenSaid) {
    const AllowedPeers any = allow({"any"});
    EXPECT_TRUE(admits(any, "8.8.8.8"));
    EXPECT_TRUE(admits(any, "2001:db8::1"));
    EXPECT_FALSE(admits(allow({"0.0.0.0/0"}), "2001:db8::1"));
}

TEST(AllowedPeers, TakeNothingElse) {
    AllowedPeers peers;
    for (const char* text : {"", "all", "ANY", "localhost", "1.2.3", "1.2.3.4/", "1.2.3.4/33",
                             "1.2.3.4/-1", "1.2.3.4/8x", "1.2.3.4/4294967320", "fd00::/129", "/24",
                             "any/8", "1.2.3.4 ", "1.2.3.4,5.6.7.8"})
        EXPECT_FALSE(peers.add(text)) << text;
    EXPECT_TRUE(peers.empty());
    EXPECT_EQ(peers.text(), "");
}

TEST(AllowedPeers, ReadAsTheyWereWritten) {
    EXPECT_EQ(allow({"192.168.1.77/24", "any"}).text(), "192.168.1.77/24, any");
}
