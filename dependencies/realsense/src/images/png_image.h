// Reading PNG files: 16-bit depth pictures and 8-bit colour ones.
#pragma once

#include "source_options.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace camera {

// The size of a 16-bit grey PNG, from its header alone. Throws std::runtime_error, naming the
// file and what is needed, for anything else.
ImageSize depthPngSize(const std::filesystem::path& file);

// Its samples row by row; `size` is what the header is expected to say.
std::vector<std::uint16_t> readDepthPng(const std::filesystem::path& file, ImageSize size);

// The size of any PNG, from its header.
ImageSize colorPngSize(const std::filesystem::path& file);

// Any PNG as RGB bytes, row by row; what is transparent becomes black.
std::vector<std::uint8_t> readColorPng(const std::filesystem::path& file, ImageSize size);

} // namespace camera
