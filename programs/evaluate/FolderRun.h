// What the detection finds in recorded depth pictures, whose truth nobody knows.
#pragma once

#include "evaluate/FrameRecord.h"
#include "evaluate/Settings.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace evaluate {

struct PictureResult {
    FrameRecord frame;
    std::string file; // with the touches drawn on it; empty without a folder to put it in
};

// Pictures of a folder may be far apart in time. Each stays for this many frames, long enough for
// touches to come to rest, and the last of these frames is the one that counts.
inline constexpr int picturesHold = 6;

// Plays the depth pictures of `folder`, at most `atMost` when that is not 0, and writes pictures of
// them to `output` unless that is empty. Touches are positions in the depth picture. Throws
// EvaluationError.
std::vector<PictureResult> playFolder(const std::filesystem::path& folder, const Settings& settings,
                                      std::size_t atMost, const std::filesystem::path& output);

std::string textOf(const std::vector<PictureResult>& results);
std::string jsonOf(const std::vector<PictureResult>& results, const std::string& folder,
                   const std::string& settings);

} // namespace evaluate
