#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>

namespace {

struct Outcome {
    std::string output;
    int code = -1;
};

Outcome runInSession(const std::string& script) {
    const std::string command = std::string(GNUSTEP_SESSION) + " sh -c '" + script + "'";
    std::FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome;
    std::array<char, 256> line{};
    while (pipe != nullptr && fgets(line.data(), line.size(), pipe) != nullptr) {
        outcome.output += line.data();
    }
    const int status = pipe != nullptr ? pclose(pipe) : -1;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

} // namespace

TEST(GnustepSession, EndsAsItsProgramDoes) {
    EXPECT_EQ(runInSession("exit 0").code, 0);
    EXPECT_EQ(runInSession("exit 3").code, 3);
    EXPECT_EQ(runInSession("kill -9 $$").code, 128 + SIGKILL);
}

TEST(GnustepSession, EndsTheDaemonsThatItsProgramLeaves) {
    // The subshell's parent is gone at once, as a daemon's is. Its output goes elsewhere, for an
    // open end of the pipe would keep the test waiting.
    const Outcome outcome = runInSession("(sleep 1000 >/dev/null & echo $!) & wait");
    const pid_t daemon = std::stoi(outcome.output);
    EXPECT_EQ(kill(daemon, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(GnustepSession, HasFoldersThatAreGoneAfterwards) {
    const Outcome outcome = runInSession("touch $TEMP/file && echo $TEMP");
    EXPECT_EQ(outcome.code, 0);
    const std::string folder = outcome.output.substr(0, outcome.output.find('\n'));
    EXPECT_FALSE(folder.empty());
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST(GnustepSession, PointsGnustepToThem) {
    const Outcome outcome = runInSession("cat $GNUSTEP_CONFIG_FILE; echo $TEMP");
    const std::size_t end = outcome.output.find('\n', outcome.output.rfind("_LIBRARY="));
    const std::string folder = outcome.output.substr(end + 1, outcome.output.size() - end - 2);
    EXPECT_EQ(outcome.output, "GNUSTEP_USER_CONFIG_FILE=" + folder +
                                  "/none.conf\nGNUSTEP_USER_DEFAULTS_DIR=" + folder +
                                  "/Defaults\nGNUSTEP_USER_DIR_LIBRARY=" + folder + "/Library\n" +
                                  folder + "\n");
}
