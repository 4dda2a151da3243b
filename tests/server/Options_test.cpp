#include "Options.h"
#include "ServerError.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using server::Options;
using testing::HasSubstr;

namespace {

std::optional<Options> parse(std::vector<std::string> arguments) {
    std::vector<const char*> pointers = {"qvr-server"};
    for (const std::string& argument : arguments)
        pointers.push_back(argument.c_str());
    return server::parseOptions(static_cast<int>(pointers.size()), pointers.data());
}

// The message of the bad option, or "" when the arguments are fine.
std::string problem(const std::vector<std::string>& arguments) {
    try {
        parse(arguments);
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), server::exitBadOption);
        return error.what();
    }
    return "";
}

std::string output(const std::string& argument) {
    testing::internal::CaptureStdout();
    EXPECT_FALSE(parse({argument}).has_value());
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(Options, HaveDefaultsThatKeepPicturesOnThisMachine) {
    const Options options = parse({}).value();
    EXPECT_EQ(options.bindAddress, "127.0.0.1");
    EXPECT_EQ(options.allowed.text(), "127.0.0.0/8, ::1");
    EXPECT_FALSE(options.camera);
    EXPECT_FALSE(options.port);
    EXPECT_FALSE(options.keepRunning);
    EXPECT_FALSE(options.color || options.depth || options.processed || options.touch);
    EXPECT_FALSE(options.rawTouches);
    EXPECT_FALSE(options.frames);
    EXPECT_FALSE(options.statsInterval);
    EXPECT_FALSE(options.verbose);
    EXPECT_FALSE(options.touchLog);
    EXPECT_FALSE(options.record);
    EXPECT_EQ(options.recordEvery, 1U);
    EXPECT_FALSE(options.check);
    EXPECT_EQ(options.clientTimeout, std::chrono::seconds(10));
    EXPECT_EQ(options.maxClients, 16U);
}

TEST(Options, TakeAFolderToCheck) {
    EXPECT_EQ(parse({"--check", "/"}).value().check, "/");
    EXPECT_THAT(problem({"--check", "/no/such/folder"}), HasSubstr("is no folder"));
}

TEST(Options, TakeEveryOption) {
    const Options options = parse({"--camera",
                                   "simulated:seed=3",
                                   "--port",
                                   "0",
                                   "--bind",
                                   "::1",
                                   "--allow",
                                   "192.168.1.0/24",
                                   "--allow",
                                   "fd00::/8",
                                   "--keep-running",
                                   "--color",
                                   "--no-depth",
                                   "--processed",
                                   "--no-touch",
                                   "--raw-touches",
                                   "--frames",
                                   "12",
                                   "--stats",
                                   "0.5",
                                   "--verbose",
                                   "--touch-log",
                                   "log.jsonl",
                                   "--record",
                                   "recording",
                                   "--record-every",
                                   "5",
                                   "--client-timeout",
                                   "0.25",
                                   "--max-clients",
                                   "3"})
                                .value();
    EXPECT_EQ(options.camera, "simulated:seed=3");
    EXPECT_EQ(options.port, 0);
    EXPECT_EQ(options.bindAddress, "::1");
    EXPECT_EQ(options.allowed.text(), "192.168.1.0/24, fd00::/8");
    EXPECT_TRUE(options.keepRunning);
    EXPECT_EQ(options.color, true);
    EXPECT_EQ(options.depth, false);
    EXPECT_EQ(options.processed, true);
    EXPECT_EQ(options.touch, false);
    EXPECT_TRUE(options.rawTouches);
    EXPECT_EQ(options.frames, 12U);
    EXPECT_EQ(options.statsInterval->count(), 0.5);
    EXPECT_TRUE(options.verbose);
    EXPECT_EQ(options.touchLog, "log.jsonl");
    EXPECT_EQ(options.record, "recording");
    EXPECT_EQ(options.recordEvery, 5U);
    EXPECT_EQ(options.clientTimeout, std::chrono::milliseconds(250));
    EXPECT_EQ(options.maxClients, 3U);
}

TEST(Options, TakeTheLastOfASwitch) {
    EXPECT_EQ(parse({"--color", "--no-color"})->color, false);
    EXPECT_EQ(parse({"--no-color", "--color"})->color, true);
    EXPECT_EQ(parse({"--no-touch", "--no-touch"})->touch, false);
    EXPECT_EQ(parse({"--touch", "--touch"})->touch, true);
    EXPECT_EQ(parse({"--depth"})->depth, true);
    EXPECT_EQ(parse({"--no-processed"})->processed, false);
}

TEST(Options, NameTheBadOne) {
    EXPECT_THAT(problem({"--colour"}), HasSubstr("--colour"));
    EXPECT_THAT(problem({"stray"}), HasSubstr("stray"));
    EXPECT_THAT(problem({"--port", "65536"}), HasSubstr("'65536' is not a port from 0 to 65535"));
    EXPECT_THAT(problem({"--port", "-1"}), HasSubstr("--port"));
    EXPECT_THAT(problem({"--port", "80x"}), HasSubstr("--port"));
    EXPECT_THAT(problem({"--bind", "localhost"}), HasSubstr("'localhost' is no IP address"));
    EXPECT_THAT(problem({"--frames", "0"}), HasSubstr("--frames"));
    EXPECT_THAT(problem({"--frames", "1.5"}), HasSubstr("--frames"));
    EXPECT_THAT(problem({"--stats", "0"}), HasSubstr("--stats"));
    EXPECT_THAT(problem({"--stats", "nan"}), HasSubstr("--stats"));
    EXPECT_THAT(problem({"--client-timeout", "-2"}), HasSubstr("--client-timeout"));
    EXPECT_THAT(problem({"--record", "x", "--record-every", "0"}), HasSubstr("--record-every"));
    EXPECT_THAT(problem({"--record-every", "2"}), HasSubstr("--record-every requires --record"));
    EXPECT_THAT(problem({"--max-clients", "0"}), HasSubstr("--max-clients"));
    EXPECT_THAT(problem({"--camera"}), HasSubstr("--camera"));
    EXPECT_THAT(problem({"--color=maybe"}), HasSubstr("color"));
    EXPECT_THAT(problem({"--no-depth=99999999999999999999"}), HasSubstr("no-depth"));
    EXPECT_THAT(problem({"--verbose=maybe"}), HasSubstr("--verbose"));
    EXPECT_THAT(problem({"--touch-log"}), HasSubstr("--touch-log"));
    EXPECT_THAT(problem({"--bogus"}), HasSubstr("qvr-server --help lists the options."));
}

TEST(Options, OpenTheServerToOthersOnlyWithAWordOnWhoTheyAre) {
    EXPECT_EQ(problem({"--bind", "0.0.0.0"}),
              "--bind 0.0.0.0 shows others what the camera sees. Say who may connect: add --allow "
              "ADDR/PREFIX, such as --allow 192.168.1.0/24, as often as needed, or --allow any for "
              "everyone who can reach it\nqvr-server --help lists the options.");
    for (const char* address : {"::", "192.168.1.5", "fe80::1", "128.0.0.1", "::ffff:127.0.0.1"})
        EXPECT_THAT(problem({"--bind", address}), HasSubstr("--allow")) << address;
    for (const char* address : {"127.0.0.1", "127.1.2.3", "::1"})
        EXPECT_EQ(problem({"--bind", address}), "") << address;
    EXPECT_EQ(parse({"--bind", "0.0.0.0", "--allow", "any"})->allowed.text(), "any");
    EXPECT_EQ(parse({"--bind", "::", "--allow", "10.0.0.7"})->allowed.text(), "10.0.0.7");
    // Not even this machine is let in unsaid once somebody is named.
    EXPECT_EQ(parse({"--allow", "127.0.0.1"})->allowed.text(), "127.0.0.1");
    EXPECT_THAT(problem({"--bind", "0.0.0.0", "--allow", "everyone"}),
                HasSubstr("'everyone' is no address, no network such as 192.168.1.0/24 or "
                          "fd00::/8, and not 'any'"));
    EXPECT_THAT(problem({"--allow"}), HasSubstr("--allow"));
    EXPECT_THAT(problem({"--allow", "10.0.0.7", "10.0.0.8"}), HasSubstr("10.0.0.8"));
}

TEST(Options, HelpListsEveryOptionAndExitCode) {
    const std::string help = output("--help");
    for (const char* option : {"--camera URI",
                               "--port N",
                               "--bind ADDR",
                               "--allow ADDR[/PREFIX]",
                               "--keep-running",
                               "--color,--no-color ",
                               "--depth,--no-depth ",
                               "--processed,--no-processed ",
                               "--touch,--no-touch ",
                               "--raw-touches",
                               "--frames N",
                               "--stats SECONDS",
                               "--verbose",
                               "--touch-log FILE",
                               "--record DIR",
                               "--record-every N",
                               "--client-timeout SECONDS",
                               "--max-clients N",
                               "--check DIR",
                               "--help",
                               "--version"})
        EXPECT_THAT(help, HasSubstr(option));
    for (const char* code : {"\n  0  ", "\n  2  ", "\n  3  ", "\n  4  ", "\n  5  ", "\n  6  "})
        EXPECT_THAT(help, HasSubstr(code));
}

TEST(Options, VersionNamesTheProgram) {
    EXPECT_EQ(output("--version").rfind("qvr-server ", 0), 0U);
}
