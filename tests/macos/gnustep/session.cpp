// Runs a program that uses GNUstep's AppKit, apart from the user's own GNUstep:
//
//     gnustep_session PROGRAM [ARGUMENT...]
//
// GNUstep keeps settings and services in ~/GNUstep and, with the first NSWorkspace, starts a daemon
// (gdnc) that outlives the program. Here the folders are temporary ones, the daemon is one of this
// run alone, and whatever the program leaves running is ended by its process id. Exits as the
// program does, with 128 and the signal's number added when a signal ended it.
//
// All of it has to be in place before the program is loaded: GNUstep copies the environment then.
#include "support/TemporaryFolder.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void keepApart(const support::TemporaryFolder& folder) {
    const std::string configuration = folder.write(
        "GNUstep.conf", "GNUSTEP_USER_CONFIG_FILE=" + folder.file("none.conf") +
                            "\nGNUSTEP_USER_DEFAULTS_DIR=" + folder.file("Defaults") +
                            "\nGNUSTEP_USER_DIR_LIBRARY=" + folder.file("Library") + "\n");
    setenv("GNUSTEP_CONFIG_FILE", configuration.c_str(), 1);
    // The daemon's meeting point; a test's own temporary files stay where TMPDIR says.
    setenv("TEMP", folder.path().c_str(), 1);
}

[[noreturn]] void become(char** command) {
    // A session that is killed takes its program along.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(127);
}

int codeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A daemon's parents are gone, which makes it a child of ours; more may follow while it ends.
void endWhatIsLeft() {
    const std::string list = "/proc/self/task/" + std::to_string(gettid()) + "/children";
    do {
        std::ifstream children(list);
        pid_t child = 0;
        while (children >> child) {
            kill(child, SIGKILL);
        }
    } while (wait(nullptr) > 0);
}

int run(char** command) {
    const support::TemporaryFolder folder;
    keepApart(folder);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const pid_t program = fork();
    if (program == 0) {
        become(command);
    }
    int status = 0;
    if (program < 0 || waitpid(program, &status, 0) != program) {
        std::perror("gnustep_session");
        return 126;
    }
    endWhatIsLeft();
    return codeOf(status);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: gnustep_session PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    try {
        return run(argv + 1);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "gnustep_session: %s\n", failure.what());
        return 126;
    }
}
