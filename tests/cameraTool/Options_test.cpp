// The command line.
#include "cameraTool/Options.h"
#include "server/ServerError.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace cameraTool;
using testing::HasSubstr;

std::optional<Options> parsed(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "qvr-camera");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

std::string complaint(const std::vector<const char*>& arguments) {
    try {
        parsed(arguments);
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), server::exitBadOption);
        return error.what();
    }
    return "";
}

TEST(CameraToolOptions, HaveACommand) {
    EXPECT_EQ(parsed({"list"})->command, Command::list);
    EXPECT_EQ(parsed({"info"})->command, Command::info);
    EXPECT_EQ(parsed({"snapshot", "--out", "x"})->command, Command::snapshot);
    EXPECT_NE(complaint({}), "");
    EXPECT_NE(complaint({"paint"}), "");
    EXPECT_NE(complaint({"list", "info"}), "");
}

TEST(CameraToolOptions, AreThoseOfTheCommand) {
    EXPECT_TRUE(parsed({"list", "--json"})->json);
    EXPECT_TRUE(parsed({"info", "--raw", "--camera", "simulated"})->raw);
    EXPECT_EQ(parsed({"info", "--camera", "simulated"})->camera, "simulated");
    EXPECT_EQ(parsed({"list"})->camera, std::nullopt);
    EXPECT_EQ(parsed({"snapshot", "--out", "x"})->frame, 30U);
    EXPECT_EQ(parsed({"snapshot", "--out", "x", "--frame", "0"})->frame, 0U);
    EXPECT_EQ(parsed({"snapshot", "--out", "x"})->out, "x");
    EXPECT_THAT(complaint({"snapshot"}), HasSubstr("--out is required"));
    EXPECT_NE(complaint({"list", "--raw"}), "");
    EXPECT_NE(complaint({"snapshot", "--out", "x", "--frame", "-1"}), "");
}

TEST(CameraToolOptions, SayHowMuchToKeep) {
    const auto record = parsed({"record", "DIR", "--seconds", "2.5", "--frames", "7"});
    EXPECT_EQ(record->command, Command::record);
    EXPECT_EQ(record->out, "DIR");
    EXPECT_EQ(record->seconds, 2.5);
    EXPECT_EQ(record->frames, 7U);
    EXPECT_EQ(parsed({"record", "DIR"})->frames, std::nullopt);
    const auto convert = parsed({"convert", "film.bag", "DIR", "--frames", "3"});
    EXPECT_EQ(convert->command, Command::convert);
    EXPECT_EQ(convert->in, "film.bag");
    EXPECT_EQ(convert->out, "DIR");
    EXPECT_EQ(convert->frames, 3U);
    for (const std::vector<const char*>& wrong : {std::vector<const char*>{"record"},
                                                  {"record", "DIR", "--seconds", "0"},
                                                  {"record", "DIR", "--frames", "0"},
                                                  {"convert", "film.bag"}}) {
        EXPECT_NE(complaint(wrong), "") << wrong.back();
    }
}

TEST(CameraToolOptions, ChooseAMode) {
    const Mode mode =
        parsed({"info", "--depth", "640x240", "--color", "1920x1080", "--fps", "30"})->mode;
    EXPECT_EQ(mode.depthWidth, 640);
    EXPECT_EQ(mode.depthHeight, 240);
    EXPECT_EQ(mode.colorWidth, 1920);
    EXPECT_EQ(mode.colorHeight, 1080);
    EXPECT_EQ(mode.fps, 30);
    EXPECT_FALSE(mode.isOpen());
    EXPECT_TRUE(parsed({"info"})->mode.isOpen());
    for (const char* size :
         {"640", "640x", "x480", "640x480x", "0x480", "640x-1", "16385x1", "a", "640 x 480"}) {
        EXPECT_THAT(complaint({"info", "--depth", size}),
                    HasSubstr("'" + std::string(size) + "' is no size such as 640x480"));
    }
    EXPECT_NE(complaint({"info", "--fps", "0"}), "");
}

} // namespace
