#include "exposure.h"

#include <string>

#include <gtest/gtest.h>

using boost::asio::ip::make_address;
using boost::asio::ip::tcp;
using server::AllowedPeers;
using server::exposureWarning;

namespace {

AllowedPeers someNetwork() {
    AllowedPeers peers;
    peers.add("192.168.1.0/24");
    peers.add("fd00::/8");
    return peers;
}

const tcp::endpoint everywhere{make_address("0.0.0.0"), 27016};

} // namespace

TEST(Exposure, NamesPlaceStreamsAndWhoGetsThem) {
    QVR::ProtocolHeader header;
    header.touchCount = 10;
    header.depthChannels = 1;
    EXPECT_EQ(exposureWarning(everywhere, header, someNetwork()),
              "WARNING: whoever reaches 0.0.0.0:27016 from an allowed address (192.168.1.0/24, "
              "fd00::/8) gets touches and depth images, without a password and unencrypted");
    header.colorChannels = 3;
    header.processedChannels = 1;
    AllowedPeers any;
    any.add("any");
    EXPECT_EQ(exposureWarning({make_address("::"), 5}, header, any),
              "WARNING: whoever reaches [::]:5 from an allowed address (any) gets touches, colour "
              "images, depth images and the detection's mask, without a password and unencrypted");
}

TEST(Exposure, NamesNoStreamThatIsOff) {
    QVR::ProtocolHeader header;
    header.colorX = header.colorY = 480; // sizes are told of images that are not sent, too
    EXPECT_EQ(exposureWarning(everywhere, header, someNetwork()),
              "WARNING: whoever reaches 0.0.0.0:27016 from an allowed address (192.168.1.0/24, "
              "fd00::/8) gets nothing but the sizes of its images, without a password and "
              "unencrypted");
    header.colorChannels = 3;
    EXPECT_NE(exposureWarning(everywhere, header, someNetwork()).find("gets colour images,"),
              std::string::npos);
}
