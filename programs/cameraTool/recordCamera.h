// The server's recording without a network.
#pragma once

#include "cameraTool/Mode.h"

#include <cstdint>
#include <optional>
#include <string>

namespace cameraTool {

struct Take {
    std::string source; // camera URI; "" for a connected camera
    std::string folder; // new or empty
    Mode mode;          // what the settings say where it is open
    std::optional<double> seconds;
    std::optional<std::uint64_t> frames;
    bool whole = false; // the camera waits for the disk, so that no frame is left out
};

// Records pictures and touches until the take is over, the source ends, or SIGINT, SIGTERM or
// SIGHUP comes; the last two as an ordinary end. The source is selected already. Says on standard
// error what was recorded. Throws ServerError.
void recordCamera(const Take& take);

// What has to be selected to play all of `input` once, each frame as soon as the last one is done:
// `input` is a recording's file or folder, or a camera URI. Throws ServerError (exitBadOption) for
// one that cannot wait, a camera's.
std::string playedOnce(const std::string& input);

// Whether that comes to an end by itself.
bool ends(const std::string& uri);

// The one mode of a source of pictures, which is selected already. Throws ServerError.
Mode ownMode();

} // namespace cameraTool
