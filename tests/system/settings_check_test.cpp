// qvr-server and qvr-host explaining settings, as a user runs them.
#include "demo/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

struct Ending {
    int code = -1;
    std::string output;
};

class SettingsCheckPrograms : public testing::TestWithParam<const char*> {
  protected:
    // Runs the program to its end.
    Ending check(const std::string& checked) const {
        const std::string outputFile = folder.file("output");
        demo::ChildProcess child({GetParam(), {"--check", checked}, {}, outputFile});
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!child.ending() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        std::stringstream output;
        output << std::ifstream(outputFile).rdbuf();
        return child.ending() && !child.ending()->bySignal
                   ? Ending{child.ending()->code, output.str()}
                   : Ending{-1, output.str()};
    }

    const support::TemporaryFolder folder;
};

TEST_P(SettingsCheckPrograms, AreContentWithTheSimulatedExample) {
    const Ending ending = check(EXAMPLES "/simulated");
    EXPECT_EQ(ending.code, 0) << ending.output;
    EXPECT_THAT(ending.output, EndsWith("simulated: nothing to mend\n"));
}

TEST_P(SettingsCheckPrograms, EndWithOneWhenThereIsSomethingToMend) {
    std::filesystem::copy(EXAMPLES "/simulated", folder.file("volume"),
                          std::filesystem::copy_options::recursive);
    folder.write("volume/QVR_calibration/touch.json", "{\"depthResX\": 640,\n}");
    const Ending ending = check(folder.file("volume"));
    EXPECT_EQ(ending.code, 1) << ending.output;
    EXPECT_THAT(ending.output, HasSubstr("QVR_calibration/touch.json: found no JSON, parse error "
                                         "at line 2"));
    EXPECT_THAT(ending.output, EndsWith("volume: 1 setting to mend\n"));
}

TEST_P(SettingsCheckPrograms, RefuseWhatIsNoFolder) {
    const Ending ending = check(folder.file("nowhere"));
    EXPECT_EQ(ending.code, 2);
    EXPECT_THAT(ending.output, HasSubstr("nowhere' is no folder"));
}

INSTANTIATE_TEST_SUITE_P(, SettingsCheckPrograms, testing::Values(SERVER_PROGRAM, HOST_PROGRAM),
                         [](const testing::TestParamInfo<const char*>& program) {
                             return program.index == 0 ? "Server" : "Host";
                         });

} // namespace
