#include "common/exampleSettings.h"

namespace programs {

namespace fs = std::filesystem;

fs::path exampleSettings(const std::string& name, const fs::path& programFolder) {
    std::error_code ignored;
    fs::path above = programFolder;
    for (int level = 0; level < 5 && above.has_relative_path(); ++level) {
        const fs::path place = above / "docs" / "examples" / name;
        if (fs::is_directory(place, ignored)) {
            return place;
        }
        above = above.parent_path();
    }
    return programFolder.parent_path() / QVR_INSTALL_DATADIR / "qvr-touch" / "examples" / name;
}

} // namespace programs
