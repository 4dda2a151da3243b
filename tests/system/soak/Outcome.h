// What a soak has shown: as a report for people, and as what is wrong.
#pragma once

#include "system/soak/Verdict.h"
#include "system/soak/Visitor.h"
#include "system/soak/Vitals.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace soak {

constexpr int looksAtServer = 6; // while nobody is there

struct Outcome {
    double seconds = 0.0;
    Vitals atStart;              // before the first client
    std::vector<Vitals> inQuiet; // while nobody was there
    std::optional<int> exitCode; // of the server
    std::string serverErrors;

    std::size_t cameraFrames = 0;
    std::uint64_t touches = 0;        // in these
    std::uint64_t logDifferences = 0; // frames with other touches in the server's log

    Verdict verdict;
    std::array<std::uint64_t, mannerCount> manners{};
    std::uint64_t bytes = 0;
    std::vector<std::string> complaints; // of clients
};

void print(const Outcome& outcome);

// Everything that should not be. `growth`: MiB by which the server's memory may vary.
std::vector<std::string> problems(const Outcome& outcome, double growth);

} // namespace soak
