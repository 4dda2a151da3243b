// Centre sums, written once for all vector forms and, like vectorFlatness.h, private to each
// form's source.
//
// With e = cutoff - depth, held at 0 where the pixel does not count, all sums of a row follow from
// three: the sum of e, the sum of e times the column, and the number of pixels with e above 0. The
// bias multiplies whole sums, in 64 bits that wrap as sums of single weights would.
//
// A row is taken in chunks of at most 256 pixels, whose sums of products fit 32 bits: the
// multiplication is signed, so e is moved down by 32768, times a column of the chunk below 256,
// and at most 33 vectors add up. The last vector of a chunk overlaps the one before it; the lanes
// that were counted already are cleared. Fewer pixels than lanes are copied in front of pixels too
// far to count: most runs are a fingertip wide, less than the widest vector.
#pragma once

#include "detection/detectionKernels.h"

namespace QVR {
namespace {

struct ChunkSums {
    std::uint64_t excess;        // sum of e
    std::uint64_t excessColumns; // sum of e times the column of the chunk
    std::uint64_t count;         // pixels with e above 0
};

template <class Form>
ChunkSums sumChunk(const unsigned short* depth, std::uint32_t length, std::uint16_t cutoff) {
    using Vector = typename Form::Vector;
    constexpr std::uint32_t lanes = Form::lanes;
    alignas(64) static constexpr std::uint16_t firstColumns[32] = {
        0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
        16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31};

    const Vector limit = Form::all(cutoff);
    const Vector one = Form::all(1);
    const typename Form::Interval nothing(Form::all(0), Form::all(0));
    const Vector columns = Form::load(firstColumns);
    Vector excess = Form::all(0); // 32-bit lanes, as the next
    Vector product = Form::all(0);
    Vector negativeCount = Form::all(0);
    const auto add = [&](Vector e, std::uint32_t column) {
        const Vector moved = Form::moveDown(e);
        const Vector position = Form::add(columns, Form::all(static_cast<std::uint16_t>(column)));
        excess = Form::addWide(excess, Form::multiplyPairs(moved, one));
        product = Form::addWide(product, Form::multiplyPairs(moved, position));
        negativeCount = Form::oneLessWhere(negativeCount, Form::outside(nothing, e));
    };

    std::uint32_t x = 0;
    for (; x + lanes <= length; x += lanes) {
        add(Form::subtractHeld(limit, Form::load(depth + x)), x);
    }
    std::int64_t added = x;
    std::int64_t addedColumns = added * (added - 1) / 2;
    const std::uint32_t rest = length - x;
    if (rest != 0) {
        const std::uint32_t last = length - lanes;
        const Vector counted = Form::all(static_cast<std::uint16_t>(lanes - rest));
        add(Form::clearWhere(Form::subtractHeld(limit, Form::load(depth + last)),
                             Form::lessThan(columns, counted)),
            last);
        added += lanes;
        addedColumns += std::int64_t{lanes} * last + lanes * (lanes - 1) / 2;
    }
    const std::int64_t count = -Form::sumWide(Form::multiplyPairs(negativeCount, one));
    return ChunkSums{static_cast<std::uint64_t>(Form::sumWide(excess) + 32768 * added),
                     static_cast<std::uint64_t>(Form::sumWide(product) + 32768 * addedColumns),
                     static_cast<std::uint64_t>(count)};
}

template <class Form>
ChunkSums sumShortChunk(const unsigned short* depth, std::uint32_t length, std::uint16_t cutoff) {
    alignas(64) std::uint16_t padded[Form::lanes];
    Form::store(Form::all(0xffff), padded);
    for (std::uint32_t i = 0; i < length; ++i) {
        padded[i] = depth[i];
    }
    return sumChunk<Form>(padded, Form::lanes, cutoff);
}

template <class Form>
void addChunksToCenter(const unsigned short* depthRow, std::uint32_t first, std::uint32_t last,
                       std::uint32_t y, std::uint16_t cutoff, std::uint32_t bias,
                       CenterSums& sums) {
    constexpr std::uint32_t chunkPixels = 256;
    std::uint64_t x = first;
    const std::uint64_t end = std::uint64_t{last} + 1;
    while (x < end) {
        const std::uint32_t length =
            end - x < chunkPixels ? static_cast<std::uint32_t>(end - x) : chunkPixels;
        const ChunkSums chunk = length < Form::lanes
                                    ? sumShortChunk<Form>(depthRow + x, length, cutoff)
                                    : sumChunk<Form>(depthRow + x, length, cutoff);
        const std::uint64_t weight = chunk.excess * bias;
        sums.weight += weight;
        sums.weightedX += weight * x + chunk.excessColumns * bias;
        sums.weightedY += weight * y;
        sums.depth += chunk.count * cutoff - chunk.excess;
        sums.count += chunk.count;
        x += length;
    }
}

} // namespace
} // namespace QVR
