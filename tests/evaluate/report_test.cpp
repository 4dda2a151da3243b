#include "common/ProgressBar.h"
#include "evaluate/Goals.h"
#include "evaluate/TextTable.h"
#include "evaluate/report.h"

#include <cstdio>
#include <limits>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using evaluate::Goal;
using evaluate::SceneResult;
using testing::HasSubstr;

SceneResult result(const std::string& name, std::size_t detected, double error) {
    SceneResult made;
    made.scene.name = name;
    made.tally.frames = 600;
    made.tally.seconds = 10;
    made.tally.touchDowns = 100;
    made.tally.detected = detected;
    made.tally.errorAfter.assign(100, error);
    made.tally.reportedOn.assign(detected, 2);
    made.tally.reportedOnSinceSeen.assign(detected, 2);
    return made;
}

std::vector<Goal> goals(const std::vector<SceneResult>& results) {
    return evaluate::goalsOf(results, evaluate::totalOf(results));
}

TEST(Goals, AreMetUpToTheirLimits) {
    SceneResult fine = result("fine", 100, 3.0);
    fine.scene.emptySurface = true;
    for (const Goal& goal : goals({fine})) {
        EXPECT_TRUE(goal.met()) << goal.name;
        EXPECT_TRUE(goal.missing.empty()) << goal.name;
    }
}

TEST(Goals, AreMissedBeyondTheirLimits) {
    SceneResult bad = result("bad", 99, 6.1);
    bad.scene.emptySurface = true;
    bad.tally.falseTouches = 1;
    bad.tally.reportedOn.assign(99, 3);
    bad.tally.reportedOnSinceSeen.assign(99, 3);
    for (const Goal& goal : goals({bad})) {
        EXPECT_FALSE(goal.met()) << goal.name;
    }
    EXPECT_DOUBLE_EQ(*goals({bad})[1].figure, 6); // one in ten seconds
}

TEST(Goals, NameTheScenesThatMissThem) {
    const auto all = goals({result("one", 100, 1.0), result("two", 90, 4.0)});
    EXPECT_DOUBLE_EQ(*all[0].figure, 95);
    EXPECT_EQ(all[0].missing, std::vector<std::string>{"two"});
    EXPECT_DOUBLE_EQ(*all[2].figure, 2.5);
    EXPECT_TRUE(all[2].met());
    EXPECT_EQ(all[2].missing, std::vector<std::string>{"two"});
    EXPECT_FALSE(all[1].figure); // no empty surface was played
    EXPECT_FALSE(all[1].met());
}

TEST(TextTable, AlignsItsColumns) {
    evaluate::TextTable table;
    table.row({"scene", "a", "long one"});
    table.row({"x", "22", "3"});
    table.row({"y", "", ""});
    EXPECT_EQ(table.text(), "scene   a  long one\nx      22         3\ny\n");
    EXPECT_EQ(evaluate::decimal(1.256, 2), "1.26");
    EXPECT_EQ(evaluate::decimal(std::numeric_limits<double>::quiet_NaN(), 2), "-");
}

TEST(Report, TellsFiguresAndGoalsInWords) {
    const evaluate::Report report{"some/touch.json", 5, {result("one", 90, 1.5)}, 2.5};
    const std::string text = evaluate::textOf(report);
    EXPECT_THAT(text, HasSubstr("touch-downs detected >= 99.2 %: 90.00 %, NOT met (not by: one)"));
    EXPECT_THAT(text, HasSubstr("mean position error <= 3.0 mm: 1.50 mm, met\n"));
    EXPECT_THAT(text, HasSubstr("false touches on the empty surface <= 0.1 /min: not measured\n"));
    EXPECT_THAT(text, HasSubstr("settings some/touch.json, seed 5, 600 frames in 2.5 s\n"));
}

TEST(Report, IsAJsonDocumentWithNullForWhatIsUnknown) {
    SceneResult dragged = result("drag", 100, 1.5);
    dragged.scene.framesPerSecond = 50;
    dragged.lag = evaluate::LagFigures{1.5, 12.0};
    const auto json = nlohmann::json::parse(
        evaluate::jsonOf({"some/touch.json", 5, {result("one", 90, 1.5), dragged}, 2.5}));
    EXPECT_EQ(json["seed"], 5);
    EXPECT_EQ(json["scenes"].size(), 2u);
    EXPECT_EQ(json["scenes"][0]["name"], "one");
    EXPECT_EQ(json["scenes"][0]["missed"], 10);
    EXPECT_EQ(json["scenes"][0]["detectionRate"], 0.9);
    EXPECT_TRUE(json["scenes"][0]["jitterMm"].is_null());
    EXPECT_TRUE(json["scenes"][0]["lag"].is_null());
    EXPECT_TRUE(json["scenes"][0]["errorBeforeCalibrationMm"].is_null());
    EXPECT_EQ(json["scenes"][1]["errorMm"]["p95"], 1.5);
    EXPECT_EQ(json["scenes"][1]["lag"]["ms"], 30);
    EXPECT_EQ(json["total"]["touchDowns"], 200);
    EXPECT_EQ(json["goals"][0]["met"], false);
    EXPECT_EQ(json["goals"][0]["notMetBy"][0], "one");
    EXPECT_TRUE(json["goals"][1]["met"].is_null());
}

TEST(ProgressBar, DrawsItsLineAndTakesItAway) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
    ASSERT_TRUE(file);
    {
        programs::ProgressBar bar(file.get(), 2);
        bar.label("resting");
        bar.step();
    }
    std::rewind(file.get());
    char text[200] = {};
    const std::size_t length = std::fread(text, 1, sizeof text - 1, file.get());
    EXPECT_EQ(std::string(text, length),
              "\r[###############...............]  50 %  resting\033[K\r\033[K");
}

TEST(ProgressBar, DrawsNothingWithoutATerminal) {
    programs::ProgressBar bar(nullptr, 2);
    bar.step();
    bar.step();
    bar.step();
}

} // namespace
