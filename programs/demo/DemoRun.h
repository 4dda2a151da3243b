// Runs the camera server and the host beside each other.
#pragma once

#include "demo/ChildProcess.h"
#include "demo/Options.h"
#include "demo/Workspace.h"

#include <memory>
#include <string>

namespace demo {

// Both programs are ended with the object, whatever happened before. Every wait is bounded, and
// ends early when the user interrupts.
class DemoRun {
  public:
    // Throws std::runtime_error with a reason for the user when something cannot be started.
    explicit DemoRun(const Options& options);

    // Runs until the host has ended by itself. Returns an empty text, or what went wrong.
    std::string run();

    std::string serverLog() const { return workspace_.file("server.jsonl"); }
    std::string hostLog() const { return workspace_.file("host.jsonl"); }
    // What the two programs wrote.
    std::string outputs() const;

  private:
    std::string startServer();
    std::string waitForHost();
    std::string listeningAddress() const;

    const Options& options_;
    Workspace workspace_;
    std::string environment_;
    std::string address_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> host_;
};

} // namespace demo
