// The command line of qvr-host.
#pragma once

#include "host/HostLoop.h"
#include "host/SurfaceExtents.h"

#include <optional>
#include <string>

namespace host {

enum ExitCode {
    exitFine = 0,
    exitToMend = 1,
    exitBadOption = 2,
    exitNoPlugin = 3,
    exitNeverConnected = 4,
    exitCannotWrite = 5,
};

struct Options {
    std::string plugin; // empty: the one that belongs to the program
    LoopOptions loop;
    std::optional<double> seconds;
    std::optional<Extents> surface;
    std::string saveFolder; // empty: nothing is saved; likewise below
    std::string touchLog;
    std::string check; // explain the settings in this folder, and show nothing
    bool plain = false;
    bool verbose = false;
};

// Fills in `options`. Returns the exit code when the program has nothing more to do: help and
// version were printed, or what is wrong was written to standard error.
std::optional<int> parseOptions(int argc, char** argv, Options& options);

// "HOST:PORT", or "HOST" for the usual port; nothing for any other text.
std::optional<ServerAddress> parseServer(const std::string& text);

} // namespace host
