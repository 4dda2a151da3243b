// The forms that detection's inner steps exist in, and which of them is in use.
//
// The plain form (flatnessMask, blobRuns, centerSums) is the reference and the only one on
// processors without a vector form. The others do the same on many pixels at once and equal it
// bit for bit, so the choice shows in time only.
#pragma once

#include "detection/blobRuns.h"
#include "detection/centerSums.h"
#include "detection/flatnessMask.h"

#include <cstddef>
#include <cstdint>

namespace QVR {

// Every step takes any image and any setting; a vector form hands what it was not made for to the
// plain one.
struct DetectionKernels {
    const char* name;
    // The nearest flat surface of an image. What is known of the marks by then goes to `mask` and
    // `counted`, which has room for blocksInRow(image.width) * image.height values.
    FlatnessResult (*findNearest)(const DepthView& image, const FlatnessSettings& settings,
                                  std::uint8_t* counted, std::uint8_t* mask);
    // Completes what findNearest left of the same image: each pixel's mark where it is no farther
    // than `cut`, 0 elsewhere.
    void (*markUpTo)(const DepthView& image, const FlatnessSettings& settings, std::uint16_t cut,
                     const std::uint8_t* counted, std::uint8_t* mask);
    std::size_t (*findRuns)(const std::uint8_t* maskRow, std::uint32_t width,
                            const RunSettings& settings, BlobRun* runs);
    void (*addRowToCenter)(const unsigned short* depthRow, std::uint32_t first, std::uint32_t last,
                           std::uint32_t y, std::uint16_t cutoff, std::uint32_t bias,
                           CenterSums& sums);
};

// What vector forms may ask of an image to take it themselves.
constexpr std::uint32_t blockColumns = 32;    // columns of one step; no image is narrower
constexpr std::uint32_t wordColumns = 64;     // columns of one step along a mask row
constexpr std::uint32_t mostBlockRadius = 16; // largest flatness radius

constexpr std::size_t blocksInRow(std::uint32_t width) {
    return (std::size_t{width} + blockColumns - 1) / blockColumns;
}

// The last block ends at the row's end.
constexpr std::uint32_t columnOfBlock(std::size_t block, std::uint32_t width) {
    const std::size_t column = block * blockColumns;
    return column < width - blockColumns ? static_cast<std::uint32_t>(column)
                                         : width - blockColumns;
}

// The form with this name ("plain", "sse", "avx2", "avx512"), null when it is unknown or this
// processor lacks it.
const DetectionKernels* findKernels(const char* name);

// The form with this name, the best one this processor has when there is none or `name` is null.
const DetectionKernels& chooseKernels(const char* name);

// The form in use. Until one is forced this is chooseKernels of the environment variable
// QVR_DETECTION_KERNELS, read at the first call. Any thread.
const DetectionKernels& activeKernels();

// Puts a form, which lives as long as the program, to use from the next step on. For tests and
// benchmarks.
void forceKernels(const DetectionKernels& kernels);

} // namespace QVR
