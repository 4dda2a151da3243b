// What the command line asks for.
#pragma once

#include "AllowedPeers.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace server {

struct Options {
    std::string program = "qvr-server";
    std::optional<std::string> camera; // URI of a camera source; else QVR_CAMERA, else hardware
    std::optional<std::uint16_t> port; // 0: the system chooses; else the document's, else 27016
    std::string bindAddress = "127.0.0.1";
    AllowedPeers allowed; // who may connect to that address
    bool keepRunning = false;

    // Override the switches of the calibration document.
    std::optional<bool> color;
    std::optional<bool> depth;
    std::optional<bool> processed;
    std::optional<bool> touch;

    bool rawTouches = false;
    std::optional<std::uint64_t> frames; // end after so many camera frames
    std::optional<std::chrono::duration<double>> statsInterval;
    bool verbose = false;
    std::optional<std::string> touchLog;
    std::optional<std::string> record; // folder
    std::uint64_t recordEvery = 1;     // one in so many frames
    std::chrono::milliseconds clientTimeout{10000};
    std::size_t maxClients = 16;
    std::optional<std::string> check; // explain the settings in this folder, and serve nothing
};

// Reads the command line. Empty when it asked for help or the version, which are then printed on
// standard output. Throws ServerError (exitBadOption) with a message that names the option.
std::optional<Options> parseOptions(int argc, const char* const* argv);

} // namespace server
