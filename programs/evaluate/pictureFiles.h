// Pictures of frames with their touches, as files.
#pragma once

#include "host/Snapshot.h"

#include <filesystem>
#include <string>

namespace evaluate {

// Writes `folder`/`name`.png and returns its path; makes the folder if need be. Throws
// EvaluationError (exitFailed) when it cannot be written.
std::string writePicture(const host::Snapshot& snapshot, const std::filesystem::path& folder,
                         const std::string& name);

} // namespace evaluate
