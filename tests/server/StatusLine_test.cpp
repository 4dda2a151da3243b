#include "Broadcaster.h"
#include "StatusLine.h"

#include <array>
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using server::StatusLine;

namespace {

std::string printed(StatusLine& line, const server::BroadcasterCounters& counters) {
    testing::internal::CaptureStdout();
    line.printWhenDue(counters);
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(StatusLine, CountsWhatHappenedSinceTheLastOne) {
    server::BroadcasterCounters counters;
    counters.clients = 2;
    counters.skippedFrames = 5;
    StatusLine line(1ns);
    std::array<QVR::NetworkTouch, 10> records;
    records[1].active = records[9].active = 1;
    line.countFrame(records.data());
    line.countLeftOut();
    EXPECT_THAT(printed(line, counters),
                testing::MatchesRegex("stats: [0-9]+\\.[0-9] frames/s, 2 clients, 5 frames skipped "
                                      "by slow clients, 1 left out, 2 touches\n"));
    counters.skippedFrames = 7;
    records[1].active = 0;
    line.countFrame(records.data());
    EXPECT_THAT(printed(line, counters),
                testing::HasSubstr(" 2 frames skipped by slow clients, 0 left out, 1 touches\n"));
}

TEST(StatusLine, PrintsNothingBeforeItsTimeOrWithoutAny) {
    const server::BroadcasterCounters counters;
    StatusLine later(1h);
    EXPECT_EQ(printed(later, counters), "");
    StatusLine never(std::nullopt);
    EXPECT_EQ(printed(never, counters), "");
}
