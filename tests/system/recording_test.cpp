// qvr-server --record and qvr-replay as people meet them.
#include "demo/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "system/ServerProcess.h"
#include "system/greyPng.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using support::ServerProcess;
using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

const std::string examples = std::string(EXAMPLES) + "/simulated";

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Cameras without a pace are recorded whole as long as all frames find a buffer.
class Recording : public testing::Test {
  protected:
    // Starts a server that records to `recording` and ends by itself after the frames asked for.
    void record(const std::string& camera, int frames, const Arguments& more = {},
                const std::string& volume = examples) {
        Arguments arguments = {"--camera", camera,     "--port",
                               "0",        "--frames", std::to_string(frames),
                               "--record", recording};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ServerProcess server(volume, arguments);
        EXPECT_EQ(server.waitForEnd(), 0) << server.errors();
        said = server.errors();
    }

    // The exit code of qvr-replay; -1 when it does not end by itself.
    int replay(const Arguments& arguments) {
        demo::ChildProcess child({REPLAY_PROGRAM, arguments, {}, folder.file("out")});
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!child.ending() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        output = contentOf(folder.file("out"));
        return child.ending() && !child.ending()->bySignal ? child.ending()->code : -1;
    }

    std::string lines() const { return contentOf(recording + "/frames.jsonl"); }
    long frameCount() const {
        const std::string text = lines();
        return std::count(text.begin(), text.end(), '\n');
    }
    // Replaces the first `from` in the lines.
    void change(const std::string& from, const std::string& to) const {
        std::string text = lines();
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        std::ofstream(recording + "/frames.jsonl", std::ios::binary)
            << text.replace(place, from.size(), to);
    }

    support::TemporaryFolder folder;
    std::string recording = folder.file("recording");
    std::string output; // of qvr-replay
    std::string said;   // by the server
};

const std::string same = "  the touches are those recorded, bit for bit\n";

// Files of this process, and those it starts, may be no larger while this lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
};

} // namespace

TEST_F(Recording, GivesTheSameTouchesInEveryFormOfTheDetection) {
    record("simulated:scene=tapping,pace=off", 60);
    EXPECT_THAT(said, HasSubstr("qvr-server: recorded "));
    ASSERT_GT(frameCount(), 0);
    EXPECT_THAT(lines(), HasSubstr("\"slot\":"));
    int played = 0;
    for (const char* form : {"plain", "sse", "avx2", "avx512"}) {
        const int code = replay({recording, "--form", form});
        if (code == 2 &&
            output == "qvr-replay: this processor lacks form " + std::string(form) + "\n") {
            continue;
        }
        ++played;
        EXPECT_EQ(code, 0) << output;
        EXPECT_THAT(output, HasSubstr(recording + ": " + std::to_string(frameCount()) +
                                      " frames played with form " + form + "\n"));
        EXPECT_THAT(output, testing::EndsWith(same));
    }
    EXPECT_GT(played, 0);
}

TEST_F(Recording, IsVerifiedBehindFramesThatItMisses) {
    // So few find a buffer each, however slow the disk is.
    record("simulated:scene=tapping,pace=off", 90, {"--record-every", "3"});
    EXPECT_THAT(said, HasSubstr("qvr-server: recorded 30 frames to " + recording + "\n"));
    EXPECT_THAT(lines(), HasSubstr("\"slot\":")) << "a test without touches shows little";
    EXPECT_EQ(replay({recording}), 0) << output;
    EXPECT_THAT(output, HasSubstr(recording + ": 30 frames played with form "));
    EXPECT_THAT(output, HasSubstr("  58 more were not recorded, in 29 places; "));
    EXPECT_THAT(output, testing::EndsWith(same));
}

TEST_F(Recording, TellsThatTheMachineIsTooSlowForIt) {
    const support::TemporaryFolder volume;
    std::string settings = contentOf(examples + "/QVR_calibration/touch.json");
    for (const auto& [small, large] : {std::pair{"\"colorResX\": 640", "\"colorResX\": 1920"},
                                       std::pair{"\"colorResY\": 480", "\"colorResY\": 1080"}}) {
        const std::size_t place = settings.find(small);
        ASSERT_NE(place, std::string::npos) << small;
        settings.replace(place, std::string(small).size(), large);
    }
    volume.write("QVR_calibration/touch.json", settings);
    record("simulated", 1, {}, volume.path());
    // One picture again and again costs its camera next to nothing, and the recording all of it.
    const std::string camera = "images:" + recording + ",hold=1000,pace=off";
    ServerProcess server(volume.path(),
                         {"--camera", camera, "--port", "0", "--record", folder.file("too much")});
    const std::string warning =
        "qvr-server: WARNING: the disk or the processor is too slow for the recording; 1 frame "
        "left out so far\n";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (server.errors().find(warning) == std::string::npos && server.running() &&
           std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    server.signal(SIGTERM);
    EXPECT_EQ(server.waitForEnd(), 0);
    EXPECT_THAT(server.errors(), HasSubstr(warning));
    EXPECT_THAT(server.errors(), testing::ContainsRegex("recorded [0-9]+ frames to .*too much; "
                                                        "[0-9]+ frames? left out\n"));
}

TEST_F(Recording, KeepsPositionsThatAreNotCalibrated) {
    record("simulated:pace=off", 30, {"--raw-touches", "--no-touch"});
    EXPECT_THAT(contentOf(recording + "/recording.json"), HasSubstr("\"touches\": \"raw\""));
    EXPECT_EQ(replay({recording}), 0) << output;
}

TEST_F(Recording, HasTheCamerasOwnPicturesWhenStreamsAreAligned) {
    for (const char* alignment : {"1", "2"}) {
        const support::TemporaryFolder volume;
        std::string settings = contentOf(examples + "/QVR_calibration/touch.json");
        const std::string key = "\"streamAlignment\": 0";
        ASSERT_NE(settings.find(key), std::string::npos);
        settings.replace(settings.find(key), key.size(),
                         std::string("\"streamAlignment\": ") + alignment);
        const std::string size = "\"colorResX\": 640";
        settings.replace(settings.find(size), size.size(), "\"colorResX\": 512");
        volume.write("QVR_calibration/touch.json", settings);
        recording = folder.file(std::string("aligned") + alignment);
        record("simulated:scene=tapping", 30, {}, volume.path());
        EXPECT_THAT(lines(), HasSubstr("\"slot\":")) << "a test without touches shows little";
        EXPECT_EQ(replay({recording}), 0) << output;
        EXPECT_THAT(output, testing::EndsWith(same));
    }
}

TEST_F(Recording, NeedsNoSettingsWhenThereWereNone) {
    const support::TemporaryFolder nothing;
    record("simulated:scene=tapping", 20, {}, nothing.path());
    EXPECT_EQ(fs::file_size(recording + "/QVR_calibration/touch.json"), 0U);
    EXPECT_EQ(replay({recording}), 0) << output;
}

TEST_F(Recording, KeepsFrameNumbersAndTimesWhenItIsRecordedAgain) {
    record("simulated:pace=off", 12);
    const std::string first = recording;
    const std::string before = lines();
    recording = folder.file("again");
    record("images:" + first + ",pace=off", 12, {}, first);
    EXPECT_EQ(lines(), before);
}

TEST_F(Recording, SurvivesAKill) {
    {
        ServerProcess server(examples, {"--camera", "simulated:scene=tapping", "--port", "0",
                                        "--record", recording});
        server.waitForPort();
        for (int i = 0; i < 4000 && frameCount() < 20; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        server.signal(SIGKILL);
        EXPECT_EQ(server.waitForEnd(), std::nullopt);
    }
    EXPECT_GE(frameCount(), 20);
    EXPECT_EQ(replay({recording}), 0) << output;
    EXPECT_THAT(output, testing::EndsWith(same));
}

TEST_F(Recording, IsPlayedUpToALineThatWasNotFinished) {
    record("simulated:scene=tapping,pace=off", 20);
    const std::string whole = lines();
    std::ofstream(recording + "/frames.jsonl", std::ios::binary)
        << whole.substr(0, whole.size() - 5);
    EXPECT_EQ(replay({recording}), 0) << output;
    EXPECT_THAT(output, HasSubstr(": " + std::to_string(frameCount()) + " frames played"));
    EXPECT_THAT(output, HasSubstr("  the last line is not whole, as when recording was "
                                  "interrupted; it is ignored\n"));
    ServerProcess server(recording, {"--camera", "images:" + recording + ",pace=off", "--port", "0",
                                     "--frames", "30"});
    EXPECT_EQ(server.waitForEnd(), 0) << server.errors();
}

TEST_F(Recording, EndsOnAFullDiskAndTheServerGoesOn) {
    support::TemporaryFolder images;
    for (int i = 0; i < 4; ++i) {
        support::writeGreyPng(images.write(std::to_string(i) + ".png", ""), 160, 120, 16,
                              [&](unsigned column, unsigned row) {
                                  const bool finger = column >= 40 && column < 80 && row < 60;
                                  return static_cast<std::uint16_t>(finger ? 1200 + i : 0);
                              });
    }
    support::TemporaryFolder volume;
    volume.write("QVR_calibration/touch.json",
                 R"({"colorResX": 160, "colorResY": 120, "depthResX": 160, "depthResY": 120,)"
                 R"( "nearClipMeters": 0.1, "farClipMeters": 0.25, "touchDetection": {)"
                 R"("forwardFacing": {"borderClipTop": 0, "borderClipBottom": 0,)"
                 R"( "borderClipLeft": 0, "borderClipRight": 0}}, "streaming": {"fps": 60}})");
    const std::string log = folder.file("touches.jsonl");
    {
        const FileSizeLimit limit(6000); // met by the lines; pictures are smaller
        ServerProcess server(volume.path(), {"--camera", "images:" + images.path(), "--port", "0",
                                             "--frames", "100", "--record", recording});
        EXPECT_EQ(server.waitForEnd(), 0) << server.errors();
        said = server.errors();
    }
    const long frames = frameCount();
    EXPECT_GT(frames, 5);
    EXPECT_LT(frames, 100);
    const std::string complaint = "qvr-server: WARNING: the recording ends after " +
                                  std::to_string(frames) + " frames: cannot write to " + recording +
                                  ": File too large\n";
    const std::size_t place = said.find(complaint);
    ASSERT_NE(place, std::string::npos) << said;
    EXPECT_EQ(said.find("the recording ends", place + complaint.size()), std::string::npos);
    EXPECT_THAT(said, HasSubstr("recorded " + std::to_string(frames) + " frames to "));
    EXPECT_EQ(replay({recording}), 0) << output;
}

TEST_F(Recording, GoesOnWhenALostCameraComesBack) {
    record("simulated:scene=tapping,fault=vanish@40,lasting=1", 90, {"--keep-running"});
    EXPECT_THAT(said, HasSubstr("the camera is back"));
    EXPECT_THAT(lines(), HasSubstr("\"tracking\":"));
    EXPECT_EQ(replay({recording}), 0) << output;
    EXPECT_THAT(output, testing::EndsWith(same));
}

TEST_F(Recording, EndsWhenTheCameraComesBackWithAnotherSize) {
    record("simulated:fault=shrink@30,lasting=30", 60, {"--keep-running"});
    EXPECT_THAT(said, HasSubstr("WARNING: the recording ends: the camera came back with other "
                                "sizes or settings\n"));
    EXPECT_GE(frameCount(), 20);
    EXPECT_EQ(replay({recording}), 0) << output;
}

TEST_F(Recording, IsNotReplaced) {
    folder.write("recording/notes.txt", "mine");
    ServerProcess server(examples, {"--camera", "simulated", "--port", "0", "--record", recording});
    EXPECT_EQ(server.waitForEnd(), 2);
    EXPECT_THAT(server.errors(),
                HasSubstr("qvr-server: cannot record to " + recording +
                          ": it exists and is not empty. Recordings are not replaced: name a new "
                          "folder, or remove this one\n"));
    EXPECT_EQ(contentOf(recording + "/notes.txt"), "mine");
}

TEST_F(Recording, TellsTheFirstDifference) {
    record("simulated:scene=tapping,pace=off", 40);
    const std::string text = lines();
    const std::size_t touch = text.find("\"x\":");
    ASSERT_NE(touch, std::string::npos);
    const std::size_t start = text.rfind('\n', touch) + 1;
    const auto before = std::count(text.begin(), text.begin() + static_cast<long>(start), '\n');
    change(text.substr(touch, text.find(',', touch) - touch), "\"x\":4242.5");
    EXPECT_EQ(replay({recording}), 1);
    EXPECT_THAT(output, HasSubstr(": " + std::to_string(before) + " frame"));
    EXPECT_THAT(output, testing::ContainsRegex(
                            "  frame [0-9]+, touch 0, x: recorded 4242.5, now [0-9.]+\n"));
    EXPECT_THAT(output, Not(HasSubstr("bit for bit")));
}

TEST_F(Recording, TellsATouchThatIsNoLongerThere) {
    record("simulated:scene=tapping,pace=off", 40);
    change("\"touches\":[]", "\"touches\":[{\"slot\":7,\"x\":1.0,\"y\":2.0,\"z\":3.0,"
                             "\"pixel\":[4.0,5.0],\"depth\":6.0}]");
    EXPECT_EQ(replay({recording}), 1);
    EXPECT_THAT(output, HasSubstr("touch 7, active: recorded 1, now 0\n"));
}

TEST_F(Recording, SaysWhyItCannotBePlayed) {
    EXPECT_EQ(replay({folder.path()}), 1);
    EXPECT_EQ(output, "qvr-replay: " + folder.path() +
                          ": this folder is no recording: it has no recording.json\n");
    record("simulated", 5);
    std::ofstream(recording + "/depth_00000001.png", std::ios::binary) << "no picture";
    EXPECT_EQ(replay({recording}), 1);
    EXPECT_THAT(output, HasSubstr("depth_00000001.png: not a readable PNG"));
}

TEST_F(Recording, IsVerifiedByAProgramThatExplainsItself) {
    EXPECT_EQ(replay({"--help"}), 0);
    EXPECT_THAT(output, HasSubstr("--form NAME"));
    EXPECT_THAT(output, HasSubstr("Exit codes:"));
    EXPECT_EQ(replay({"--version"}), 0);
    EXPECT_THAT(output, HasSubstr("qvr-replay "));
    EXPECT_EQ(replay({}), 2);
    EXPECT_EQ(replay({folder.file("nowhere")}), 2);
    EXPECT_THAT(output, HasSubstr("see qvr-replay --help"));
    EXPECT_EQ(replay({folder.path(), "--form", "mmx"}), 2);
}
