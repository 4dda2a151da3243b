// A folder that stands in for a mounted volume while it lives: the first place where calibration
// files are looked for.
#pragma once

#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace support {

class TemporaryVolume {
  public:
    TemporaryVolume() { std::filesystem::create_directory(folder_.file("QVR_calibration")); }

    // The absolute path of a file at `relativePath`, as the lookup spells it.
    std::string path(const std::string& relativePath) const { return folder_.file(relativePath); }

    void write(const std::string& relativePath, const std::string& text) const {
        folder_.write(relativePath, text);
    }

  private:
    TemporaryFolder folder_;
    ScopedEnvironment volumes_{"QVR_VOLUMES", folder_.path().c_str()};
};

} // namespace support
