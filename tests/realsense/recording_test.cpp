// Recordings as a camera: what was recorded comes back to the last bit.
#include "images/recording.h"
#include "source_uri.h"
#include "support/PictureFolder.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using camera_test::PictureFolder;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Numbers that no decimal fraction of a few digits has.
const std::string lenses =
    R"("depth": {"width": 2, "height": 1, "fx": 475.7311096191406, "fy": 475.7311401367188,)"
    R"( "ppx": 312.1330871582031, "ppy": 245.4561462402344,)"
    R"( "distortion": "inverse-brown-conrady",)"
    R"( "coefficients": [0.1428571492433548, 0.25, -0.5, 0.0, 1.5]},)"
    R"( "color": {"width": 4, "height": 2, "fx": 616.12, "fy": 617.5, "ppx": 1.1, "ppy": 0.7,)"
    R"( "distortion": "none", "coefficients": [0, 0, 0, 0, 0]},)";
const std::string pose = R"("depthToColor": {"rotation": [1, 0, 0, 0, 0, 1, 0, -1, 0],)"
                         R"( "translation": [0.0255, -0.000125, 0.5]})";

std::string description(const std::string& version = "1") {
    return R"({"format": "qvr-recording", "version": )" + version +
           R"(, "fps": 50, "depthScale": 0.0001250000059371814, )" + lenses + pose + "}";
}

std::string line(int picture, int frame, const std::string& time) {
    return "{\"picture\":" + std::to_string(picture) + ",\"frame\":" + std::to_string(frame) +
           ",\"time\":" + time + ",\"touches\":[]}\n";
}

class RecordedCamera : public testing::Test {
  protected:
    RecordedCamera() {
        folder.write("recording.json", description());
        for (const int picture : {0, 1, 2}) {
            const auto value = static_cast<std::uint16_t>(1000 * (picture + 1));
            folder.writeDepth("depth_0000000" + std::to_string(picture) + ".png", 2, 1,
                              {value, value});
            folder.writeColor("color_0000000" + std::to_string(picture) + ".png", 4, 2,
                              std::vector<std::uint8_t>(24, static_cast<std::uint8_t>(picture)));
        }
        writeLines(line(0, 7, "0.125") + line(1, 9, "0.25"));
    }

    void writeLines(const std::string& text) const { folder.write("frames.jsonl", text); }
    std::unique_ptr<camera::FrameSource> source(const std::string& keys = "") const {
        return camera::makeSource("images:" + folder.path() + keys);
    }
    std::string problem(const std::string& keys = "") const {
        try {
            source(keys);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }
    // The first samples of so many frames.
    static std::vector<int> depths(camera::FrameSource& camera, int count) {
        camera.configure({}, {});
        std::vector<int> result;
        for (int number = 0; number < count; ++number) {
            std::vector<std::uint16_t> depth(2);
            camera.render(static_cast<std::uint64_t>(number), depth, {});
            result.push_back(depth[0]);
        }
        return result;
    }

    PictureFolder folder;
};

} // namespace

TEST_F(RecordedCamera, HasTheGeometryOfTheOneThatWasRecorded) {
    const auto camera = source();
    const auto geometry = camera->configure({}, {});
    EXPECT_EQ(camera->depthScale(), 0.000125f);
    EXPECT_EQ(geometry.depthScale, 0.000125f);
    EXPECT_EQ(geometry.framerate, 50);
    EXPECT_EQ(geometry.depth.width, 2);
    EXPECT_EQ(geometry.depth.height, 1);
    EXPECT_EQ(geometry.depth.fx, 475.7311096191406f);
    EXPECT_EQ(geometry.depth.fy, 475.7311401367188f);
    EXPECT_EQ(geometry.depth.ppx, 312.1330871582031f);
    EXPECT_EQ(geometry.depth.ppy, 245.4561462402344f);
    EXPECT_EQ(geometry.depth.model, RS_DISTORTION_INVERSE_BROWN_CONRADY);
    EXPECT_THAT(geometry.depth.coeffs, ElementsAre(0.1428571492433548f, 0.25f, -0.5f, 0.0f, 1.5f));
    EXPECT_EQ(geometry.color.width, 4);
    EXPECT_EQ(geometry.color.ppx, 1.1f);
    EXPECT_EQ(geometry.color.ppy, 0.7f);
    EXPECT_EQ(geometry.color.model, RS_DISTORTION_NONE);
    EXPECT_THAT(geometry.depthToColor.rotation, ElementsAre(1, 0, 0, 0, 0, 1, 0, -1, 0));
    EXPECT_THAT(camera->depthToColor().translation, ElementsAre(0.0255f, -0.000125f, 0.5f));
}

TEST_F(RecordedCamera, PlaysTheFramesOfItsLinesOverAndOver) {
    const auto camera = source();
    EXPECT_THAT(depths(*camera, 3), ElementsAre(1000, 2000, 1000));
    std::vector<std::uint8_t> color(24);
    camera->render(1, {}, color);
    EXPECT_EQ(color, std::vector<std::uint8_t>(24, 1));
    writeLines(line(2, 1, "0") + line(0, 2, "1"));
    EXPECT_THAT(depths(*source(), 2), ElementsAre(3000, 1000));
    EXPECT_THAT(depths(*source(",hold=2"), 3), ElementsAre(3000, 3000, 1000));
}

TEST_F(RecordedCamera, GivesEachFrameTheNumberAndTimeItHad) {
    const auto camera = source();
    const rs_scene_truth second = camera->truth(1);
    EXPECT_EQ(second.frame, 9U);
    EXPECT_EQ(second.seconds, 0.25);
    EXPECT_EQ(second.timed, 1);
    EXPECT_EQ(second.known, 0);
    EXPECT_EQ(camera->truth(2).frame, 7U);
}

TEST_F(RecordedCamera, HasWhatKeysSayInstead) {
    const auto camera = source(",scale=0.001,fx=10,fy=11,ppx=1,ppy=2,fps=25");
    const auto geometry = camera->configure({}, {});
    EXPECT_EQ(geometry.depthScale, 0.001f);
    EXPECT_EQ(geometry.framerate, 25);
    EXPECT_EQ(geometry.depth.fx, 10.0f);
    EXPECT_EQ(geometry.depth.fy, 11.0f);
    EXPECT_EQ(geometry.depth.ppx, 1.0f);
    EXPECT_EQ(geometry.depth.ppy, 2.0f);
    EXPECT_EQ(geometry.depth.model, RS_DISTORTION_INVERSE_BROWN_CONRADY);
    EXPECT_EQ(geometry.color.fx, 616.12f);
    EXPECT_EQ(source()->configure({0, 0, 60}, {}).framerate, 60) << "or what a program asks for";
}

TEST_F(RecordedCamera, IgnoresALineThatWasNotFinished) {
    const std::string whole = line(0, 1, "0") + line(1, 2, "1");
    const std::string next = line(2, 3, "2");
    for (std::size_t length = 0; length < next.size(); ++length) {
        writeLines(whole + next.substr(0, length));
        EXPECT_THAT(depths(*source(), 3), ElementsAre(1000, 2000, 1000)) << length;
    }
    writeLines(whole + next);
    EXPECT_THAT(depths(*source(), 3), ElementsAre(1000, 2000, 3000));
}

TEST_F(RecordedCamera, NamesALineThatIsNoFrame) {
    const std::string lines = folder.file("frames.jsonl");
    writeLines(line(0, 1, "0") + "{\"picture\":0\n" + line(1, 2, "1"));
    EXPECT_EQ(problem(), "recording " + lines + ": line 2: no JSON object");
    writeLines("{\"picture\":\"../depth\",\"frame\":1,\"time\":0}\n");
    EXPECT_EQ(problem(), "recording " + lines +
                             ": \"line 1: picture\" is not a whole number from 0 to 99999999");
    writeLines("{\"picture\":1,\"frame\":-1,\"time\":0}\n");
    EXPECT_THAT(problem(), HasSubstr("\"line 1: frame\" is not a whole number"));
    writeLines("{\"picture\":1,\"frame\":1}\n");
    EXPECT_THAT(problem(), HasSubstr("\"line 1: time\" is not there"));
    writeLines(std::string(70000, ' ') + "\n");
    EXPECT_EQ(problem(), "recording " + lines + ": a line is too long");
}

TEST_F(RecordedCamera, NamesARecordingWithoutFrames) {
    writeLines("");
    EXPECT_EQ(problem(), "recording " + folder.file("frames.jsonl") + ": no frame was recorded");
    std::filesystem::remove(folder.file("frames.jsonl"));
    EXPECT_THAT(problem(), HasSubstr("no frame was recorded"));
}

TEST_F(RecordedCamera, NamesPicturesThatAreMissingOrOfAnotherSize) {
    writeLines(line(5, 1, "0"));
    EXPECT_EQ(problem(), "image " + folder.file("depth_00000005.png") + ": cannot be opened");
    folder.writeDepth("depth_00000005.png", 3, 1, {1, 2, 3});
    EXPECT_THAT(problem(), HasSubstr("color_00000005.png: cannot be opened"));
    folder.writeColor("color_00000005.png", 4, 2, std::vector<std::uint8_t>(24));
    EXPECT_EQ(problem(), "the recording is of depth images of 2x1, its images are 3x1");
}

TEST_F(RecordedCamera, RefusesOtherVersionsAndDocuments) {
    const std::string file = "recording " + folder.file("recording.json");
    folder.write("recording.json", description("2"));
    EXPECT_EQ(problem(), file + ": is of another version than 1, the one known here");
    folder.write("recording.json", "{");
    EXPECT_EQ(problem(), file + ": no valid JSON");
    folder.write("recording.json", "[]");
    EXPECT_THAT(problem(), HasSubstr("is not an object"));
    folder.write("recording.json", R"({"format": "other", "version": 1})");
    EXPECT_EQ(problem(), file + ": \"format\" is not \"qvr-recording\"");
}

TEST_F(RecordedCamera, NamesWhatIsWrongWithItsDescription) {
    const auto problemWith = [&](const std::string& from, const std::string& to) {
        std::string text = description();
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos) << from;
        folder.write("recording.json", text.replace(place, from.size(), to));
        return problem();
    };
    EXPECT_THAT(problemWith("\"fps\": 50", "\"fps\": 0"),
                HasSubstr("\"fps\" is not a whole number from 1 to 1000"));
    EXPECT_THAT(problemWith("\"fps\": 50, ", ""), HasSubstr("\"fps\" is not there"));
    EXPECT_THAT(problemWith("\"width\": 2", "\"width\": 20000"),
                HasSubstr("\"depth.width\" is not a whole number from 1 to 16384"));
    EXPECT_THAT(problemWith("616.12", "0"), HasSubstr("\"color.fx\" is not a number from"));
    EXPECT_THAT(problemWith("616.12", "1e300"), HasSubstr("\"color.fx\" is not a number from"));
    EXPECT_THAT(problemWith("616.12", "null"), HasSubstr("\"color.fx\" is not a number from"));
    EXPECT_THAT(problemWith("inverse-", "some-"),
                HasSubstr("\"depth.distortion\" is not the name of a lens model"));
    EXPECT_THAT(problemWith("0.25, -0.5", "0.25"),
                HasSubstr("\"depth.coefficients\" is not a list of 5 numbers"));
    EXPECT_THAT(problemWith("\"rotation\": [1", "\"rotation\": [\"a\""),
                HasSubstr("\"depthToColor.rotation\" is not a number"));
    EXPECT_THAT(problemWith("0.0001250000059371814", "0"), HasSubstr("\"depthScale\" is not"));
}

TEST_F(RecordedCamera, SurvivesDamagedBytesAnywhere) {
    const std::string whole = description();
    int refused = 0;
    for (std::size_t place = 0; place < whole.size(); ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x41);
        folder.write("recording.json", damaged);
        refused += problem().empty() ? 0 : 1;
    }
    EXPECT_GT(refused, static_cast<int>(whole.size()) / 2);
}
