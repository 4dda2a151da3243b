// Where files are that come with the programs.
#pragma once

#include <filesystem>

namespace programs {

// The file or folder at `inSources` in the source tree above a build tree, or at `inShare` in the
// share folder of an installation. Where there is neither, where it would be installed.
std::filesystem::path shippedFile(const std::filesystem::path& inSources,
                                  const std::filesystem::path& inShare,
                                  const std::filesystem::path& programFolder);

} // namespace programs
