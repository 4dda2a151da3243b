#include "evaluate/EvaluationError.h"
#include "evaluate/Scene.h"
#include "evaluate/Settings.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using evaluate::EvaluationError;
using evaluate::Grid;
using evaluate::Settings;
using nlohmann::json;
using testing::HasSubstr;

constexpr const char* small = R"({"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.2,
    "farClipMeters": 0.28, "streaming": {"port": 4, "fps": 15, "touch": false}, "other": 7})";

class SettingsDocument : public testing::Test {
  protected:
    Settings read(const std::string& text) { return Settings(folder.write("touch.json", text)); }
    std::string problemWith(const std::string& text) {
        try {
            read(text);
        } catch (const EvaluationError& error) {
            EXPECT_EQ(error.code(), evaluate::exitBadSettings);
            return error.what();
        }
        return "";
    }

    support::TemporaryFolder folder;
};

TEST_F(SettingsDocument, KnowsTheVolumeOfItsGrid) {
    const evaluate::Volume volume = read(small).volume(8000);
    EXPECT_EQ(volume.width, 640);
    EXPECT_EQ(volume.height, 480);
    EXPECT_EQ(volume.nearest, 1600);
    EXPECT_EQ(volume.farthest, 2240);
}

TEST_F(SettingsDocument, IsMadeForASceneAndOtherwiseKept) {
    Grid grid;
    grid.sizeX = 2;
    grid.sizeY = 3;
    grid.sizeZ = 4;
    grid.vertices = {{1, 2, 3}, {4, 5, 6}};
    const json scene = json::parse(read(small).forScene(30, &grid));
    EXPECT_EQ(scene["streaming"]["fps"], 30);
    EXPECT_EQ(scene["streaming"]["touch"], true);
    EXPECT_EQ(scene["streaming"]["streamAlignment"], 0);
    EXPECT_EQ(scene["streaming"]["port"], 4);
    EXPECT_EQ(scene["calibration"]["sizeX"], 2);
    EXPECT_EQ(scene["calibration"]["sizeY"], 3);
    EXPECT_EQ(scene["calibration"]["sizeZ"], 4);
    EXPECT_EQ(scene["calibration"]["verts"], json({1.0, 2.0, 3.0, 4.0, 5.0, 6.0}));
    EXPECT_EQ(scene["depthResX"], 640);
    EXPECT_EQ(scene["other"], 7);
    EXPECT_FALSE(json::parse(read(small).forScene(30, nullptr)).contains("calibration"));
}

TEST_F(SettingsDocument, TakesPicturesInTheirOwnSize) {
    const json pictures = json::parse(read(small).forPictures());
    for (const char* key : {"depthResX", "depthResY", "colorResX", "colorResY"}) {
        EXPECT_EQ(pictures[key], 0) << key;
    }
    EXPECT_EQ(pictures["streaming"]["touch"], true);
    EXPECT_EQ(pictures["streaming"]["fps"], 15);
}

TEST_F(SettingsDocument, SaysWhatIsWrongWithIt) {
    EXPECT_THROW(Settings("/nowhere/touch.json"), EvaluationError);
    EXPECT_THAT(problemWith("{"), HasSubstr("touch.json cannot be used: "));
    EXPECT_THAT(problemWith("[]"), HasSubstr("it is no JSON object"));
    EXPECT_THAT(problemWith(R"({"depthResX": "640"})"),
                HasSubstr("the number \"depthResX\" is missing"));
    EXPECT_THAT(problemWith(R"({"depthResX": 1, "depthResY": 1, "nearClipMeters": 0.3,
                               "farClipMeters": 0.3})"),
                HasSubstr("\"nearClipMeters\" is not below \"farClipMeters\""));
}

TEST(Scenes, AreChosenByNameInTheirOrder) {
    EXPECT_EQ(evaluate::scenesNamed({}).size(), evaluate::allScenes().size());
    const auto two = evaluate::scenesNamed({"empty", "resting", "empty"});
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0].name, "resting");
    EXPECT_EQ(two[1].name, "empty");
    try {
        evaluate::scenesNamed({"resting", "dancing"});
        FAIL();
    } catch (const EvaluationError& error) {
        EXPECT_EQ(error.code(), evaluate::exitBadOption);
        EXPECT_THAT(error.what(), HasSubstr("there is no scene \"dancing\"; there are resting, "));
    }
}

TEST(Scenes, SayWhatTheirCameraIs) {
    const auto bent = evaluate::scenesNamed({"bent"}).front();
    EXPECT_EQ(evaluate::cameraOf(bent, 7), "simulated:scene=everywhere,bend=25,pace=off,seed=7");
    EXPECT_EQ(evaluate::calibrationCameraOf(bent, 7),
              "simulated:scene=calibration,bend=25,pace=off,seed=7");
}

} // namespace
