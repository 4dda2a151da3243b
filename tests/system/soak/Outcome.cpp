#include "system/soak/Outcome.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <numeric>

namespace soak {

void print(const Outcome& outcome) {
    const auto& manners = outcome.manners;
    const Verdict& verdict = outcome.verdict;
    std::printf("  camera frames    %zu, %.1f a second, with %" PRIu64 " touches\n",
                outcome.cameraFrames, static_cast<double>(outcome.cameraFrames) / outcome.seconds,
                outcome.touches);
    std::printf("  visits           %" PRIu64 ": %" PRIu64 " read, %" PRIu64
                " read slowly, %" PRIu64 " broke off in a frame, %" PRIu64
                " left at once,\n                   %" PRIu64 " talked, %" PRIu64
                " stopped reading, %" PRIu64 " reset\n",
                std::accumulate(manners.begin(), manners.end(), std::uint64_t{0}), manners[0],
                manners[1], manners[2], manners[3], manners[4], manners[5], manners[6]);
    std::printf("  frames received  %" PRIu64
                ", %.2f GB, as the camera saw them, with its touches\n"
                "                   %" PRIu64 " in a silence of the camera, %" PRIu64
                " torn, %" PRIu64 " out of order, %" PRIu64 " with other touches\n",
                verdict.good, static_cast<double>(outcome.bytes) / 1e9, verdict.withoutCamera,
                verdict.torn, verdict.outOfOrder, verdict.wrongTouches);
    std::printf("  memory           %.1f MiB before the first client; with nobody there:",
                outcome.atStart.residentMiB);
    for (const Vitals& vitals : outcome.inQuiet)
        std::printf(" %.1f", vitals.residentMiB);
    std::printf("\n  descriptors      %zu before the first client; with nobody there:",
                outcome.atStart.descriptors);
    for (const Vitals& vitals : outcome.inQuiet)
        std::printf(" %zu", vitals.descriptors);
    std::printf("\n");
}

std::vector<std::string> problems(const Outcome& outcome, double growth) {
    std::vector<std::string> found = outcome.complaints;
    const auto expect = [&](bool holds, const std::string& otherwise) {
        if (!holds)
            found.push_back(otherwise);
    };
    expect(outcome.exitCode == 0, "the server did not end cleanly: " + outcome.serverErrors);
    expect(outcome.inQuiet.size() == looksAtServer, "the server ended by itself");
    expect(outcome.verdict.isFine(), "clients got what the camera did not see");
    expect(outcome.verdict.good > 0, "no frame was received");
    expect(outcome.touches > 0, "the scene had no touches");
    expect(outcome.logDifferences == 0, "the server's log has other touches in " +
                                            std::to_string(outcome.logDifferences) + " frames");
    const auto always = [&](auto holds) {
        return std::all_of(outcome.inQuiet.begin(), outcome.inQuiet.end(), holds);
    };
    // Its buffers are there from the first client on.
    expect(always([&](const Vitals& vitals) {
               return vitals.residentMiB <= outcome.inQuiet[0].residentMiB + growth;
           }),
           "the server's memory has grown");
    expect(always([&](const Vitals& vitals) {
               return vitals.descriptors == outcome.atStart.descriptors;
           }),
           "descriptors were left open");
    return found;
}

} // namespace soak
