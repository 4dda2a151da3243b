// A recording of the SDK's turned into a folder by qvr-camera.
#include "demo/ChildProcess.h"
#include "realsense/sdk/SoftwareCamera.h"
#include "source_uri.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace camera_test;
using testing::HasSubstr;

namespace {

constexpr std::uint64_t frames = 90; // more than wait for the disk at a time

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ConvertedBag : public testing::Test {
  protected:
    int run(const std::string& program, const std::vector<std::string>& arguments) {
        demo::ChildProcess child({program,
                                  arguments,
                                  {"QVR_VOLUMES=" EXAMPLES "/simulated", "QVR_CAMERA="},
                                  folder.file("out")});
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(100);
        while (!child.ending() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        output = contentOf(folder.file("out"));
        return child.ending() && !child.ending()->bySignal ? child.ending()->code : -1;
    }

    support::TemporaryFolder folder;
    std::string output;
};

TEST_F(ConvertedBag, HoldsEveryFrameAndGivesTheSameTouchesAgain) {
    SoftwareScript film;
    const auto source = camera::makeSource("simulated:scene=tapping,pace=off");
    film.geometry = source->configure({640, 480, 20}, {160, 120, 20});
    film.paint = [&](std::uint64_t number, std::span<std::uint16_t> depth,
                     std::span<std::uint8_t> color) { source->render(number, depth, color); };
    const std::string bag = folder.file("film.bag");
    recordBag(bag, film, frames);
    const std::string converted = folder.file("film");
    ASSERT_EQ(run(CAMERA_PROGRAM, {"convert", bag, converted}), 0) << output;
    EXPECT_THAT(output, HasSubstr("qvr-camera: recorded 90 frames to " + converted + "\n"));

    const std::string lines = contentOf(converted + "/frames.jsonl");
    EXPECT_THAT(lines, HasSubstr("\"slot\":")) << "nothing is verified when nobody touches";
    EXPECT_THAT(lines, HasSubstr("\"frame\":89,\"time\":4.45,"));
    EXPECT_EQ(lines.find("\"dropped\""), std::string::npos);
    EXPECT_THAT(contentOf(converted + "/recording.json"), HasSubstr("\"fps\": 20,"));
    EXPECT_EQ(run(REPLAY_PROGRAM, {converted}), 0) << output;
    EXPECT_THAT(output, HasSubstr(": 90 frames played"));
}

} // namespace
