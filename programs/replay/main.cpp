// qvr-replay: whether the pipeline finds in a recording what it found when that was made.

#include "common/ProgressBar.h"
#include "foundation/Logger.h"
#include "recording/RecordedFrames.h"
#include "replay/Options.h"
#include "replay/Verification.h"
#include "server/ServerLog.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <unistd.h>

namespace {

using namespace replay;

void print(const Result& result, const Options& options, const std::string& form, bool torn) {
    std::printf("%s: %zu %s played with form %s\n", options.folder.c_str(), result.verified,
                result.verified == 1 ? "frame" : "frames", form.c_str());
    if (result.gaps != 0) {
        std::printf("  %" PRIu64 " more were not recorded, in %zu places; behind each, the "
                    "tracking was set to what is recorded of it\n",
                    result.missing, result.gaps);
    }
    if (torn) {
        std::printf("  the last line is not whole, as when recording was interrupted; it is "
                    "ignored\n");
    }
    if (!result.difference) {
        std::printf("  the touches are those recorded, bit for bit\n");
        return;
    }
    const recording::TouchDifference& difference = *result.difference;
    std::printf("  frame %" PRIu64 ", touch %zu, %s: recorded %s, now %s\n", result.frame,
                difference.slot, difference.field.c_str(), difference.recorded.c_str(),
                difference.got.c_str());
}

int run(const Options& options) {
    QVR::Logger::RegisterDebugCallback(&server::ServerLog::receivePipelineMessage);
    server::ServerLog::setPipelineQuiet(true);
    if (!options.form.empty()) {
        ::setenv("QVR_DETECTION_KERNELS", options.form.c_str(), 1);
    }
    // Inside the folder no character of its name can be taken for something else.
    if (::chdir(options.folder.c_str()) != 0) {
        std::fprintf(stderr, "qvr-replay: %s: %s\n", options.folder.c_str(), std::strerror(errno));
        return exitOther;
    }
    recording::RecordedFrames frames(".");
    Verification verification(frames);
    if (!options.form.empty() && verification.form() != options.form) {
        std::fprintf(stderr, "qvr-replay: this processor lacks form %s\n", options.form.c_str());
        return exitBadOption;
    }
    Result result;
    {
        programs::ProgressBar bar(programs::watchedTerminal(), frames.count());
        result = verification.run([&bar] { bar.step(); });
    }
    print(result, options, verification.form(), frames.torn());
    return result.difference ? exitOther : exitSame;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (const std::optional<int> code = parseOptions(argc, argv, options)) {
        return *code;
    }
    try {
        return run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qvr-replay: %s: %s\n", options.folder.c_str(), error.what());
        return exitOther;
    }
}
