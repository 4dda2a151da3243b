#include "cameraTool/Options.h"

#include "server/ServerError.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

#include <CLI/CLI.hpp>

namespace cameraTool {

namespace {

constexpr const char* about =
    "Looks after depth cameras: lists them, tells their geometry, and keeps what they see.";

constexpr const char* footer =
    R"(Every command takes --camera URI; without it, the variable QVR_CAMERA or a connected camera
counts. qvr-camera COMMAND --help lists a command's options.

Exit codes:
  0  done
  1  a file cannot be written, the recording is not whole, or an unexpected failure
  2  a bad option, or a mode that the camera does not have
  4  no camera, or it cannot be used; the message says what to do
  5  "touch.json" cannot be used
  6  a camera source (--camera or QVR_CAMERA) that does not exist or cannot be used)";

constexpr int longestSide = 16384;
constexpr int highestRate = 1000;
constexpr std::uint64_t mostFrames = 1'000'000'000;
constexpr double longestTake = 86400.0; // a day

// The whole of `text` as the length of a picture's side.
bool readSide(std::string_view text, int& side) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, side);
    return error == std::errc() && rest == end && side > 0 && side <= longestSide;
}

// "WIDTHxHEIGHT" into two numbers.
bool readSize(std::string_view text, int& width, int& height) {
    const std::size_t cross = text.find('x');
    return cross != std::string_view::npos && readSide(text.substr(0, cross), width) &&
           readSide(text.substr(cross + 1), height);
}

void addSize(CLI::App& command, const std::string& name, const char* help, int& width,
             int& height) {
    command
        .add_option_function<std::string>(
            name,
            [name, &width, &height](const std::string& text) {
                if (!readSize(text, width, height)) {
                    throw CLI::ValidationError(name, "'" + text + "' is no size such as 640x480");
                }
            },
            help)
        ->type_name("WxH");
}

void addCamera(CLI::App& command, Options& options) {
    command
        .add_option("--camera", options.camera,
                    "Camera source: realsense:SERIAL, simulated, images:DIR, bag:FILE, ...")
        ->type_name("URI");
}

void addMode(CLI::App& command, Mode& mode) {
    addSize(command, "--depth",
            "Size of the depth images (default: as record has it in touch.json, else the "
            "nearest to 640x480)",
            mode.depthWidth, mode.depthHeight);
    addSize(command, "--color", "Size of the colour images (the same)", mode.colorWidth,
            mode.colorHeight);
    command.add_option("--fps", mode.fps, "Frames a second, of both")
        ->type_name("N")
        ->check(CLI::Range(1, highestRate).description(""));
}

void addList(CLI::App& app, Options& options) {
    CLI::App& command =
        *app.add_subcommand("list", "Cameras with their serial numbers, firmware and modes, and "
                                    "the sources there are");
    addCamera(command, options);
    command.add_flag("--json", options.json, "Print it for programs");
    command.callback([&options] { options.command = Command::list; });
}

void addInfo(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand(
        "info", "The camera information as hosts get it: lenses and poses, as JSON");
    addCamera(command, options);
    addMode(command, options.mode);
    command.add_flag("--raw", options.raw, "To the letter, as the pipeline writes it");
    command.callback([&options] { options.command = Command::info; });
}

void addSnapshot(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand(
        "snapshot", "One PNG each of depth, colour, and both as the other sees them");
    addCamera(command, options);
    addMode(command, options.mode);
    command.add_option("--out", options.out, "Folder to write to; pictures there are replaced")
        ->type_name("DIR")
        ->required();
    options.frame = 30;
    command
        .add_option("--frame", options.frame,
                    "Frames to let pass before (default: 30, until the exposure has settled)")
        ->type_name("N")
        ->check(CLI::Range(0, 1'000'000).description(""));
    command.callback([&options] { options.command = Command::snapshot; });
}

void addFrames(CLI::App& command, Options& options, const char* help) {
    command.add_option("--frames", options.frames, help)
        ->type_name("N")
        ->check(CLI::Range(std::uint64_t{1}, mostFrames).description(""));
}

void addRecord(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand(
        "record", "Record pictures and touches, as qvr-server --record does, without a network");
    command.add_option("folder", options.out, "The new folder of the recording")
        ->type_name("DIR")
        ->required();
    addCamera(command, options);
    addMode(command, options.mode);
    addFrames(command, options, "End after N frames");
    command.add_option("--seconds", options.seconds, "End after so long (default: Ctrl-C ends it)")
        ->type_name("S")
        ->check(CLI::Range(0.001, longestTake).description(""));
    command.callback([&options] { options.command = Command::record; });
}

void addConvert(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand(
        "convert", "Turn a recording of RealSense SDK 2, or what else can be played, into a "
                   "folder that plays everywhere, every frame of it");
    command
        .add_option("input", options.in,
                    "A .bag file, a folder, or a camera URI such as simulated:seed=3")
        ->type_name("IN")
        ->required();
    command.add_option("folder", options.out, "The new folder of the recording")
        ->type_name("OUT")
        ->required();
    addFrames(command, options, "End after N frames (default: all)");
    command.callback([&options] { options.command = Command::convert; });
}

} // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
    Options options;
    CLI::App app(about, "qvr-camera");
    app.footer(footer);
    app.set_version_flag("--version", "qvr-camera " QVR_VERSION);
    app.require_subcommand(1);
    addList(app, options);
    addInfo(app, options);
    addSnapshot(app, options);
    addRecord(app, options);
    addConvert(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);
        std::fflush(stdout);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw server::ServerError(server::exitBadOption,
                                  std::string(error.what()) + "; see qvr-camera --help");
    }
    return options;
}

} // namespace cameraTool
