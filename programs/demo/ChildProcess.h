// A program that the demo starts, watches and ends.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace demo {

struct Command {
    std::string program;
    std::vector<std::string> arguments;
    std::vector<std::string> environment; // "NAME=value", in place of what the demo has
    std::string outputFile;               // takes standard output and standard error
};

// How a child ended.
struct Ending {
    bool bySignal = false;
    int code = 0; // the exit code or the signal's number

    std::string describe() const; // "exit code 3" or "signal 9"
};

// The child has a process group of its own, so that Ctrl-C reaches the demo alone, which then ends
// its children in good order. Only this child is ever signalled, by its process id.
class ChildProcess {
  public:
    // Throws std::runtime_error when the program cannot be started.
    explicit ChildProcess(const Command& command);
    ~ChildProcess(); // ends the child
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const { return process_; }
    // How it ended, or nothing while it runs. Does not wait.
    std::optional<Ending> ending();
    // Asks it to end, waits a little, then makes it end.
    Ending end();

  private:
    pid_t process_ = -1;
    std::optional<Ending> ending_;
};

} // namespace demo
