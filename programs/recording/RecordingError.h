// Why a recording cannot be written or read, in words for the person at the terminal.
#pragma once

#include <stdexcept>

namespace recording {

class RecordingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace recording
