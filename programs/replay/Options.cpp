#include "replay/Options.h"

#include <cstdio>

#include <CLI/CLI.hpp>

namespace replay {

namespace {

constexpr const char* about =
    "Plays a recording of qvr-server --record through the camera pipeline and compares the "
    "touches\n"
    "with those that were sent, bit for bit. Prints the first difference.";

constexpr const char* explanations = "Exit codes:\n"
                                     "  0  the touches are the same\n"
                                     "  1  they are not, or the recording cannot be played\n"
                                     "  2  an option is wrong";

} // namespace

std::optional<int> parseOptions(int argc, const char* const* argv, Options& options) {
    CLI::App app(about, "qvr-replay");
    app.footer(explanations);
    app.set_version_flag("--version", "qvr-replay " QVR_VERSION);
    app.add_option("folder", options.folder, "The folder of the recording")
        ->type_name("DIR")
        ->required()
        ->check(CLI::ExistingDirectory.description(""));
    app.add_option("--form", options.form,
                   "The form of the detection, when not the fastest that this processor has: "
                   "plain, sse, avx2 or avx512")
        ->type_name("NAME")
        ->check(CLI::IsMember({"plain", "sse", "avx2", "avx512"}).description(""));
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success); // help or version
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "qvr-replay: %s; see qvr-replay --help\n", error.what());
        return exitBadOption;
    }
    return std::nullopt;
}

} // namespace replay
