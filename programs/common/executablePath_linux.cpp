#include "common/executablePath.h"

namespace programs {

std::filesystem::path executablePath() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

} // namespace programs
