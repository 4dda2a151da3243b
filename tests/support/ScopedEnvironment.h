// An environment variable with a value of the test's own while this lives.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class ScopedEnvironment {
  public:
    // Null unsets the variable.
    ScopedEnvironment(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        assign(value);
    }
    ~ScopedEnvironment() { assign(before_ ? before_->c_str() : nullptr); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    void assign(const char* value) const {
        if (value != nullptr) {
            setenv(name_.c_str(), value, 1);
        } else {
            unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> before_;
};

} // namespace support
