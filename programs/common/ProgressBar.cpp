#include "common/ProgressBar.h"

#include <algorithm>

#include <unistd.h>

namespace programs {

namespace {

constexpr std::size_t width = 30;
constexpr auto drawingPeriod = std::chrono::milliseconds(100);

} // namespace

ProgressBar::ProgressBar(std::FILE* terminal, std::size_t steps)
    : terminal_(terminal), steps_(std::max<std::size_t>(1, steps)) {}

ProgressBar::~ProgressBar() {
    if (terminal_ != nullptr) {
        std::fputs("\r\033[K", terminal_);
        std::fflush(terminal_);
    }
}

void ProgressBar::step() {
    done_ = std::min(done_ + 1, steps_);
    const Clock::time_point now = Clock::now();
    if (terminal_ == nullptr || now - drawn_ < drawingPeriod) {
        return;
    }
    drawn_ = now;
    const std::size_t filled = width * done_ / steps_;
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    std::fprintf(terminal_, "\r[%s] %3zu %%  %s\033[K", bar.c_str(), 100 * done_ / steps_,
                 label_.c_str());
    std::fflush(terminal_);
}

std::FILE* watchedTerminal() {
    return isatty(STDERR_FILENO) != 0 ? stderr : nullptr;
}

} // namespace programs
