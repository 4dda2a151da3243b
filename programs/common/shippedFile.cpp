#include "common/shippedFile.h"

namespace programs {

namespace fs = std::filesystem;

fs::path shippedFile(const fs::path& inSources, const fs::path& inShare,
                     const fs::path& programFolder) {
    std::error_code ignored;
    fs::path above = programFolder;
    for (int level = 0; level < 5 && above.has_relative_path(); ++level) {
        const fs::path place = above / inSources;
        if (fs::exists(place, ignored)) {
            return place;
        }
        above = above.parent_path();
    }
    return programFolder.parent_path() / QVR_INSTALL_DATADIR / "qvr-touch" / inShare;
}

} // namespace programs
