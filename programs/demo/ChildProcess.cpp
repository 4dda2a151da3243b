#include "demo/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// Only some systems declare it.
extern char** environ; // NOLINT(readability-redundant-declaration)

namespace demo {

namespace {

constexpr auto graceTime = std::chrono::seconds(3);
constexpr auto pollTime = std::chrono::milliseconds(10);

std::vector<std::string> environmentWith(const std::vector<std::string>& changes) {
    std::vector<std::string> result = changes;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string_view name = text.substr(0, text.find('=') + 1);
        bool replaced = false;
        for (const std::string& change : changes) {
            replaced = replaced || std::string_view(change).substr(0, name.size()) == name;
        }
        if (!replaced) {
            result.emplace_back(text);
        }
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Signals as a program expects them at its start, and a group of its own.
void setAttributes(posix_spawnattr_t& attributes) {
    sigset_t none;
    sigemptyset(&none);
    sigset_t usual;
    sigemptyset(&usual);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        sigaddset(&usual, signal);
    }
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(
        &attributes,
        static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
}

} // namespace

std::string Ending::describe() const {
    return (bySignal ? "signal " : "exit code ") + std::to_string(code);
}

ChildProcess::ChildProcess(const Command& command) {
    std::vector<std::string> arguments = command.arguments;
    arguments.insert(arguments.begin(), command.program);
    std::vector<std::string> environment = environmentWith(command.environment);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, command.outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    setAttributes(attributes);

    const int failure = posix_spawn(&process_, command.program.c_str(), &actions, &attributes,
                                    pointersTo(arguments).data(), pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + command.program + ": " + std::strerror(failure));
    }
}

ChildProcess::~ChildProcess() {
    end();
}

std::optional<Ending> ChildProcess::ending() {
    if (!ending_) {
        int status = 0;
        if (waitpid(process_, &status, WNOHANG) == process_) {
            ending_ = WIFSIGNALED(status) ? Ending{true, WTERMSIG(status)}
                                          : Ending{false, WEXITSTATUS(status)};
        }
    }
    return ending_;
}

Ending ChildProcess::end() {
    for (const int signal : {SIGTERM, SIGKILL}) {
        if (ending()) {
            break;
        }
        kill(process_, signal);
        const auto patience = std::chrono::steady_clock::now() + graceTime;
        while (!ending() && std::chrono::steady_clock::now() < patience) {
            std::this_thread::sleep_for(pollTime);
        }
    }
    return ending_.value_or(Ending{true, SIGKILL});
}

} // namespace demo
