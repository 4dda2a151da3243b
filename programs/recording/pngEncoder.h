// The camera's pictures as PNG, made for speed: a recording has to keep up with the camera.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace recording {

// Replace `file` by the bytes of a PNG file; its memory is used again from picture to picture.
// Throw RecordingError when the picture's size is none or memory runs out.
void encodeDepth(std::span<const std::uint16_t> samples, int width, int height,
                 std::vector<std::uint8_t>& file);
void encodeColor(std::span<const std::uint8_t> rgb, int width, int height,
                 std::vector<std::uint8_t>& file);

} // namespace recording
