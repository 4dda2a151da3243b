// A line that tells how far a long job is.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

namespace programs {

class ProgressBar {
  public:
    // Draws on `terminal`; on null, which is for output that no one watches, nothing is drawn.
    ProgressBar(std::FILE* terminal, std::size_t steps);
    ~ProgressBar(); // takes the line away
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void label(const std::string& text) { label_ = text; }
    void step();

  private:
    using Clock = std::chrono::steady_clock;

    std::FILE* terminal_;
    std::size_t steps_;
    std::size_t done_ = 0;
    std::string label_;
    Clock::time_point drawn_;
};

// Standard error when that is a terminal, else null.
std::FILE* watchedTerminal();

} // namespace programs
