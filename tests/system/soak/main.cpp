// The camera server for a while under clients that come and go as they like: nothing it holds may
// grow, and every frame that anybody gets must be one that the camera saw.
#include "foundation/Logger.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"
#include "system/ServerProcess.h"
#include "system/soak/Outcome.h"
#include "system/soak/Reference.h"
#include "system/soak/Turnstile.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

using namespace std::chrono_literals;
using namespace soak;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

namespace {

struct Plan {
    double seconds = 60.0;
    unsigned clients = 8;
    std::uint32_t seed = 1;
    double growth = 4.0;
};

Plan planFrom(int argc, char** argv) {
    Plan plan;
    CLI::App app("Runs qvr-server under clients that come and go, and judges what they got.",
                 "server_soak");
    app.add_option("--seconds", plan.seconds, "How long (default: 60)")->check(CLI::PositiveNumber);
    app.add_option("--clients", plan.clients, "At most so many at a time (default: 8)")
        ->check(CLI::Range(1, 16));
    app.add_option("--seed", plan.seed, "Chooses scene and visits (default: 1)");
    app.add_option("--growth", plan.growth, "MiB by which the server may grow (default: 4)");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        std::exit(app.exit(end));
    }
    return plan;
}

// Looks at the server while nobody is there. Closed connections take it a moment to notice.
Vitals lookAt(const support::ServerProcess& server, std::size_t descriptorsAtStart) {
    Vitals vitals = vitalsOf(server.id());
    for (const auto end = Clock::now() + 60s;
         vitals.descriptors != descriptorsAtStart && Clock::now() < end;
         vitals = vitalsOf(server.id()))
        std::this_thread::sleep_for(10ms);
    return vitals;
}

void letVisitorsIn(support::ServerProcess& server, std::deque<Visitor>& visitors,
                   Outcome& outcome) {
    outcome.atStart = vitalsOf(server.id());
    Turnstile turnstile;
    std::vector<std::thread> threads;
    for (Visitor& visitor : visitors)
        threads.emplace_back([&] { visitor.run(turnstile); });
    for (int look = 0; look < looksAtServer && server.running(); ++look) {
        turnstile.openAgain();
        std::this_thread::sleep_for(Seconds(outcome.seconds / looksAtServer));
        turnstile.close();
        if (server.running())
            outcome.inQuiet.push_back(lookAt(server, outcome.atStart.descriptors));
    }
    turnstile.closeForGood();
    for (std::thread& thread : threads)
        thread.join();
}

void hearVisitors(const std::deque<Visitor>& visitors, const Reference& reference,
                  Outcome& outcome) {
    Judge judge(reference.frames(), reference.blank());
    for (const Visitor& visitor : visitors) {
        const Experience& seen = visitor.experience();
        for (const Visit& visit : seen.visits)
            judge.judge(visit);
        for (std::size_t i = 0; i < mannerCount; ++i)
            outcome.manners[i] += seen.manners[i];
        outcome.bytes += seen.bytes;
        if (!seen.complaint.empty())
            outcome.complaints.push_back("a client complains: " + seen.complaint);
        if (seen.header &&
            std::memcmp(&*seen.header, &reference.header(), sizeof(QVR::ProtocolHeader)) != 0)
            outcome.complaints.emplace_back("a client got another header");
    }
    outcome.verdict = judge.verdict();
}

Outcome soakServer(const Plan& plan) {
    const std::string volume = QVR_SOAK_VOLUME;
    const support::ScopedEnvironment volumes("QVR_VOLUMES", volume.c_str());
    const support::TemporaryFolder folder;
    const std::string log = folder.path() + "/touches.jsonl";
    server::Options options;
    options.camera = "simulated:pace=off,scene=tapping,fingers=6,seed=" + std::to_string(plan.seed);
    options.color = options.depth = options.processed = options.touch = true;
    support::ServerProcess server(volume, {"--camera", *options.camera, "--port", "0",
                                           "--keep-running", "--color", "--depth", "--processed",
                                           "--touch", "--touch-log", log, "--client-timeout",
                                           std::to_string(Turnstile::clientTimeout)});
    const std::uint16_t port = server.waitForPort();
    Reference reference(options, log);
    std::deque<Visitor> visitors;
    for (unsigned i = 0; i < plan.clients; ++i)
        visitors.emplace_back(port, plan.seed * 1000 + i);

    Outcome outcome;
    outcome.seconds = plan.seconds;
    letVisitorsIn(server, visitors, outcome);
    server.signal(SIGTERM);
    outcome.exitCode = server.waitForEnd();
    outcome.serverErrors = server.errors();
    reference.finish();
    outcome.cameraFrames = reference.frames().size();
    outcome.touches = reference.touches();
    outcome.logDifferences = reference.differences();
    hearVisitors(visitors, reference, outcome);
    return outcome;
}

} // namespace

int main(int argc, char** argv) {
    const Plan plan = planFrom(argc, argv);
    std::printf("%.0f seconds, %u clients at a time, all streams of the simulated camera, unpaced, "
                "seed %u\n",
                plan.seconds, plan.clients, plan.seed);
    std::fflush(stdout);
    QVR::Logger::RegisterDebugCallback([](const char*) {});
    try {
        const Outcome outcome = soakServer(plan);
        print(outcome);
        const std::vector<std::string> found = problems(outcome, plan.growth);
        for (const std::string& problem : found)
            std::printf("  FAILED: %s\n", problem.c_str());
        return found.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::printf("  FAILED: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
