// What the command line asks for.
#pragma once

#include <optional>
#include <string>

namespace replay {

enum ExitCode {
    exitSame = 0,
    exitOther = 1, // touches differ, or the recording cannot be played
    exitBadOption = 2,
};

struct Options {
    std::string folder;
    std::string form; // of the detection; empty: the best one
};

// Reads the command line. The exit code when there is nothing more to do.
std::optional<int> parseOptions(int argc, const char* const* argv, Options& options);

} // namespace replay
