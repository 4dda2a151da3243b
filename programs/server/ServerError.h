// Why the server cannot go on, in words for the person at the terminal, and its exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace server {

enum ExitCode {
    exitFine = 0,
    exitUnexpected = 1,
    exitBadOption = 2,
    exitCannotListen = 3,
    exitNoCamera = 4,
    exitBadSettings = 5,
    exitBadCameraSource = 6
};

class ServerError : public std::runtime_error {
  public:
    ServerError(ExitCode code, const std::string& message)
        : std::runtime_error(message), code_(code) {}

    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

} // namespace server
