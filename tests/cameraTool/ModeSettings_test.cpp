// Settings with another mode in them.
#include "cameraTool/ModeSettings.h"
#include "foundation/utils.h"
#include "server/SettingsDocument.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace cameraTool;
using QVR::utils;

class ModeSettingsTest : public testing::Test {
  protected:
    static json11::Json document() { return server::SettingsDocument::read().value; }
    static std::string projectionMap() {
        return utils::readFileContent(utils::findFilePath(utils::projectionMapFilePath));
    }

    support::TemporaryFolder volume;
    support::ScopedEnvironment volumes{"QVR_VOLUMES", volume.path().c_str()};
};

TEST_F(ModeSettingsTest, ChangeTheModeAndNothingElse) {
    volume.write("QVR_calibration/touch.json",
                 R"({"depthResX": 640, "colorResY": 480, "nearClipMeters": 0.2,
                     "streaming": {"fps": 60, "touch": false}})");
    volume.write("QVR_calibration/touch_projectionMap.json", "{\"map0\": {}}");
    {
        const ModeSettings settings({320, 240, 0, 0, 15});
        EXPECT_EQ(document()["depthResX"].int_value(), 320);
        EXPECT_EQ(document()["depthResY"].int_value(), 240);
        EXPECT_EQ(document()["colorResY"].int_value(), 480);
        EXPECT_TRUE(document()["colorResX"].is_null());
        EXPECT_EQ(document()["streaming"]["fps"].int_value(), 15);
        EXPECT_FALSE(document()["streaming"]["touch"].bool_value());
        EXPECT_EQ(document()["nearClipMeters"].number_value(), 0.2);
        EXPECT_EQ(projectionMap(), "{\"map0\": {}}");
    }
    EXPECT_EQ(document()["depthResX"].int_value(), 640);
}

TEST_F(ModeSettingsTest, AreTheUsersWhereTheModeIsOpen) {
    const std::string path = volume.write("QVR_calibration/touch.json", "{\"depthResX\": 640}");
    const ModeSettings settings({});
    EXPECT_EQ(utils::findFilePath(utils::distortionMapFilePath), path);
}

TEST_F(ModeSettingsTest, NeedNoDocument) {
    const ModeSettings settings({0, 0, 64, 48, 0});
    EXPECT_EQ(document()["colorResX"].int_value(), 64);
    EXPECT_EQ(projectionMap(), "");
}

} // namespace
