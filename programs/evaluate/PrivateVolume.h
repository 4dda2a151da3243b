// A folder that stands in for the display's volume while one pipeline runs.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace evaluate {

// Holds the settings document where the pipeline looks for it first, and takes everything back
// when it goes. One at a time.
class PrivateVolume {
  public:
    // Throws EvaluationError (exitFailed) when the folder cannot be made.
    explicit PrivateVolume(const std::string& touchJson);
    ~PrivateVolume();
    PrivateVolume(const PrivateVolume&) = delete;
    PrivateVolume& operator=(const PrivateVolume&) = delete;

  private:
    std::filesystem::path folder_;
    std::optional<std::string> volumesBefore_;
};

} // namespace evaluate
