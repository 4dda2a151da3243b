// The list of cameras and sources.
#include "cameraTool/CameraFixture.h"
#include "cameraTool/CameraList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace cameraTool;
using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class CameraListTest : public camera_tool_test::CameraFixture {};

TEST_F(CameraListTest, HasEachCameraWithItsModes) {
    const std::string text = textOf(listCameras(""));
    EXPECT_THAT(text, StartsWith("CAMERA           SERIAL  FIRMWARE  OPENED WITH --camera\n"
                                 "Scripted camera  0123    3.2.1.0   realsense:0123\n"
                                 "    depth   8x6 at 30\n"
                                 "    colour  16x10 at 30\n"
                                 "\nSOURCES\n"));
    EXPECT_THAT(text, HasSubstr("images:DIR[,KEY=VALUE,...]  a recording, or a folder of "));
}

TEST_F(CameraListTest, IsReadByPrograms) {
    const json list = json::parse(jsonOf(listCameras("scripted")));
    ASSERT_EQ(list["cameras"].size(), 1U);
    const json camera = {{"uri", "scripted"},
                         {"name", "Scripted camera"},
                         {"serial", "0123"},
                         {"firmware", "3.2.1.0"},
                         {"depth", {{{"width", 8}, {"height", 6}, {"fps", 30}}}},
                         {"color", {{{"width", 16}, {"height", 10}, {"fps", 30}}}}};
    EXPECT_EQ(list["cameras"][0], camera);
    EXPECT_EQ(list["problem"], "");
    EXPECT_EQ(list["sources"].size(), 4U);
    EXPECT_EQ(list["sources"][0]["available"], true);
}

TEST_F(CameraListTest, SaysWhyThereIsNone) {
    camera::setEnumeration([] { return std::vector<std::unique_ptr<camera::Device>>(); });
    const CameraList list = listCameras("");
    EXPECT_TRUE(list.cameras.empty());
    EXPECT_NE(list.problem, "");
    EXPECT_THAT(textOf(list), StartsWith("No camera: " + list.problem + "\n\nSOURCES\n"));
    EXPECT_EQ(json::parse(jsonOf(list))["problem"], list.problem);
}

TEST_F(CameraListTest, SaysWhatTheLibraryComplainsOf) {
    camera::setEnumeration([]() -> std::vector<std::unique_ptr<camera::Device>> {
        throw std::runtime_error("the hub is on fire");
    });
    EXPECT_THAT(listCameras("").problem, HasSubstr("the hub is on fire"));
}

} // namespace
