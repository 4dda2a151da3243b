#include "camera/FakeRealsense.h"
#include "camera/hardwareCamera.h"
#include "support/LogCapture.h"

#include <clocale>
#include <locale>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>
#include <librealsense/rs.hpp>

using support::FakeRealsense;
using testing::ElementsAre;

namespace {

class CameraInfo : public testing::Test {
  protected:
    CameraInfo() {
        fake.reset();
        fake.colorToDepth = {{1.0f, 0.5f, -0.25f, 0.125f, 1e-7f, 2.0f, 3.0f, 1234567.0f, 0.0f},
                             {0.0257f, -0.001f, 100000.0f}};
        fake.depthToColor = {{9.0f, 8.0f, 7.0f, 6.0f, 5.0f, 4.0f, 3.0f, 2.0f, 1.0f},
                             {-0.0257f, 0.00123456789f, -4.0f}};
        fake.colorIntrinsics.fx = 1383.12345f;
        fake.colorIntrinsics.fy = 1384.0f;
        fake.colorIntrinsics.ppx = 959.5f;
        fake.colorIntrinsics.ppy = 539.25f;
        fake.depthIntrinsics.fx = 475.0f;
        fake.depthIntrinsics.fy = 474.5f;
        fake.depthIntrinsics.ppx = 319.5f;
        fake.depthIntrinsics.ppy = 239.5f;
        unsigned int width = 640;
        unsigned int height = 480;
        json11::Json none;
        camera.init(width, height, width, height, 30, none);
        fake.takeCalls();
    }

    FakeRealsense& fake = FakeRealsense::get();
    support::LogCapture log;
    QVR::hardwareCamera camera;
};

const char* const expectedText = R"({
"colorToDepthExtrinsics4x4": {
        "rXX": 1,
    "rYX": 0.5,
    "rZX": -0.25,
    "m03": 0.0,
    "rXY": 0.125,     "rYY": 1e-07,     "rZY": 2,     "m13": 0.0,
    "rXZ": 3,     "rYZ": 1.23457e+06,     "rZZ": 0,     "m23": 0.0,
    "tX": 0.0257,     "tY": -0.001,     "tZ": 100000,
    "m33": 1.0
},
"colorIntrinsics": {"focalLengthX":1383.12, "focalLengthY":1384, "centerOffsetX":959.5, "centerOffsetY":539.25},
"depthToColorExtrinsics4x4": {
        "rXX": 9,
    "rYX": 8,
    "rZX": 7,
    "m03": 0.0,
    "rXY": 6,     "rYY": 5,     "rZY": 4,     "m13": 0.0,
    "rXZ": 3,     "rYZ": 2,     "rZZ": 1,     "m23": 0.0,
    "tX": -0.0257,     "tY": 0.00123457,     "tZ": -4,
    "m33": 1.0
},
"depthIntrinsics": {"focalLengthX":475, "focalLengthY":474.5, "centerOffsetX":319.5, "centerOffsetY":239.5}
})";

struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(CameraInfo, IsThisTextToTheBlank) {
    EXPECT_EQ(camera.getCameraInfo(), expectedText);
}

TEST_F(CameraInfo, AsksColourToDepthFirst) {
    camera.getCameraInfo();
    EXPECT_THAT(fake.takeCalls(), ElementsAre("rs_get_device_extrinsics(device, 1, 0)",
                                              "rs_get_stream_intrinsics(device, 1)",
                                              "rs_get_device_extrinsics(device, 0, 1)",
                                              "rs_get_stream_intrinsics(device, 0)"));
}

TEST_F(CameraInfo, ParsesAsAnObjectWithFourKeys) {
    std::string error = "noError";
    const json11::Json info = json11::Json::parse(camera.getCameraInfo(), error);
    EXPECT_EQ(error, "noError");
    EXPECT_EQ(info.object_items().size(), 4U);
    for (const char* key : {"colorToDepthExtrinsics4x4", "depthToColorExtrinsics4x4"}) {
        ASSERT_TRUE(info[key].is_object());
        EXPECT_EQ(info[key].object_items().size(), 16U);
        EXPECT_EQ(info[key]["m33"].number_value(), 1.0);
        for (const char* zero : {"m03", "m13", "m23"}) {
            EXPECT_TRUE(info[key][zero].is_number());
            EXPECT_EQ(info[key][zero].number_value(), 0.0);
        }
    }
    EXPECT_EQ(info["colorIntrinsics"].object_items().size(), 4U);
    EXPECT_EQ(info["depthIntrinsics"].object_items().size(), 4U);
}

TEST_F(CameraInfo, IsTheSameUnderAHostsLocale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    const std::string text = camera.getCameraInfo();
    std::locale::global(before);
    EXPECT_EQ(text, expectedText);
}

TEST_F(CameraInfo, ErrorsGoToTheCaller) {
    for (const char* function : {"rs_get_device_extrinsics", "rs_get_stream_intrinsics"}) {
        for (int occurrence : {1, 2}) {
            fake.failAt(function, occurrence);
            EXPECT_THROW(camera.getCameraInfo(), rs::error) << function << occurrence;
        }
    }
}

TEST_F(CameraInfo, NeedsADevice) {
    QVR::hardwareCamera closed;
    EXPECT_THROW(closed.getCameraInfo(), rs::error);
}

} // namespace
