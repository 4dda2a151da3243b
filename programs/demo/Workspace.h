// A private folder that stands in for the display's volume, gone when the demo ends.
#pragma once

#include <filesystem>
#include <string>

namespace demo {

class Workspace {
  public:
    // Copies the settings documents of `examples` (its *.json files, or those in a folder
    // QVR_calibration inside it) to where server and plug-in look for them. Throws
    // std::runtime_error when there are none or they cannot be copied.
    explicit Workspace(const std::filesystem::path& examples);
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    const std::filesystem::path& volume() const { return folder_; }
    std::string file(const char* name) const { return (folder_ / name).string(); }

  private:
    void copySettings(const std::filesystem::path& examples);

    std::filesystem::path folder_;
};

// The last `lines` lines of a text file.
std::string lastLines(const std::string& path, std::size_t lines);

} // namespace demo
