// The demo's files, folders and child programs.
#include "demo/ChildProcess.h"
#include "demo/Options.h"
#include "demo/Summary.h"
#include "demo/TouchRecords.h"
#include "demo/Workspace.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class DemoParts : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& text) {
        return temporary.write(name, text);
    }
    std::string read(const fs::path& file) { return demo::lastLines(file.string(), 1000); }

    support::TemporaryFolder temporary;
    fs::path folder = temporary.path();
};

TEST_F(DemoParts, ReadTheServersLog) {
    const auto log = demo::readServerLog(
        write("log", R"({"frame":7,"time":0.5,"touches":[{"slot":3,"x":1.5,"y":2.5,"z":null,)"
                     R"("pixel":[10,20],"depth":4000}],"truth":[{"id":1,"touching":true,)"
                     R"("pixel":[11,21],"depth":4001,"display":[1,2,3]}]})"
                     "\n"
                     R"({"frame":8,"time":0.6,"touches":[]})"
                     "\n"));
    ASSERT_EQ(log.frames.size(), 2u);
    EXPECT_EQ(log.unreadableLines, 0u);
    EXPECT_EQ(log.frames[0].frame, 7u);
    EXPECT_EQ(log.frames[0].touches.at(0).touch.slot, 3);
    EXPECT_FLOAT_EQ(log.frames[0].touches[0].touch.position[1], 2.5f);
    EXPECT_TRUE(log.frames[0].touches[0].touch.position[2] !=
                log.frames[0].touches[0].touch.position[2]);
    EXPECT_DOUBLE_EQ(log.frames[0].touches[0].pixel[1], 20);
    EXPECT_TRUE(log.frames[0].truthKnown);
    EXPECT_TRUE(log.frames[0].truth.at(0).touching);
    EXPECT_DOUBLE_EQ(log.frames[0].truth[0].display[2], 3);
    EXPECT_FALSE(log.frames[1].truthKnown);
}

TEST_F(DemoParts, PassOverTouchesThatAHostCannotTellFromEmptySlots) {
    const auto log = demo::readServerLog(
        write("log", R"({"frame":0,"time":0,"touches":[)"
                     R"({"slot":0,"x":-1,"y":-1,"z":-1,"pixel":[700,20],"depth":4000},)"
                     R"({"slot":1,"x":-1,"y":-1,"z":2,"pixel":[10,20],"depth":4000}]})"
                     "\n"));
    ASSERT_EQ(log.frames.size(), 1u);
    ASSERT_EQ(log.frames[0].touches.size(), 1u);
    EXPECT_EQ(log.frames[0].touches[0].touch.slot, 1);
}

TEST_F(DemoParts, ReadTheHostsLog) {
    const auto log = demo::readHostLog(write(
        "log", R"({"frame":1,"time":0.25,"result":0,"touches":[{"slot":9,"x":1,"y":2,"z":3}]})"
               "\n"
               R"({"frame":1,"time":0.50,"result":-101,"touches":[]})"
               "\n"));
    ASSERT_EQ(log.frames.size(), 2u);
    EXPECT_DOUBLE_EQ(log.frames[0].time, 0.25);
    EXPECT_EQ(log.frames[0].touches.at(0).slot, 9);
    EXPECT_EQ(log.frames[1].result, -101);
}

TEST_F(DemoParts, ForgiveALastLineThatWasCutShortOnly) {
    const std::string good = R"({"frame":1,"time":0.25,"result":0,"touches":[]})";
    EXPECT_EQ(demo::readHostLog(write("a", good + "\n{\"fra")).unreadableLines, 0u);
    EXPECT_EQ(demo::readHostLog(write("b", "{\"fra\n" + good + "\n")).unreadableLines, 1u);
    EXPECT_EQ(demo::readHostLog(write("c", "{}\n")).unreadableLines, 1u);
    EXPECT_TRUE(demo::readHostLog((folder / "none").string()).frames.empty());
}

TEST_F(DemoParts, CopySettingsToAPrivateVolume) {
    write("examples/touch.json", "{}");
    write("examples/notes.txt", "");
    fs::path volume;
    {
        const demo::Workspace workspace(folder / "examples");
        volume = workspace.volume();
        EXPECT_TRUE(fs::exists(volume / "QVR_calibration" / "touch.json"));
        EXPECT_FALSE(fs::exists(volume / "QVR_calibration" / "notes.txt"));
        EXPECT_EQ(workspace.file("x"), (volume / "x").string());
    }
    EXPECT_FALSE(fs::exists(volume));
}

TEST_F(DemoParts, CopySettingsThatLieAsOnAVolume) {
    write("examples/other.json", "{}");
    write("examples/QVR_calibration/touch.json", "{}");
    const demo::Workspace workspace(folder / "examples");
    EXPECT_TRUE(fs::exists(workspace.volume() / "QVR_calibration" / "touch.json"));
    EXPECT_FALSE(fs::exists(workspace.volume() / "QVR_calibration" / "other.json"));
}

TEST_F(DemoParts, SayWhereSettingsAreMissing) {
    try {
        const demo::Workspace workspace(folder / "none");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "no settings (*.json) in " + (folder / "none").string() +
                                    "; name their folder with --examples DIR");
    }
}

TEST_F(DemoParts, FindExamplesAboveABuildTreeOrInAnInstallation) {
    fs::create_directories(folder / "docs/examples/simulated");
    fs::create_directories(folder / "docs/examples/hand");
    const fs::path bin = folder / "build/debug/bin";
    EXPECT_EQ(demo::examplesFor("simulated:fingers=2", bin), folder / "docs/examples/simulated");
    EXPECT_EQ(demo::examplesFor("images:/some/where", bin), folder / "docs/examples/hand");
    EXPECT_EQ(demo::examplesFor("simulated", "/nowhere/bin"),
              "/nowhere/share/qvr-touch/examples/simulated");
}

TEST_F(DemoParts, LetThePicturesOfAFolderStayUntilTouchesRest) {
    EXPECT_EQ(demo::sourceFor("images:hands"), "images:hands,hold=20");
    EXPECT_EQ(demo::sourceFor("images:hands,hold=2"), "images:hands,hold=2");
    EXPECT_EQ(demo::sourceFor("simulated:fingers=2"), "simulated:fingers=2");
}

TEST_F(DemoParts, NameThePicturesThatAreThere) {
    write("touches.png", "");
    const std::string text = demo::picturesText(folder.string());
    EXPECT_EQ(text,
              "  " + (folder / "touches.png").string() + "  the touches on the depth picture\n");
}

TEST_F(DemoParts, RunAChildWithItsOutputAndEnvironment) {
    const std::string output = (folder / "out").string();
    demo::ChildProcess child(
        {"/bin/sh", {"-c", "echo $QVR_TEST; echo error >&2; exit 7"}, {"QVR_TEST=value"}, output});
    while (!child.ending()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(child.ending()->bySignal);
    EXPECT_EQ(child.ending()->code, 7);
    EXPECT_EQ(child.ending()->describe(), "exit code 7");
    EXPECT_EQ(read(output), "value\nerror\n");
}

TEST_F(DemoParts, EndAChild) {
    demo::ChildProcess child({"/bin/sleep", {"60"}, {}, "/dev/null"});
    EXPECT_FALSE(child.ending());
    EXPECT_EQ(child.end().describe(), "signal " + std::to_string(SIGTERM));
    EXPECT_TRUE(child.ending());
}

TEST_F(DemoParts, SayWhatCannotBeStarted) {
    try {
        const demo::ChildProcess child({"/nowhere/program", {}, {}, "/dev/null"});
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "cannot start /nowhere/program: No such file or directory");
    }
}

TEST_F(DemoParts, KeepTheLastLines) {
    EXPECT_EQ(demo::lastLines(write("text", "a\nb\nc\n"), 2), "b\nc\n");
    EXPECT_EQ(demo::lastLines((folder / "none").string(), 2), "");
}

} // namespace
