#include "recording/fileNames.h"

#include <array>
#include <cstdio>

namespace recording {

namespace {

std::string numbered(const char* format, std::uint32_t picture) {
    std::array<char, 32> name;
    std::snprintf(name.data(), name.size(), format, static_cast<unsigned>(picture));
    return name.data();
}

} // namespace

std::string depthFile(std::uint32_t picture) {
    return numbered("depth_%08u.png", picture);
}

std::string colorFile(std::uint32_t picture) {
    return numbered("color_%08u.png", picture);
}

} // namespace recording
