// Marking and cut as one writes them down at first: pixel by pixel, every neighbour with its own
// bounds tests. What the vector forms are measured against.
#pragma once

#include "literalDetection.h"

#include <cstdint>

namespace bench {

// Equals blobManager::processFrame for a frame with the settings; returns the cut, which is
// `lastCut` when nothing was in range.
std::uint16_t scalarProcessFrame(const literal::Image& image, const literal::Settings& settings,
                                 std::uint16_t lastCut, std::uint8_t* mask);

} // namespace bench
