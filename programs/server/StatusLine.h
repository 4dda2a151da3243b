// The line of --stats: what the server did since the last one.
#pragma once

#include "serverClient/frameProtocol.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace server {

struct BroadcasterCounters;

class StatusLine {
  public:
    // Without an interval nothing is ever printed.
    explicit StatusLine(std::optional<std::chrono::duration<double>> interval);

    // A camera frame with its ten touch records.
    void countFrame(const QVR::NetworkTouch* records);
    // A camera frame that found no free buffer and went to nobody.
    void countLeftOut() { ++leftOut_; }

    // Prints the line on standard output when the interval is over.
    void printWhenDue(const BroadcasterCounters& counters);

  private:
    using Clock = std::chrono::steady_clock;

    std::optional<std::chrono::duration<double>> interval_;
    Clock::time_point since_;
    std::uint64_t frames_ = 0;
    std::uint64_t leftOut_ = 0;
    std::uint64_t skippedBefore_ = 0;
    std::size_t touches_ = 0;
};

} // namespace server
