#include "host/Options.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <CLI/CLI.hpp>

namespace host {

namespace {

constexpr unsigned usualPort = 27016;

constexpr const char* about =
    "Shows the touches of a QVR touch camera server, through the plug-in that any host loads.";

constexpr const char* exitCodes =
    "On a terminal it draws the surface live: numbered marks for the touches, their positions in\n"
    "a table; q or Ctrl-C leaves. Otherwise, and with --plain, it writes a line for every change.\n"
    "\n"
    "Exit codes:\n"
    "  0  fine; with --check nothing to mend\n"
    "  1  with --check something to mend; otherwise an unexpected failure\n"
    "  2  an option is wrong\n"
    "  3  the plug-in cannot be loaded or lacks a function\n"
    "  4  with --seconds or --frames: no frame ever came (--frames alone gives up after 5 s)\n"
    "  5  the pictures or the touch log cannot be written";

} // namespace

std::optional<ServerAddress> parseServer(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    ServerAddress address{text.substr(0, colon), usualPort};
    if (colon != std::string::npos) {
        const char* begin = text.data() + colon + 1;
        const char* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(begin, end, address.port);
        if (error != std::errc() || rest != end || address.port == 0 || address.port > 65535) {
            return std::nullopt;
        }
    }
    if (address.host.empty()) {
        return std::nullopt;
    }
    return address;
}

std::optional<int> parseOptions(int argc, char** argv, Options& options) {
    CLI::App app(about, "qvr-host");
    app.footer(exitCodes);
    app.set_version_flag("--version", "qvr-host " QVR_VERSION);
    app.get_formatter()->column_width(28);

    std::string server;
    std::string surface;
    app.add_option("--plugin", options.plugin, "the plug-in to load")->type_name("FILE");
    app.add_option("--server", server, "the camera server; else touch_client.json says where")
        ->type_name("HOST:PORT")
        ->check([](const std::string& text) {
            return parseServer(text) ? std::string() : "'" + text + "' is not HOST:PORT";
        });
    app.add_option("--seconds", options.seconds, "leave after this time")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    app.add_option("--frames", options.loop.frames, "leave after this many frames")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    app.add_option("--save", options.saveFolder,
                   "save the pictures of the frame with most touches as PNG files")
        ->type_name("DIR");
    app.add_flag("--plain", options.plain, "write a line for every change");
    app.add_option("--touch-log", options.touchLog, "write every update as a line of JSON")
        ->type_name("FILE");
    app.add_option("--map", options.loop.projectionMap, "load this projection map once connected")
        ->type_name("N");
    app.add_option("--fps", options.loop.updatesPerSecond, "updates a second, at most")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--surface", surface, "the coordinates that the live picture shows")
        ->type_name("X0,Y0,X1,Y1")
        ->check([](const std::string& text) {
            return SurfaceExtents::parse(text)
                       ? std::string()
                       : "'" + text + "' is not X0,Y0,X1,Y1 with X0 < X1 and Y0 < Y1";
        });
    app.add_option("--check", options.check,
                   "say what a person should mend in the settings of this folder, and leave")
        ->type_name("DIR")
        ->check([](const std::string& text) {
            std::error_code error;
            return std::filesystem::is_directory(text, error) ? std::string()
                                                              : "'" + text + "' is no folder";
        });
    app.add_flag("--verbose", options.verbose, "write the plug-in's messages to standard error");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success); // help or version
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "qvr-host: %s; see qvr-host --help\n", error.what());
        return exitBadOption;
    }
    if (!server.empty()) {
        options.loop.server = parseServer(server);
    }
    if (!surface.empty()) {
        options.surface = SurfaceExtents::parse(surface);
    }
    return std::nullopt;
}

} // namespace host
