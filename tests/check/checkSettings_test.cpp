// The check as hosts call it.
#include "client/plugin.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<std::string>& lines() {
    static std::vector<std::string> collected;
    return collected;
}

void collect(const char* line) {
    lines().emplace_back(line);
}

} // namespace

TEST(CheckSettings, CountsWhatItReports) {
    const support::TemporaryFolder folder;
    folder.write("QVR_calibration/touch_client.json", R"({"port": 0})");
    lines().clear();
    EXPECT_EQ(checkSettings(folder.path().c_str(), false, &collect), 4);
    ASSERT_EQ(lines().size(), 6U);
    EXPECT_EQ(lines().back(), folder.path() + ": 4 settings to mend");
}

TEST(CheckSettings, ChecksForTheRoleThatIsAsked) {
    const support::TemporaryFolder folder;
    folder.write("QVR_calibration/touch_client.json", "{}");
    lines().clear();
    EXPECT_EQ(checkSettings(folder.path().c_str(), true, &collect), 1);
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("touch.json: found no such file"),
                                     HasSubstr("touch_projectionMap.json: note:"),
                                     HasSubstr("touch_client.json: note: read by hosts only"),
                                     HasSubstr(": 1 setting to mend")));
}

TEST(CheckSettings, SaysWhyItCannotCheck) {
    const support::LogCapture log;
    EXPECT_EQ(checkSettings(nullptr, false, &collect), -1);
    EXPECT_EQ(checkSettings("/", false, nullptr), -1);
    const std::string reason =
        "ERROR: checkSettings() failed: no folder or no function to report to";
    EXPECT_THAT(support::LogCapture::messages(), ElementsAre(reason, reason));
}

TEST(CheckSettings, KeepsExceptionsOfTheHostAwayFromTheHost) {
    const support::TemporaryFolder folder;
    const support::LogCapture log;
    EXPECT_EQ(checkSettings(folder.path().c_str(), false,
                            [](const char*) { throw std::runtime_error("no paper"); }),
              -1);
    EXPECT_EQ(checkSettings(folder.path().c_str(), false, [](const char*) { throw 7; }), -1);
    EXPECT_THAT(support::LogCapture::messages(),
                ElementsAre("ERROR: checkSettings() failed: no paper",
                            "ERROR: checkSettings() failed: unknown exception"));
}

TEST(CheckSettings, SurvivesALogThatThrows) {
    QVR::Logger::RegisterDebugCallback([](const char*) { throw 7; });
    EXPECT_EQ(checkSettings(nullptr, false, &collect), -1);
    QVR::Logger::RegisterDebugCallback(nullptr);
}
