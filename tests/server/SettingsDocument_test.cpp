#include "ServerError.h"
#include "SettingsDocument.h"
#include "support/TemporaryVolume.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using server::SettingsDocument;

namespace {

constexpr const char* file = "QVR_calibration/touch.json";

std::string problem() {
    try {
        SettingsDocument::read();
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), server::exitBadSettings);
        return error.what();
    }
    return "";
}

} // namespace

TEST(SettingsDocument, IsReadFromTheCalibrationFolder) {
    const support::TemporaryVolume volume;
    volume.write(file, R"({"downsampleDepthX": 320})");
    const SettingsDocument document = SettingsDocument::read();
    EXPECT_EQ(document.path, volume.path(file));
    EXPECT_EQ(document.value["downsampleDepthX"].number_value(), 320.0);
}

TEST(SettingsDocument, MayBeMissingOrEmpty) {
    const support::TemporaryVolume volume;
    EXPECT_TRUE(SettingsDocument::read().value.is_null());
    volume.write(file, "");
    EXPECT_TRUE(SettingsDocument::read().value.is_null());
}

TEST(SettingsDocument, MustBeJson) {
    const support::TemporaryVolume volume;
    volume.write(file, R"({"streaming": {"color": tru)");
    EXPECT_THAT(problem(), testing::StartsWith(volume.path(file) + " is not valid JSON: "));
}

TEST(SettingsDocument, MustBeAnObject) {
    const support::TemporaryVolume volume;
    volume.write(file, "[1, 2]");
    EXPECT_EQ(problem(), volume.path(file) + " holds no JSON object");
}
