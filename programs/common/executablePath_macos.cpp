#include "common/executablePath.h"

#include <cstdint>
#include <string>

#include <mach-o/dyld.h>

namespace programs {

std::filesystem::path executablePath() {
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::string path(size, '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0) {
        return {};
    }
    std::error_code ignored;
    return std::filesystem::canonical(path.c_str(), ignored);
}

} // namespace programs
