// Reads a single-channel 16-bit PNG as a depth image.
#pragma once

#include "literalDetection.h"

#include <optional>
#include <string>

namespace literal {

// Nothing when the file is no such PNG.
std::optional<Image> readDepthPng(const std::string& path);

} // namespace literal
