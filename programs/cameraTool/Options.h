// What the command line asks for.
#pragma once

#include "cameraTool/Mode.h"

#include <cstdint>
#include <optional>
#include <string>

namespace cameraTool {

enum class Command { list, info, snapshot, record, convert };

struct Options {
    Command command = Command::list;
    std::optional<std::string> camera; // URI of a camera source; else QVR_CAMERA, else hardware
    Mode mode;
    bool json = false;       // list: for programs
    bool raw = false;        // info: to the letter as hosts get it
    std::string in;          // convert: file, folder or URI
    std::string out;         // snapshot, record, convert: folder
    std::uint64_t frame = 0; // snapshot: how many to let pass
    std::optional<double> seconds;
    std::optional<std::uint64_t> frames;
};

// Reads the command line. Empty when it asked for help or the version, which are then printed on
// standard output. Throws ServerError (exitBadOption) with a message that names the option.
std::optional<Options> parseOptions(int argc, const char* const* argv);

} // namespace cameraTool
