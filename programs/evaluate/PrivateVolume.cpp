#include "evaluate/PrivateVolume.h"

#include "evaluate/EvaluationError.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace evaluate {

namespace fs = std::filesystem;

namespace {

constexpr const char* volumes = "QVR_VOLUMES";

} // namespace

PrivateVolume::PrivateVolume(const std::string& touchJson) {
    std::string pattern = (fs::temp_directory_path() / "qvr-evaluate-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw EvaluationError(exitFailed,
                              "cannot make the folder " + pattern + ": " + std::strerror(errno));
    }
    folder_ = pattern;
    const fs::path calibration = folder_ / "QVR_calibration";
    std::error_code ignored;
    fs::create_directory(calibration, ignored);
    std::ofstream file(calibration / "touch.json");
    file << touchJson;
    file.close();
    if (!file) {
        fs::remove_all(folder_, ignored);
        throw EvaluationError(exitFailed, "cannot write to " + calibration.string());
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

} // namespace evaluate
