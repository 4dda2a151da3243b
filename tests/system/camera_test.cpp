// qvr-camera as people meet it.
#include "demo/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Arguments = std::vector<std::string>;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class CameraProgram : public testing::Test {
  protected:
    // Its exit code; -1 when it does not end by itself.
    int run(const Arguments& arguments, const Arguments& environment = {"QVR_CAMERA="}) {
        return start(CAMERA_PROGRAM, arguments, environment);
    }
    int start(const std::string& program, const Arguments& arguments,
              const Arguments& environment) {
        demo::ChildProcess child({program, arguments, environment, folder.file("out")});
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!child.ending() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        output = contentOf(folder.file("out"));
        return child.ending() && !child.ending()->bySignal ? child.ending()->code : -1;
    }
    int replay(const std::string& recording) { return start(REPLAY_PROGRAM, {recording}, {}); }
    static long lineCount(const std::string& recording) {
        const std::string lines = contentOf(recording + "/frames.jsonl");
        return std::count(lines.begin(), lines.end(), '\n');
    }
    json11::Json document() const {
        std::string error;
        const json11::Json json = json11::Json::parse(output, error);
        EXPECT_TRUE(json.is_object()) << error << output;
        return json;
    }

    const Arguments withSettings = {"QVR_CAMERA=", "QVR_VOLUMES=" EXAMPLES "/simulated"};
    support::TemporaryFolder folder;
    std::string output;
};

} // namespace

TEST_F(CameraProgram, ListsTheCameraOfASource) {
    EXPECT_EQ(run({"list", "--camera", "simulated:seed=7"}), 0);
    EXPECT_THAT(output, StartsWith("CAMERA           SERIAL  FIRMWARE  OPENED WITH --camera\n"
                                   "Simulated SR300  SIM7    1.0.0.0   simulated:seed=7\n"));
    EXPECT_EQ(run({"list", "--json"}, {"QVR_CAMERA=simulated:fps=15"}), 0);
    const json11::Json camera = document()["cameras"][0];
    EXPECT_EQ(camera["depth"][0]["fps"].int_value(), 15);
    EXPECT_EQ(camera["depth"][0]["width"][1].int_value(), 1920);
}

TEST_F(CameraProgram, ListsSourcesWithoutACamera) {
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_THAT(output, HasSubstr("SOURCES\n"));
    EXPECT_EQ(run({"list", "--json"}), 0);
    EXPECT_EQ(document()["sources"].array_items().size(), 4U);
}

TEST_F(CameraProgram, TellsTheCameraInformation) {
    EXPECT_EQ(run({"info", "--camera", "simulated", "--raw"}), 0);
    EXPECT_THAT(output, StartsWith("{\n\"colorToDepthExtrinsics4x4\": {\n    "));
    const json11::Json raw = document();
    EXPECT_EQ(raw["depthIntrinsics"]["focalLengthX"].int_value(), 476);
    EXPECT_EQ(run({"info", "--camera", "simulated"}), 0);
    EXPECT_EQ(document(), raw);
}

TEST_F(CameraProgram, WritesFourPictures) {
    EXPECT_EQ(run({"snapshot", "--camera", "simulated:pace=off", "--depth", "320x240", "--color",
                   "160x120", "--out", folder.file("pictures")}),
              0)
        << output;
    for (const char* name :
         {"depth.png", "color.png", "depth_aligned_to_color.png", "color_aligned_to_depth.png"}) {
        EXPECT_THAT(contentOf(folder.file("pictures/") + name), StartsWith("\x89PNG")) << name;
    }
    EXPECT_THAT(output, HasSubstr("pictures/depth.png: 320x240, depth, one unit is 0.125 mm\n"));
    EXPECT_THAT(output, HasSubstr("depth_aligned_to_color.png: 160x120, depth"));
}

TEST_F(CameraProgram, RecordsAsTheServerDoes) {
    const std::string recording = folder.file("recording");
    EXPECT_EQ(run({"record", recording, "--camera", "simulated:scene=tapping", "--frames", "40"},
                  withSettings),
              0)
        << output;
    EXPECT_THAT(output, HasSubstr("qvr-camera: recorded 40 frames to " + recording));
    EXPECT_THAT(contentOf(recording + "/recording.json"), HasSubstr("\"recorder\": \"qvr-camera "));
    EXPECT_THAT(contentOf(recording + "/frames.jsonl"), HasSubstr("\"slot\":"));
    EXPECT_EQ(replay(recording), 0) << output;
}

TEST_F(CameraProgram, RecordsInTheModeAskedFor) {
    const std::string recording = folder.file("recording");
    EXPECT_EQ(run({"record", recording, "--camera", "simulated", "--seconds", "0.5", "--depth",
                   "320x240", "--color", "64x48", "--fps", "20"},
                  withSettings),
              0)
        << output;
    const std::string description = contentOf(recording + "/recording.json");
    EXPECT_THAT(description, HasSubstr("\"fps\": 20,"));
    EXPECT_THAT(description, HasSubstr("\"width\": 320,"));
    EXPECT_THAT(description, HasSubstr("\"width\": 64,"));
    EXPECT_GT(lineCount(recording), 0);
    EXPECT_LE(lineCount(recording), 11);
    EXPECT_EQ(replay(recording), 0) << output;
}

TEST_F(CameraProgram, EndsARecordingWhenItIsInterrupted) {
    const std::string recording = folder.file("recording");
    demo::ChildProcess child({CAMERA_PROGRAM,
                              {"record", recording, "--camera", "simulated"},
                              withSettings,
                              folder.file("out")});
    for (int i = 0; i < 4000 && lineCount(recording) < 5; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_GE(lineCount(recording), 5);
    ::kill(child.id(), SIGINT);
    for (int i = 0; i < 4000 && !child.ending(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_TRUE(child.ending());
    EXPECT_FALSE(child.ending()->bySignal);
    EXPECT_EQ(child.ending()->code, 0) << contentOf(folder.file("out"));
    EXPECT_EQ(replay(recording), 0) << output;
}

TEST_F(CameraProgram, ConvertsEveryFrameHoweverSlowTheDisk) {
    const std::string first = folder.file("first");
    EXPECT_EQ(run({"convert", "simulated:scene=tapping", first, "--frames", "80"}, withSettings), 0)
        << output;
    EXPECT_EQ(lineCount(first), 80) << "more than wait for the disk at a time";
    EXPECT_EQ(contentOf(first + "/frames.jsonl").find("\"dropped\""), std::string::npos);
    EXPECT_EQ(replay(first), 0) << output;
    const std::string second = folder.file("second");
    EXPECT_EQ(run({"convert", first, second}, withSettings), 0) << output;
    EXPECT_EQ(contentOf(second + "/frames.jsonl"), contentOf(first + "/frames.jsonl"));
    EXPECT_EQ(run({"convert", first, second}, withSettings), 2);
    EXPECT_THAT(output, HasSubstr("it exists and is not empty"));
}

TEST_F(CameraProgram, DoesNotConvertWhatHasNoEnd) {
    EXPECT_EQ(run({"convert", "simulated", folder.file("x")}), 2);
    EXPECT_THAT(output, HasSubstr("'simulated:pace=off' has no end; say how much of it is wanted "
                                  "with --frames N\n"));
    EXPECT_EQ(run({"convert", "realsense", folder.file("x")}), 2);
}

TEST_F(CameraProgram, SaysThatARecordingIsNotWhole) {
    const std::string recording = folder.file("recording");
    EXPECT_EQ(run({"record", recording, "--camera", "simulated:fault=vanish@10,lasting=30"}), 4);
    EXPECT_THAT(output, HasSubstr("the camera gives no pictures any more: "));
    EXPECT_GE(lineCount(recording), 1);
}

TEST_F(CameraProgram, SaysWhatIsWrong) {
    const std::string out = folder.file("pictures");
    EXPECT_EQ(run({}), 2);
    EXPECT_THAT(output, HasSubstr("see qvr-camera --help"));
    EXPECT_EQ(
        run({"snapshot", "--camera", "simulated:depth=64x48", "--depth", "65x48", "--out", out}),
        2);
    EXPECT_THAT(output, HasSubstr("    64x48 at 1 to 240\n"));
    EXPECT_EQ(run({"info", "--camera", "webcam"}), 6);
    EXPECT_THAT(output, HasSubstr("unknown camera source \"webcam\"; accepted: "));
    folder.write("file", "");
    EXPECT_EQ(run({"snapshot", "--camera", "simulated:pace=off", "--out", folder.file("file/x")}),
              1);
    EXPECT_THAT(output, StartsWith("qvr-camera: cannot make the folder "));
}

TEST_F(CameraProgram, ExplainsItself) {
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_THAT(output, HasSubstr("Exit codes:"));
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_THAT(output, StartsWith("qvr-camera "));
}
