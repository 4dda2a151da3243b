// Writing pictures as PNG files.
#pragma once

#include "common/Image.h"

#include <string>

namespace programs {

// Writes the picture to `path`, replacing a file of that name. Returns an empty text, or why it
// could not be written; a file that could not be finished is removed.
std::string writePng(const std::string& path, const ColorImage& image);
std::string writePng(const std::string& path, const GrayImage& image);

} // namespace programs
