// The conversions of textures, as they are worded: what any library's result is compared with.
#pragma once

#include <cstddef>
#include <vector>

namespace bench {

// Pixels of different values, `channels` bytes each.
inline std::vector<unsigned char> patternPicture(std::size_t pixels, std::size_t channels) {
    std::vector<unsigned char> picture(pixels * channels);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        picture[i] = static_cast<unsigned char>(i * 7 + i / 251);
    }
    return picture;
}

// Red, green and blue, or one grey for all three; 255 behind them.
inline std::vector<unsigned char> literalRgba(const std::vector<unsigned char>& picture,
                                              std::size_t channels) {
    std::vector<unsigned char> rgba;
    rgba.reserve(picture.size() / channels * 4);
    for (std::size_t i = 0; i < picture.size(); i += channels) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            rgba.push_back(picture[channels == 3 ? i + channel : i]);
        }
        rgba.push_back(255);
    }
    return rgba;
}

} // namespace bench
