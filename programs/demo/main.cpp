// qvr-demo: camera server and host together, judged against the truth of the simulated scene.

#include "common/executablePath.h"
#include "demo/DemoRun.h"
#include "demo/Findings.h"
#include "demo/Options.h"
#include "demo/Summary.h"
#include "demo/TouchRecords.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

namespace {

int fail(const std::string& reason) {
    std::fprintf(stderr, "The demo failed: %s.\n", reason.c_str());
    return demo::exitFailed;
}

// Pictures of an earlier run must not pass for those of this one.
void removeOldPictures(const std::filesystem::path& folder) {
    for (const char* name : {"touches.png", "depth.png", "processed.png", "color.png"}) {
        std::error_code ignored;
        std::filesystem::remove(folder / name, ignored);
    }
}

int run(const demo::Options& options) {
    std::printf("QVR touch demo: camera server and host on \"%s\" for %g seconds ...\n",
                options.camera.c_str(), options.seconds);
    std::fflush(stdout);
    removeOldPictures(options.pictures);
    demo::DemoRun programs(options);
    const std::string problem = programs.run();
    if (options.verbose || !problem.empty()) {
        std::printf("%s", programs.outputs().c_str());
        std::fflush(stdout);
    }
    if (!problem.empty()) {
        return fail(problem);
    }

    const auto host = demo::readHostLog(programs.hostLog());
    const auto server = demo::readServerLog(programs.serverLog());
    const demo::Findings findings = demo::judge(host.frames, server.frames);
    std::vector<std::string> problems = demo::problemsOf(findings, options.tolerance);
    if (host.unreadableLines + server.unreadableLines > 0) {
        problems.emplace_back("a touch log cannot be read");
    }
    std::printf("\n%s", demo::figuresText(findings, options.tolerance).c_str());
    std::printf("\nPictures:\n%s\n", demo::picturesText(options.pictures.string()).c_str());
    std::fflush(stdout);
    if (!problems.empty()) {
        std::string reasons;
        for (const std::string& each : problems) {
            reasons += (reasons.empty() ? "" : "; ") + each;
        }
        return fail(reasons);
    }
    std::printf("All is well.\n");
    return demo::exitFine;
}

} // namespace

int main(int argc, char** argv) {
    demo::Options options;
    const auto programFolder = programs::executablePath().parent_path();
    if (const std::optional<int> code = demo::parseOptions(argc, argv, programFolder, options)) {
        return *code;
    }
    try {
        return run(options);
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
