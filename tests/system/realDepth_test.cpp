// Depth pictures of a real hand, where a folder of them is at hand, all the way from the camera
// library through the server's network to a client.
#include "server/RawClient.h"
#include "system/ServerProcess.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <png.h>

namespace {

using support::Bytes;
using support::RawClient;
using support::ServerProcess;
namespace fs = std::filesystem;

constexpr std::size_t recordBytes = 10 * sizeof(QVR::NetworkTouch);

struct Position {
    double column = 0.0;
    double row = 0.0;
    double depth = 0.0;
};

struct Expectations {
    double pixels = 0.0; // that a touch may be off
    double units = 0.0;
    std::map<std::string, std::vector<Position>> touches; // by picture
};

Expectations readExpectations() {
    Expectations expected;
    std::ifstream file(EXPECTED_TOUCHES);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string name;
        std::string unit;
        words >> name;
        Position touch;
        if (name == "tolerance" && words >> expected.pixels >> unit >> expected.units) {
            continue;
        }
        if (name != "#" && words >> touch.column >> touch.row >> touch.depth) {
            expected.touches[name].push_back(touch);
        }
    }
    return expected;
}

// The samples as a frame carries them.
Bytes depthOf(const fs::path& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    // A 16-bit picture that says nothing of its brightness comes as it is when it is asked for as
    // linear.
    if (png_image_begin_read_from_file(&image, file.c_str()) == 0)
        throw std::runtime_error("cannot read " + file.string());
    image.format = PNG_FORMAT_LINEAR_Y;
    Bytes samples(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, samples.data(), 0, nullptr) == 0)
        throw std::runtime_error("cannot read " + file.string());
    return samples;
}

std::vector<Position> touchesOf(const Bytes& frame) {
    std::vector<Position> touches;
    for (std::size_t slot = 0; slot < 10; ++slot) {
        QVR::NetworkTouch touch;
        std::memcpy(&touch, frame.data() + slot * sizeof touch, sizeof touch);
        if (touch.active == 1)
            touches.push_back({touch.x, touch.y, touch.z});
    }
    return touches;
}

std::string textOf(const std::vector<Position>& touches) {
    std::ostringstream text;
    for (const Position& touch : touches)
        text << "(" << touch.column << ", " << touch.row << ", " << touch.depth << ") ";
    return text.str();
}

// Each expected touch takes one that is near enough.
bool agree(const std::vector<Position>& expected, std::vector<Position> got,
           const Expectations& tolerance) {
    if (expected.size() != got.size())
        return false;
    for (const Position& wanted : expected) {
        const auto gone = std::find_if(got.begin(), got.end(), [&](const Position& touch) {
            return std::abs(touch.column - wanted.column) <= tolerance.pixels &&
                   std::abs(touch.row - wanted.row) <= tolerance.pixels &&
                   std::abs(touch.depth - wanted.depth) <= tolerance.units;
        });
        if (gone == got.end())
            return false;
        got.erase(gone);
    }
    return true;
}

} // namespace

TEST(RealDepth, ArrivesAtAClientAsTheTouchesExpected) {
    const fs::path folder = REAL_IMAGES;
    std::error_code none;
    if (!fs::is_directory(folder, none))
        GTEST_SKIP() << "no images in " << folder;
    const Expectations expected = readExpectations();
    ASSERT_GT(expected.units, 0.0);
    std::map<std::string, Bytes> pictures;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".png")
            pictures[entry.path().filename().string()] = depthOf(entry.path());
    for (const auto& [name, touches] : expected.touches)
        ASSERT_EQ(pictures.count(name), 1U) << name;

    // Each picture stays long enough for touches to come to rest.
    constexpr int hold = 9;
    constexpr int rest = 6;
    ServerProcess server(std::string(EXAMPLES) + "/hand",
                         {"--camera", "images:" + folder.string() + ",hold=" + std::to_string(hold),
                          "--port", "0", "--raw-touches", "--no-processed"});
    RawClient client(server.waitForPort());
    const QVR::ProtocolHeader header = client.readHeader();
    EXPECT_EQ(header.oneMeterValue, 8000U);
    EXPECT_EQ(header.depthX, 640U);
    EXPECT_EQ(header.depthY, 480U);

    std::map<std::string, std::vector<Position>> got;
    std::string shown;
    int seen = 0;
    std::vector<Position> last;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (got.size() < pictures.size() && std::chrono::steady_clock::now() < end) {
        const Bytes frame = client.readFrame();
        std::string now;
        for (const auto& [name, samples] : pictures)
            if (frame.size() == recordBytes + samples.size() &&
                std::memcmp(frame.data() + recordBytes, samples.data(), samples.size()) == 0)
                now = name;
        ASSERT_NE(now, "") << "a frame shows none of the pictures";
        // A client that is too slow misses frames; the picture comes again.
        if (now != shown && seen >= rest)
            got[shown] = last;
        seen = now == shown ? seen + 1 : 1;
        shown = now;
        last = touchesOf(frame);
    }
    for (const auto& [name, samples] : pictures) {
        ASSERT_EQ(got.count(name), 1U) << name << " was not seen for long enough";
        const auto wanted = expected.touches.find(name);
        const std::vector<Position> touches =
            wanted == expected.touches.end() ? std::vector<Position>() : wanted->second;
        EXPECT_TRUE(agree(touches, got[name], expected))
            << name << "\n  expected " << textOf(touches) << "\n  got      " << textOf(got[name]);
    }
}
