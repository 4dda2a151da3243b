#include "StatusLine.h"

#include "Broadcaster.h"

#include <cinttypes>
#include <cstdio>

namespace server {

namespace {

constexpr std::size_t touchSlots = 10;

} // namespace

StatusLine::StatusLine(std::optional<std::chrono::duration<double>> interval)
    : interval_(interval), since_(Clock::now()) {}

void StatusLine::countFrame(const QVR::NetworkTouch* records) {
    ++frames_;
    touches_ = 0;
    for (std::size_t i = 0; i < touchSlots; ++i)
        touches_ += records[i].active == 1 ? 1U : 0U;
}

void StatusLine::printWhenDue(const BroadcasterCounters& counters) {
    const Clock::time_point now = Clock::now();
    const std::chrono::duration<double> elapsed = now - since_;
    if (!interval_ || elapsed < *interval_)
        return;
    const std::uint64_t skipped = counters.skippedFrames;
    std::printf("stats: %.1f frames/s, %zu clients, %" PRIu64 " frames skipped by slow clients, "
                "%" PRIu64 " left out, %zu touches\n",
                static_cast<double>(frames_) / elapsed.count(), counters.clients.load(),
                skipped - skippedBefore_, leftOut_, touches_);
    std::fflush(stdout);
    since_ = now;
    frames_ = 0;
    leftOut_ = 0;
    skippedBefore_ = skipped;
}

} // namespace server
