// Why an evaluation cannot go on, with the exit code that says so.
#pragma once

#include <stdexcept>
#include <string>

namespace evaluate {

enum ExitCode {
    exitFine = 0,
    exitFailed = 1,      // a file cannot be written, the pipeline stopped
    exitBadOption = 2,   // an option, a scene's name or a folder of images is wrong
    exitBadSettings = 3, // the settings cannot be read or find no fingers
    exitGoalMissed = 4,  // with --strict only
};

class EvaluationError : public std::runtime_error {
  public:
    EvaluationError(ExitCode code, const std::string& message)
        : std::runtime_error(message), code_(code) {}

    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

} // namespace evaluate
