#include "demo/Options.h"

#include "common/exampleSettings.h"

#include <cstdio>

#include <CLI/CLI.hpp>

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr const char* about =
    "Shows the whole way of a touch: starts a camera server and a host on a private folder of\n"
    "settings, lets them run for a few seconds, and says what the host saw and how far it was off.";

constexpr const char* exitCodes =
    "Exit codes:\n"
    "  0  everything was found where it is\n"
    "  1  something is missing or off, or a program could not be run; the reason is printed\n"
    "  2  an option is wrong";

fs::path defaultPictures(const fs::path& programFolder) {
    const fs::path build = programFolder.parent_path();
    std::error_code ignored;
    return fs::exists(build / "CMakeCache.txt", ignored) ? build / "demo"
                                                         : fs::path("qvr-demo-pictures");
}

bool isImageFolder(const std::string& camera) {
    return camera.rfind("images:", 0) == 0;
}

} // namespace

std::string sourceFor(const std::string& camera) {
    const bool asGiven = !isImageFolder(camera) || camera.find(",hold=") != std::string::npos;
    return asGiven ? camera : camera + ",hold=20";
}

fs::path examplesFor(const std::string& camera, const fs::path& programFolder) {
    return programs::exampleSettings(isImageFolder(camera) ? "hand" : "simulated", programFolder);
}

std::optional<int> parseOptions(int argc, char** argv, const fs::path& programFolder,
                                Options& options) {
    options.server = programFolder / "qvr-server";
    options.host = programFolder / "qvr-host";
    options.pictures = defaultPictures(programFolder);

    CLI::App app(about, "qvr-demo");
    app.footer(exitCodes);
    app.set_version_flag("--version", "qvr-demo " QVR_VERSION);
    app.get_formatter()->column_width(28);
    app.add_option("--camera", options.camera,
                   "where depth pictures come from: simulated, images:DIR, ...")
        ->type_name("URI")
        ->capture_default_str();
    app.add_option("--seconds", options.seconds, "how long to watch, 1 to 3600")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1.0, 3600.0).description(""));
    app.add_option("--tolerance", options.tolerance,
                   "how far touches may be off on average, in millimetres")
        ->type_name("MM")
        ->capture_default_str()
        ->check(CLI::PositiveNumber.description(""));
    app.add_option("--examples", options.examples, "the folder with the settings documents to use")
        ->type_name("DIR");
    app.add_option("--save", options.pictures, "where the pictures go")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--server-program", options.server, "the qvr-server to run")->type_name("FILE");
    app.add_option("--host-program", options.host, "the qvr-host to run")->type_name("FILE");
    app.add_option("--plugin", options.plugin, "the plug-in that the host loads")
        ->type_name("FILE");
    app.add_flag("--verbose", options.verbose, "print what the two programs wrote as well");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success); // help or version
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "qvr-demo: %s; see qvr-demo --help\n", error.what());
        return exitBadOption;
    }
    if (options.examples.empty()) {
        options.examples = examplesFor(options.camera, programFolder);
    }
    return std::nullopt;
}

} // namespace demo
