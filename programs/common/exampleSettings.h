// Where the settings documents that come with the programs are.
#pragma once

#include <filesystem>
#include <string>

namespace programs {

// The example settings of that name: in the source tree above a build tree, or in the share folder
// of an installation. Where none are found, where they would be installed.
std::filesystem::path exampleSettings(const std::string& name,
                                      const std::filesystem::path& programFolder);

} // namespace programs
