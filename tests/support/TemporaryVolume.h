// A folder that stands in for a mounted volume while it lives: the first place where calibration
// files are looked for.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace support {

class TemporaryVolume {
  public:
    TemporaryVolume() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvr_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        root_ = pattern;
        std::filesystem::create_directory(root_ / "QVR_calibration");
        setenv("QVR_VOLUMES", root_.c_str(), 1);
    }
    ~TemporaryVolume() {
        unsetenv("QVR_VOLUMES");
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TemporaryVolume(const TemporaryVolume&) = delete;
    TemporaryVolume& operator=(const TemporaryVolume&) = delete;

    // The absolute path of a file at `relativePath`, as the lookup spells it.
    std::string path(const std::string& relativePath) const {
        return root_.string() + "/" + relativePath;
    }

    void write(const std::string& relativePath, const std::string& text) const {
        std::ofstream(path(relativePath)) << text;
    }

  private:
    std::filesystem::path root_;
};

} // namespace support
