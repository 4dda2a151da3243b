#include "recording/frameLine.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

using recording::FrameInfo;
using recording::frameOf;
using recording::lineOf;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

FrameInfo frameWithATouch() {
    FrameInfo frame;
    frame.number = 36;
    frame.seconds = 0.5;
    frame.touches[2] = {1, 0.1, 1.0 / 3.0, 1234.5};
    frame.tracked[2] = {320.5F, 240.25F, 900.0F};
    return frame;
}

std::uint64_t bits(double number) {
    return std::bit_cast<std::uint64_t>(number);
}

} // namespace

TEST(FrameLine, HasTheTouchesAsSentAndThePositionsBehindThem) {
    EXPECT_EQ(lineOf(frameWithATouch(), 29),
              "{\"picture\":29,\"frame\":36,\"time\":0.5,\"touches\":[{\"slot\":2,\"x\":0.1,"
              "\"y\":0.3333333333333333,\"z\":1234.5,\"pixel\":[320.5,240.25],\"depth\":900.0}]}"
              "\n");
    EXPECT_EQ(lineOf(FrameInfo(), 0), "{\"picture\":0,\"frame\":0,\"time\":0.0,\"touches\":[]}\n");
}

TEST(FrameLine, HasWhatTheTrackingKnewWhereFramesAreMissing) {
    FrameInfo frame;
    frame.dropped = 3;
    frame.tracking.emplace();
    frame.tracking->cutoff = 2100;
    frame.tracking->slots[1] = {
        2, true, {1.5F, 2.0F, 3.0F}, {4.0F, 5.0F, 6.0F}, {7.0F, 8.0F, 9.0F}};
    const std::string line = lineOf(frame, 0);
    const std::string unused = "{\"confidence\":-1,\"current\":[0.0,0.0,0.0],\"previous\":[0.0,0.0,"
                               "0.0],\"smoothed\":[0.0,0.0,0.0]}";
    EXPECT_NE(line.find("\"touches\":[],\"dropped\":3,\"tracking\":{\"cutoff\":2100,\"slots\":[" +
                        unused +
                        ",{\"confidence\":2,\"current\":[1.5,2.0,3.0],\"previous\":[4.0,5.0,6.0],"
                        "\"smoothed\":[7.0,8.0,9.0]}," +
                        unused),
              std::string::npos)
        << line;

    const auto read = frameOf(line);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->dropped, 3U);
    ASSERT_TRUE(read->tracking);
    EXPECT_EQ(read->tracking->cutoff, 2100);
    EXPECT_EQ(read->tracking->slots[1].confidence, 2);
    EXPECT_EQ(read->tracking->slots[1].currentPos.x, 1.5F);
    EXPECT_EQ(read->tracking->slots[1].previousPos.y, 5.0F);
    EXPECT_EQ(read->tracking->slots[1].lerpedPos.z, 9.0F);
    EXPECT_EQ(read->tracking->slots[9].confidence, -1);
}

TEST(FrameLine, BringsEveryNumberBackBitForBit) {
    const double numbers[] = {0.1,
                              -0.0,
                              1e-310,
                              1e300,
                              0.0,
                              infinite,
                              -infinite,
                              5.0,
                              1e17,
                              -1.0,
                              std::nextafter(1.0, 2.0),
                              123456789.12345678};
    for (const double number : numbers) {
        FrameInfo frame = frameWithATouch();
        frame.touches[2].x = number;
        frame.tracked[2].x = std::nextafter(320.5F, 400.0F);
        const auto read = frameOf(lineOf(frame, 0));
        ASSERT_TRUE(read) << number;
        EXPECT_EQ(bits(read->touches[2].x), bits(number)) << number;
        EXPECT_EQ(double{read->touches[2].y}, 1.0 / 3.0);
        EXPECT_EQ(read->tracked[2].x, frame.tracked[2].x);
        EXPECT_EQ(int{read->touches[2].active}, 1);
        EXPECT_EQ(int{read->touches[3].active}, 0);
        EXPECT_EQ(double{read->touches[3].x}, -1.0);
    }
}

TEST(FrameLine, KeepsPositionsThatAreNoNumbers) {
    FrameInfo frame = frameWithATouch();
    frame.touches[2].z = std::numeric_limits<double>::quiet_NaN();
    const std::string line = lineOf(frame, 0);
    EXPECT_NE(line.find("\"z\":\"NaN\""), std::string::npos) << line;
    const auto read = frameOf(line);
    ASSERT_TRUE(read);
    EXPECT_TRUE(std::isnan(read->touches[2].z));
}

TEST(FrameLine, RefusesWhatIsNoFrame) {
    const std::string good = lineOf(frameWithATouch(), 0);
    EXPECT_TRUE(frameOf(good));
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos) << from;
        return frameOf(text.replace(place, from.size(), to)).has_value();
    };
    EXPECT_FALSE(frameOf(""));
    EXPECT_FALSE(frameOf("[]"));
    EXPECT_FALSE(frameOf(good.substr(0, good.size() - 3)));
    EXPECT_FALSE(with("\"frame\":36", "\"frame\":-36"));
    EXPECT_FALSE(with("\"frame\":36", "\"frame\":3.5"));
    EXPECT_FALSE(with("\"slot\":2", "\"slot\":10"));
    EXPECT_FALSE(with("\"slot\":2", "\"slot\":-1"));
    EXPECT_FALSE(with("\"x\":0.1", "\"x\":\"much\""));
    EXPECT_FALSE(with("\"x\":0.1", "\"x\":null"));
    EXPECT_FALSE(with("\"depth\":900.0", "\"depth\":1e300"));
    EXPECT_FALSE(with("[320.5,240.25]", "[320.5]"));
    EXPECT_FALSE(with("\"touches\"", "\"touched\""));
}

TEST(FrameLine, SurvivesDamagedBytesAnywhere) {
    FrameInfo frame = frameWithATouch();
    frame.tracking.emplace();
    const std::string good = lineOf(frame, 0);
    std::size_t refused = 0;
    for (std::size_t place = 0; place < good.size(); ++place) {
        std::string damaged = good;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x41);
        refused += frameOf(damaged) ? 0 : 1;
    }
    EXPECT_GT(refused, good.size() / 2);
}
