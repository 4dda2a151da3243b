#include "Options.h"

#include "ServerError.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/asio/ip/address.hpp>

namespace server {

namespace {

constexpr const char* description =
    "Opens the depth camera, finds touches on the display and streams them, with the camera's\n"
    "images, to every host that connects.";

constexpr const char* footer =
    R"(A switch that is not given is as the calibration document "touch.json" has it.
Its folder QVR_calibration is looked for at the root of every mounted volume; on Linux in the
colon-separated folders of the variable QVR_VOLUMES first.

Exit codes:
  0  ended as asked: by a signal, --frames, or the last client's leaving; with --check nothing
     to mend
  1  an unexpected failure; with --check something to mend
  2  a bad option
  3  the address or port cannot be had
  4  no camera, or it does not start
  5  "touch.json" cannot be used
  6  a camera source (--camera or QVR_CAMERA) that does not exist or cannot be used)";

const std::string seeHelp = "\nqvr-server --help lists the options.";

// "--name" and "--no-name", of which the last one counts; neither leaves `value` empty. They take
// no value: one that is no truth value would end the server instead of being named.
void addSwitch(CLI::App& app, const std::string& name, std::optional<bool>& value,
               const std::string& help) {
    app.add_flag_function(
           "--" + name + ",!--no-" + name, [&value](std::int64_t count) { value = count > 0; },
           help)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
        ->disable_flag_override();
}

// Leaves out what the library adds to the names of negative flags.
class Formatter : public CLI::Formatter {
  public:
    std::string make_option_name(const CLI::Option* option, bool positional) const override {
        std::string name = CLI::Formatter::make_option_name(option, positional);
        const std::string addition = "{false}";
        if (const std::size_t place = name.find(addition); place != std::string::npos)
            name.erase(place, addition.size());
        return name;
    }
};

// Nothing is shown of it in the help.
CLI::Validator between(double smallest, double largest, const std::string& problem) {
    return CLI::Validator(
        [smallest, largest, problem](const std::string& text) {
            char* end = nullptr;
            const double value = std::strtod(text.c_str(), &end);
            const bool good =
                end != text.c_str() && *end == '\0' && value >= smallest && value <= largest;
            return good ? std::string() : "'" + text + "' is not " + problem;
        },
        "");
}

CLI::Validator secondsOption() {
    return between(0.001, 86400.0, "a time of 0.001 to 86400 seconds");
}

std::string folderProblem(const std::string& text) {
    std::error_code error;
    return std::filesystem::is_directory(text, error) ? "" : "'" + text + "' is no folder";
}

std::string addressProblem(const std::string& text) {
    boost::system::error_code error;
    boost::asio::ip::make_address(text, error);
    return error ? "'" + text + "' is no IP address; try 127.0.0.1, or 0.0.0.0 for every network"
                 : "";
}

std::string peerProblem(const std::string& text) {
    return AllowedPeers().add(text) ? ""
                                    : "'" + text +
                                          "' is no address, no network such as 192.168.1.0/24 or "
                                          "fd00::/8, and not 'any'";
}

// Whoever opens the server to others has to say to whom.
AllowedPeers allowedPeers(const std::string& bindAddress, const std::vector<std::string>& allow) {
    AllowedPeers peers;
    for (const std::string& text : allow)
        peers.add(text);
    if (!peers.empty())
        return peers;
    if (!boost::asio::ip::make_address(bindAddress).is_loopback())
        throw ServerError(exitBadOption,
                          "--bind " + bindAddress +
                              " shows others what the camera sees. Say who may connect: add "
                              "--allow ADDR/PREFIX, such as --allow 192.168.1.0/24, as often as "
                              "needed, or --allow any for everyone who can reach it" +
                              seeHelp);
    return AllowedPeers::thisMachine();
}

} // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
    Options options;
    double stats = 0.0;
    double clientTimeout = 10.0;
    std::vector<std::string> allow;

    CLI::App app(description, "qvr-server");
    app.formatter(std::make_shared<Formatter>());
    app.footer(footer);
    app.set_version_flag("--version", "qvr-server " QVR_VERSION);
    app.add_option("--camera", options.camera,
                   "Camera source: simulated, images:DIR, ... (default: the variable QVR_CAMERA, "
                   "else a connected camera)")
        ->type_name("URI");
    app.add_option("--port", options.port,
                   "TCP port; 0 lets the system choose (default: the document's, else 27016)")
        ->type_name("N")
        ->check(between(0.0, 65535.0, "a port from 0 to 65535"));
    app.add_option("--bind", options.bindAddress,
                   "Address to listen on (default: 127.0.0.1, which only this machine can "
                   "reach). Others need --allow")
        ->type_name("ADDR")
        ->check(CLI::Validator(addressProblem, ""));
    app.add_option("--allow", allow,
                   "Who may connect: an address, a network, or any; may be given several times "
                   "(default: this machine)")
        ->type_name("ADDR[/PREFIX]")
        ->allow_extra_args(false)
        ->check(CLI::Validator(peerProblem, ""));
    app.add_flag("--keep-running", options.keepRunning,
                 "Stay when the last client has gone, whatever the document says");
    addSwitch(app, "color", options.color, "Send the colour image");
    addSwitch(app, "depth", options.depth, "Send the depth image");
    addSwitch(app, "processed", options.processed, "Send the detection's mask");
    addSwitch(app, "touch", options.touch, "Send touches");
    app.add_flag("--raw-touches", options.rawTouches,
                 "Send touches in camera space (pixels and depth units), not calibrated");
    app.add_option("--frames", options.frames, "End after N camera frames")
        ->type_name("N")
        ->check(between(1.0, 9e15, "a number of frames from 1"));
    const auto* statsOption =
        app.add_option("--stats", stats, "Print frame rate, clients and touches every so often")
            ->type_name("SECONDS")
            ->check(secondsOption());
    app.add_flag("--verbose", options.verbose, "Show every message of the pipeline");
    app.add_option("--touch-log", options.touchLog,
                   "Write the touches of every camera frame to FILE, one JSON object a line")
        ->type_name("FILE");
    app.add_option("--record", options.record,
                   "Record the camera's pictures and the touches to the new folder DIR; play it "
                   "with --camera images:DIR, check it with qvr-replay")
        ->type_name("DIR");
    app.add_option("--record-every", options.recordEvery,
                   "Record the first and then every Nth frame only (default: 1)")
        ->type_name("N")
        ->check(between(1.0, 1e6, "a number of frames from 1 to 1000000"))
        ->needs("--record");
    app.add_option("--client-timeout", clientTimeout,
                   "Drop a client that takes nothing for so long (default: 10)")
        ->type_name("SECONDS")
        ->check(secondsOption());
    app.add_option("--max-clients", options.maxClients,
                   "Clients at a time; more are refused (default: 16)")
        ->type_name("N")
        ->check(between(1.0, 1000.0, "a number of clients from 1 to 1000"));
    app.add_option("--check", options.check,
                   "Explain what a person should mend in the settings of DIR/QVR_calibration, and "
                   "end; no camera is opened")
        ->type_name("DIR")
        ->check(CLI::Validator(folderProblem, ""));

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);
        std::fflush(stdout);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw ServerError(exitBadOption, error.what() + seeHelp);
    }

    options.allowed = allowedPeers(options.bindAddress, allow);
    if (statsOption->count() != 0)
        options.statsInterval = std::chrono::duration<double>(stats);
    options.clientTimeout = std::chrono::milliseconds(
        static_cast<std::chrono::milliseconds::rep>(clientTimeout * 1000.0));
    return options;
}

} // namespace server
