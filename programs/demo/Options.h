// The command line of qvr-demo.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace demo {

enum ExitCode {
    exitFine = 0,
    exitFailed = 1,
    exitBadOption = 2,
};

struct Options {
    std::string camera = "simulated";
    double seconds = 6;
    double tolerance = 5; // millimetres
    std::filesystem::path examples;
    std::filesystem::path pictures;
    std::filesystem::path server;
    std::filesystem::path host;
    std::string plugin; // empty: the one that the host finds by itself
    bool verbose = false;
};

// Fills in `options`, with defaults that depend on where the program lies. Returns the exit code
// when the program has nothing more to do.
std::optional<int> parseOptions(int argc, char** argv, const std::filesystem::path& programFolder,
                                Options& options);

// The camera source as the server is asked for it. A folder's pictures, which may be far apart in
// time, stay for most of a second each, long enough for touches to come to rest.
std::string sourceFor(const std::string& camera);

// The example settings for a camera source; see programs::exampleSettings.
std::filesystem::path examplesFor(const std::string& camera,
                                  const std::filesystem::path& programFolder);

} // namespace demo
