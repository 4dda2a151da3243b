#include "ServerError.h"
#include "TouchLog.h"
#include "detection/touchManager.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <json11.hpp>

using server::TouchLog;

namespace {

class TouchLogTest : public testing::Test {
  protected:
    TouchLogTest() {
        records[2] = {1, 0.1, 1.0 / 3.0, 1234.5};
        touches.touchSlots[2].lerpedPos = {320.5F, 240.25F, 900.0F};
        touches.touchSlots[4].lerpedPos = {1.0F, 2.0F, 3.0F};
    }

    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    support::TemporaryFolder folder;
    std::string path = folder.path() + "/touches.jsonl";
    std::array<QVR::NetworkTouch, 10> records;
    QVR::touchManager touches;
};

} // namespace

TEST_F(TouchLogTest, WritesOneObjectALine) {
    TouchLog log(path);
    log.write(0, 0.5, records.data(), touches, std::nullopt);
    log.write(1, 0.75, std::array<QVR::NetworkTouch, 10>().data(), touches, std::nullopt);
    EXPECT_EQ(content(),
              "{\"frame\":0,\"time\":0.5,\"touches\":[{\"slot\":2,\"x\":0.10000000000000001,"
              "\"y\":0.33333333333333331,\"z\":1234.5,\"pixel\":[320.5,240.25],\"depth\":900}]}\n"
              "{\"frame\":1,\"time\":0.75,\"touches\":[]}\n");
}

TEST_F(TouchLogTest, WritesTheTruthOfASourceThatKnowsIt) {
    server::SceneTruth truth(2);
    truth[0] = {3, true, {10.5F, 20.0F}, 800.0F, {1.0F, 2.0F, 3.0F}};
    truth[1].id = 4;
    TouchLog(path).write(7, 1.0, records.data(), touches, truth);
    std::string error = "noError";
    const json11::Json line = json11::Json::parse(content(), error);
    ASSERT_EQ(error, "noError");
    ASSERT_EQ(line["truth"].array_items().size(), 2U);
    EXPECT_EQ(line["truth"][0].dump(),
              json11::Json::parse("{\"id\":3,\"touching\":true,\"pixel\":[10.5,20],\"depth\":800,"
                                  "\"display\":[1,2,3]}",
                                  error)
                  .dump());
    EXPECT_EQ(line["truth"][1]["id"].number_value(), 4.0);
    EXPECT_FALSE(line["truth"][1]["touching"].bool_value());
}

TEST_F(TouchLogTest, StaysJsonWhateverACalibrationMakesOfATouch) {
    records[2].x = std::numeric_limits<double>::quiet_NaN();
    records[2].y = -std::numeric_limits<double>::infinity();
    TouchLog(path).write(0, 0.0, records.data(), touches, server::SceneTruth());
    std::string error = "noError";
    const json11::Json line = json11::Json::parse(content(), error);
    EXPECT_EQ(error, "noError");
    EXPECT_TRUE(line["touches"][0]["x"].is_null());
    EXPECT_TRUE(line["touches"][0]["y"].is_null());
    EXPECT_TRUE(line["truth"].is_array());
}

TEST_F(TouchLogTest, ReplacesTheFile) {
    folder.write("touches.jsonl", "old\n");
    TouchLog(path).write(0, 0.0, std::array<QVR::NetworkTouch, 10>().data(), touches, std::nullopt);
    EXPECT_EQ(content(), "{\"frame\":0,\"time\":0,\"touches\":[]}\n");
}

TEST_F(TouchLogTest, SaysWhyItCannotBeWritten) {
    try {
        TouchLog log(folder.path() + "/none/touches.jsonl");
        FAIL() << "opened";
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), server::exitBadOption);
        EXPECT_EQ(std::string(error.what()), "cannot write the touch log " + folder.path() +
                                                 "/none/touches.jsonl: No such file or directory");
    }
}
