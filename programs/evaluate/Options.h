// The command line of qvr-evaluate.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace evaluate {

struct Options {
    std::vector<std::string> scenes; // empty: all
    unsigned long long seed = 1;
    int frames = 0; // 0: as many as each scene has
    std::filesystem::path settings;
    std::string json; // a file, "-" for standard output, empty for none
    std::filesystem::path pictures;
    std::filesystem::path images; // empty: simulated scenes
    bool strict = false;
};

// Fills in `options`. Returns the exit code when the program has nothing more to do.
std::optional<int> parseOptions(int argc, char** argv, const std::filesystem::path& programFolder,
                                Options& options);

} // namespace evaluate
