#include "FrameLayout.h"
#include "foundation/utils.h"

#include <array>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

using server::FrameLayout;

namespace {

constexpr unsigned short filler = 0xabab;

// Ten touches, 2 x 1 colour, 3 x 2 depth, 3 x 2 processed: 280 + 6 + 12 + 6 bytes.
QVR::ProtocolHeader smallHeader() {
    QVR::ProtocolHeader header;
    header.touchCount = 10;
    header.colorX = 2;
    header.colorY = 1;
    header.colorChannels = 3;
    header.colorDepth = 1;
    header.depthX = header.processedX = 3;
    header.depthY = header.processedY = 2;
    header.depthChannels = header.processedChannels = 1;
    header.depthDepth = 2;
    header.processedDepth = 1;
    return header;
}

struct Parts {
    std::array<QVR::NetworkTouch, 10> touches;
    std::array<unsigned char, 6> color = {1, 2, 3, 4, 5, 6};
    std::array<unsigned short, 6> depth = {0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1006};
    std::array<unsigned char, 6> processed = {11, 12, 13, 14, 15, 16};

    Parts() { touches[3] = {1, 0.5, 0.25, 0.125}; }
    QVR::networkFrameData all() const {
        return {touches.data(), color.data(), depth.data(), processed.data()};
    }
};

std::vector<std::byte> composed(const FrameLayout& layout, const QVR::networkFrameData& parts,
                                const std::vector<std::byte>& previous = {}) {
    std::vector<std::byte> frame(layout.frameBytes(), std::byte{0xab});
    layout.compose(parts, previous, frame);
    return frame;
}

template <typename Array>
void expectAt(const std::vector<std::byte>& frame, std::size_t offset, const Array& part) {
    const std::size_t size = part.size() * sizeof part[0];
    ASSERT_LE(offset + size, frame.size());
    EXPECT_EQ(std::memcmp(frame.data() + offset, part.data(), size), 0) << "at " << offset;
}

} // namespace

TEST(FrameLayout, PlacesTouchesColourDepthProcessedInThisOrder) {
    const FrameLayout layout(smallHeader());
    const Parts parts;
    const auto frame = composed(layout, parts.all());
    ASSERT_EQ(frame.size(), 304U);
    expectAt(frame, 0, parts.touches);
    expectAt(frame, 280, parts.color);
    expectAt(frame, 286, parts.depth);
    expectAt(frame, 298, parts.processed);
}

TEST(FrameLayout, AgreesWithTheHeadersFrameSize) {
    QVR::ProtocolHeader header = smallHeader();
    EXPECT_EQ(FrameLayout(header).frameBytes(), QVR::utils::getNetworkFrameSize(header));
    header.colorX = 1920;
    header.colorY = 1080;
    header.depthX = header.processedX = 640;
    header.depthY = header.processedY = 480;
    EXPECT_EQ(FrameLayout(header).frameBytes(), 7142680U);
    header.depthX = 70000;
    header.depthY = 70000;
    EXPECT_EQ(FrameLayout(header).frameBytes(), QVR::utils::getNetworkFrameSize(header));
}

TEST(FrameLayout, FindsACompleteFrameInPlace) {
    const FrameLayout layout(smallHeader());
    const Parts parts;
    const auto places = layout.inPlace(parts.all());
    ASSERT_TRUE(places);
    std::vector<std::byte> joined;
    for (const auto place : *places)
        joined.insert(joined.end(), place.begin(), place.end());
    EXPECT_EQ(joined, composed(layout, parts.all()));
    EXPECT_EQ(static_cast<const void*>((*places)[1].data()), parts.color.data());
}

TEST(FrameLayout, FindsNoFrameInPlaceThatLacksAPart) {
    const FrameLayout layout(smallHeader());
    const Parts parts;
    const QVR::networkFrameData all = parts.all();
    EXPECT_FALSE(layout.inPlace({nullptr, all.color, all.depth, all.processed}));
    EXPECT_FALSE(layout.inPlace({all.touches, nullptr, all.depth, all.processed}));
    EXPECT_FALSE(layout.inPlace({all.touches, all.color, nullptr, all.processed}));
    EXPECT_FALSE(layout.inPlace({all.touches, all.color, all.depth, nullptr}));
}

TEST(FrameLayout, MissesNothingThatIsNotAnnounced) {
    QVR::ProtocolHeader header = smallHeader();
    header.colorChannels = header.colorDepth = 0;
    const FrameLayout layout(header);
    const Parts parts;
    for (const unsigned char* color :
         {static_cast<const unsigned char*>(nullptr), &parts.color[0]}) {
        QVR::networkFrameData given = parts.all();
        given.color = color;
        const auto places = layout.inPlace(given);
        ASSERT_TRUE(places);
        EXPECT_TRUE((*places)[1].empty());
        EXPECT_EQ((*places)[2].size(), 12U);
    }
}

TEST(FrameLayout, LeavesOutWhatIsNotAnnounced) {
    QVR::ProtocolHeader header = smallHeader();
    header.colorChannels = header.colorDepth = 0;
    header.touchCount = 0;
    const FrameLayout layout(header);
    const Parts parts;
    const auto frame = composed(layout, parts.all());
    ASSERT_EQ(frame.size(), 18U);
    expectAt(frame, 0, parts.depth);
    expectAt(frame, 12, parts.processed);
}

TEST(FrameLayout, FillsAMissingPartFromTheFrameBefore) {
    const FrameLayout layout(smallHeader());
    Parts parts;
    const auto before = composed(layout, parts.all());
    const Parts old = parts;
    parts.color.fill(99);
    parts.depth.fill(filler);
    parts.processed.fill(98);
    QVR::networkFrameData given = parts.all();
    given.depth = nullptr;
    given.color = nullptr;
    const auto frame = composed(layout, given, before);
    expectAt(frame, 280, old.color);
    expectAt(frame, 286, old.depth);
    expectAt(frame, 298, parts.processed);
}

TEST(FrameLayout, FillsAMissingPartOfTheFirstFrameWithNothingSeen) {
    const FrameLayout layout(smallHeader());
    const auto frame = composed(layout, {});
    expectAt(frame, 0, std::array<QVR::NetworkTouch, 10>());
    expectAt(frame, 280, std::array<unsigned char, 24>());
}

TEST(FrameLayout, ClearsTouchesAndNothingElse) {
    const FrameLayout layout(smallHeader());
    const Parts parts;
    auto frame = composed(layout, parts.all());
    layout.clearTouches(frame);
    expectAt(frame, 0, std::array<QVR::NetworkTouch, 10>());
    expectAt(frame, 280, parts.color);
    expectAt(frame, 286, parts.depth);
}
