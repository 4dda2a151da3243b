#include "common/PrivateVolume.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace programs {

namespace fs = std::filesystem;

namespace {

constexpr const char* volumes = "QVR_VOLUMES";

} // namespace

PrivateVolume::PrivateVolume(const std::map<std::string, std::string>& documents) {
    std::string pattern = (fs::temp_directory_path() / "qvr-volume-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make the folder " + pattern + ": " + std::strerror(errno));
    }
    folder_ = pattern;
    std::error_code ignored;
    for (const auto& [place, text] : documents) {
        const fs::path path = folder_ / place;
        fs::create_directories(path.parent_path(), ignored);
        std::ofstream file(path);
        file << text;
        file.close();
        if (!file) {
            fs::remove_all(folder_, ignored);
            throw std::runtime_error("cannot write " + path.string());
        }
    }
    if (const char* before = std::getenv(volumes)) {
        volumesBefore_ = before;
    }
    setenv(volumes, folder_.c_str(), 1);
}

PrivateVolume::~PrivateVolume() {
    if (volumesBefore_) {
        setenv(volumes, volumesBefore_->c_str(), 1);
    } else {
        unsetenv(volumes);
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

} // namespace programs
