// qvr-evaluate as a user runs it.
#include "demo/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <chrono>
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
using testing::Not;
using Arguments = std::vector<std::string>;

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class EvaluateProgram : public testing::Test {
  protected:
    // Its exit code; -1 when it does not end by itself.
    int run(const Arguments& arguments) {
        demo::ChildProcess child({EVALUATE_PROGRAM, arguments, {}, folder.file("out")});
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

TEST_F(EvaluateProgram, ExplainsItself) {
    EXPECT_EQ(run({"--help"}), 0);
    for (const char* part : {"--scene", "--seed", "--frames", "--settings", "--json", "--pictures",
                             "--images", "--strict", "Exit codes:", "dragging-0.5", "crossing"}) {
        EXPECT_THAT(output, HasSubstr(part));
    }
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_THAT(output, HasSubstr("qvr-evaluate "));
}

TEST_F(EvaluateProgram, RefusesWrongOptions) {
    EXPECT_EQ(run({"--scene", "dancing"}), 2);
    EXPECT_THAT(output, HasSubstr("there is no scene \"dancing\"; there are resting, tapping,"));
    EXPECT_EQ(run({"--frames", "0"}), 2);
    EXPECT_THAT(output, HasSubstr("see qvr-evaluate --help"));
    EXPECT_EQ(run({"--images", "/nowhere"}), 2);
    EXPECT_THAT(output, HasSubstr("/nowhere"));
    EXPECT_EQ(run({"--images", folder.path(), "--scene", "resting"}), 2);
}

TEST_F(EvaluateProgram, RefusesSettingsThatCannotBeUsed) {
    EXPECT_EQ(run({"--settings", folder.file("none.json")}), 3);
    EXPECT_THAT(output, HasSubstr("the file cannot be read"));
    EXPECT_EQ(run({"--settings", folder.write("broken.json", "{\"depthResX\": ")}), 3);
    EXPECT_THAT(output, HasSubstr("broken.json cannot be used"));
}

TEST_F(EvaluateProgram, RefusesSettingsThatFindNoFingers) {
    std::string settings =
        contentOf(std::string(EXAMPLES) + "/simulated/QVR_calibration/touch.json");
    const std::string size = "\"minBlobSize\": 11";
    const std::size_t place = settings.find(size);
    ASSERT_NE(place, std::string::npos);
    settings.replace(place, size.size(), "\"minBlobSize\": 600");
    EXPECT_EQ(run({"--scene", "resting", "--frames", "5", "--settings",
                   folder.write("blind.json", settings)}),
              3);
    EXPECT_THAT(output, HasSubstr("finds 0 of 900 fingers; that is too few"));
}

TEST_F(EvaluateProgram, FindsRestingFingersAndNothingOnTheEmptySurface) {
    EXPECT_EQ(
        run({"--scene", "resting", "--scene", "empty", "--frames", "40", "--seed", "3", "--strict",
             "--json", folder.file("report.json"), "--pictures", folder.file("pictures")}),
        0)
        << output;
    EXPECT_THAT(output, HasSubstr("touch-downs detected >= 99.2 %: 100.00 %, met\n"));
    EXPECT_THAT(output, Not(HasSubstr("\033"))); // no progress bar without a terminal
    EXPECT_TRUE(std::filesystem::exists(folder.file("pictures") + "/resting.png"));
    EXPECT_TRUE(std::filesystem::exists(folder.file("pictures") + "/empty.png"));

    std::string error;
    const auto report = json11::Json::parse(contentOf(folder.file("report.json")), error);
    EXPECT_EQ(error, "");
    ASSERT_EQ(report["scenes"].array_items().size(), 2u);
    const json11::Json& resting = report["scenes"][0];
    EXPECT_EQ(resting["name"].string_value(), "resting");
    EXPECT_EQ(resting["frames"].int_value(), 40);
    EXPECT_EQ(resting["touchDowns"].int_value(), 3);
    EXPECT_EQ(resting["detected"].int_value(), 3);
    EXPECT_GT(resting["errorMm"]["mean"].number_value(), 0.0);
    EXPECT_LT(resting["errorMm"]["mean"].number_value(), 3.0);
    EXPECT_GT(resting["grid"]["samples"].int_value(), 800);
    EXPECT_EQ(report["total"]["frames"].int_value(), 80);
    EXPECT_EQ(report["seed"].int_value(), 3);
}

TEST_F(EvaluateProgram, CanFailWhenAGoalIsNotMet) {
    const Arguments arguments = {"--scene", "dragging-2", "--frames", "40", "--json", "-"};
    EXPECT_EQ(run(arguments), 0);
    EXPECT_THAT(output, HasSubstr("mm, NOT met"));
    EXPECT_THAT(output, HasSubstr("\"goals\": ["));
    Arguments strict = arguments;
    strict.push_back("--strict");
    EXPECT_EQ(run(strict), 4);
}

TEST_F(EvaluateProgram, TellsOfFilesThatCannotBeWritten) {
    EXPECT_EQ(run({"--scene", "resting", "--frames", "2", "--json", "/nowhere/report.json"}), 1);
    EXPECT_THAT(output, HasSubstr("cannot write /nowhere/report.json"));
}

} // namespace
