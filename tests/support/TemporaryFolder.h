// A folder of its own for a test, gone with all its contents afterwards.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace support {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvr-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary folder from " + pattern);
        }
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    // The path of a file or folder in it.
    std::string file(const std::string& name) const { return path_ + "/" + name; }

    // Writes a file, with the folders that lead to it, and returns its absolute path.
    std::string write(const std::string& relativePath, const std::string& content) const {
        const std::filesystem::path file = std::filesystem::path(path_) / relativePath;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file.string();
    }

  private:
    std::string path_;
};

} // namespace support
