#include "randomImages.h"

namespace literal {

Settings RandomCases::settings() {
    Settings drawn;
    if (oneIn(2)) {
        drawn.nearNoiseCutoff = depth();
        drawn.farLimit = depth();
    }
    if (oneIn(8)) {
        drawn.farLimit = oneIn(2) ? std::uint16_t{65535} : drawn.nearNoiseCutoff;
    }
    if (oneIn(2)) {
        drawn.maxDiffNear = depth();
        drawn.maxDiffFar = depth();
    }
    drawn.flatnessRadius = below(13);
    if (oneIn(8)) {
        constexpr std::uint32_t huge[] = {100, 0x7fffffffU, 0x80000000U, 0x80000001U, 0xffffffffU};
        drawn.flatnessRadius = huge[below(5)];
    }
    drawn.flatnessThreshold = static_cast<std::uint16_t>(below(60));
    if (oneIn(8)) {
        drawn.flatnessThreshold = oneIn(3) ? std::uint16_t{65535} : depth();
    }
    constexpr std::uint32_t biases[] = {45, 45, 1, 0, 65537, 65538, 0xffffffffU};
    drawn.biasStrength = biases[below(7)];
    drawn.minBlobSize = below(14);
    drawn.minBlobSpace = below(6);
    drawn.allowedBlobNoiseGap = below(6);
    drawn.blobLineAssocLimitU = static_cast<std::int32_t>(below(40)) - 2;
    drawn.blobLineAssocLimitV = static_cast<std::int32_t>(below(14)) - 2;
    return drawn;
}

std::uint16_t RandomCases::pixel(std::uint32_t kind, std::uint32_t x, std::uint32_t y,
                                 std::uint16_t base, const Settings& settings) {
    const auto near = [this](std::uint32_t value, std::uint32_t spread) {
        return static_cast<std::uint16_t>(value + below(2 * spread + 1) - spread);
    };
    switch (kind) {
    case 0:
        return 0;
    case 1:
        return base;
    case 2: // every other pixel
        return (x + y) % 2 == 0 ? base : std::uint16_t{0};
    case 3: // any 16-bit value
        return depth();
    case 4: // a noisy plane around the flatness threshold
        return near(base, settings.flatnessThreshold / 2 + 1U);
    case 5: // a noisy plane with holes
        return oneIn(12) ? std::uint16_t{0} : near(base, 6);
    case 6: // values at and beside every limit
        switch (below(4)) {
        case 0:
            return near(settings.nearNoiseCutoff, 1);
        case 1:
            return near(settings.farLimit, 1);
        case 2:
            return near(settings.nearNoiseCutoff + settings.flatnessThreshold, 1);
        default:
            return near(base, 1);
        }
    case 7: // fingers before a surface out of range
        return x % 29 < 17 ? near(base, 4) : settings.farLimit;
    case 8: // a slope away from the first row
        return static_cast<std::uint16_t>(base + 3 * x + 7 * y);
    case 9: // a slope towards the last row
        return static_cast<std::uint16_t>(base + 900 - 2 * x - 7 * y);
    case 10: // plates at many distances, some of them out of range
        return (x / 37 + y / 5) % 4 == 0 ? std::uint16_t{0}
                                         : near(base + (x / 37 * 5 + y / 5 * 11) % 13 * 60, 2);
    default: { // bands of rows: empty, full, and with few pixels in range
        const std::uint32_t band = (base + y / 7) % 4;
        return band == 0 || (band == 1 && x % 90 != base % 90) ? settings.farLimit
                                                               : near(base + 40 * band, 3);
    }
    }
}

Image RandomCases::image(std::uint32_t width, std::uint32_t height, const Settings& settings) {
    Image drawn(width, height);
    const std::uint32_t kind = below(12);
    const auto base = static_cast<std::uint16_t>(settings.nearNoiseCutoff + 1U + below(900));
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            drawn.at(x, y) = pixel(kind, x, y, base, settings);
        }
    }
    return drawn;
}

std::vector<std::uint8_t> RandomCases::maskRow(std::uint32_t width) {
    std::vector<std::uint8_t> row;
    const bool alternating = oneIn(8);
    while (row.size() < width) {
        const std::uint32_t marked = alternating ? 1 : below(20);
        const std::uint32_t unmarked = alternating ? 1 : below(8);
        row.insert(row.end(), marked, static_cast<std::uint8_t>(1 + below(16)));
        row.insert(row.end(), unmarked, std::uint8_t{0});
    }
    row.resize(width);
    return row;
}

} // namespace literal
