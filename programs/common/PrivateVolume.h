// A folder that stands in for the display's volume while one pipeline runs.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace programs {

// Holds settings documents where the pipeline looks for them first, and alone on Linux, and takes
// everything back when it goes. One at a time.
class PrivateVolume {
  public:
    // The documents by the path at which they are looked for on a volume. Throws
    // std::runtime_error when the folder cannot be made.
    explicit PrivateVolume(const std::map<std::string, std::string>& documents);
    ~PrivateVolume();
    PrivateVolume(const PrivateVolume&) = delete;
    PrivateVolume& operator=(const PrivateVolume&) = delete;

  private:
    std::filesystem::path folder_;
    std::optional<std::string> volumesBefore_;
};

} // namespace programs
