// Where the running program lies; one source per platform.
#pragma once

#include <filesystem>

namespace programs {

// The absolute path of the running program's file, symbolic links resolved; empty when the
// system does not tell.
std::filesystem::path executablePath();

} // namespace programs
