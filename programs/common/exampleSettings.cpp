#include "common/exampleSettings.h"

#include "common/shippedFile.h"

namespace programs {

namespace fs = std::filesystem;

fs::path exampleSettings(const std::string& name, const fs::path& programFolder) {
    return shippedFile(fs::path("docs/examples") / name, fs::path("examples") / name,
                       programFolder);
}

} // namespace programs
