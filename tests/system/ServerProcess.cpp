#include "system/ServerProcess.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto patience = 60s;

std::string content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void redirect(const std::string& path, int descriptor) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ::dup2(file, descriptor) < 0)
        std::_Exit(126);
    ::close(file);
}

} // namespace

ServerProcess::ServerProcess(const std::string& volume, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {QVR_SERVER_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    pid_ = ::fork();
    if (pid_ < 0)
        throw std::runtime_error("cannot fork");
    if (pid_ == 0) {
        redirect(folder_.path() + "/out", STDOUT_FILENO);
        redirect(folder_.path() + "/err", STDERR_FILENO);
        ::setenv("QVR_VOLUMES", volume.c_str(), 1);
        ::unsetenv("QVR_CAMERA");
        ::execv(argv[0], argv.data());
        std::_Exit(127);
    }
}

ServerProcess::~ServerProcess() {
    if (running()) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

bool ServerProcess::running() {
    if (status_)
        return false;
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) != pid_)
        return true;
    status_ = status;
    return false;
}

std::uint16_t ServerProcess::waitForPort() {
    const std::string line = "listening on ";
    const auto end = Clock::now() + patience;
    while (Clock::now() < end && running()) {
        const std::string said = output();
        const std::size_t place = said.find(line);
        const std::size_t lineEnd = said.find('\n', place);
        if (place != std::string::npos && lineEnd != std::string::npos)
            return static_cast<std::uint16_t>(std::stoi(said.substr(said.rfind(':', lineEnd) + 1)));
        std::this_thread::sleep_for(5ms);
    }
    throw std::runtime_error("the server does not listen; it said: " + output() + errors());
}

void ServerProcess::signal(int number) const {
    ::kill(pid_, number);
}

std::optional<int> ServerProcess::waitForEnd() {
    const auto end = Clock::now() + patience;
    while (running()) {
        if (Clock::now() > end)
            return std::nullopt;
        std::this_thread::sleep_for(2ms);
    }
    return WIFEXITED(*status_) ? std::optional(WEXITSTATUS(*status_)) : std::nullopt;
}

bool ServerProcess::endedBy(int signal) {
    return !running() && WIFSIGNALED(*status_) && WTERMSIG(*status_) == signal;
}

std::string ServerProcess::output() const {
    return content(folder_.path() + "/out");
}

std::string ServerProcess::errors() const {
    return content(folder_.path() + "/err");
}

} // namespace support
