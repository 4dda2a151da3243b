// The two passes over a whole image, written once for all vector forms and, like vectorBlocks.h,
// private to each form's source.
//
// A mark that the cut clears again need not be counted, and what is cut follows from the nearest
// flat surface alone. So the first pass looks for that surface: it counts the blocks with a pixel
// in range that is nearer than all flat pixels before. The second counts the blocks with a pixel
// in range up to the cut. In between, the counts of the first pass wait in the mask, so that no
// block is counted twice, however the depths are spread.
#pragma once

#include "detection/vectorBlocks.h"

namespace QVR {
namespace {

// Whether some of so many columns of a row have a depth in the interval; at least a block of them.
template <class Form>
bool anyWithin(const typename Form::Interval& interval, const std::uint16_t* depth,
               std::uint32_t columns) {
    typename Form::Lanes outside[vectorsInBlock<Form>];
    const std::uint16_t* const lastBlock = depth + (columns - blockColumns);
    for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
        outside[i] = Form::outside(interval, Form::load(lastBlock + i * Form::lanes));
    }
    for (const std::uint16_t* block = depth; block < lastBlock; block += blockColumns) {
        for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
            outside[i] = Form::both(outside[i],
                                    Form::outside(interval, Form::load(block + i * Form::lanes)));
        }
    }
    return !Form::everyLane(outside);
}

// The least depth of a block's flat pixels in the interval, 65535 when there is none.
template <class Form>
std::uint16_t nearestFlatWithin(const typename Form::Interval& interval, const std::uint16_t* depth,
                                const typename BlockCounter<Form>::Counts& counts) {
    typename Form::Vector nearest = Form::all(65535);
    for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
        const typename Form::Vector here = Form::load(depth + i * Form::lanes);
        const typename Form::Vector inside = Form::fillWhere(here, Form::outside(interval, here));
        nearest = Form::least(
            nearest, Form::fillWhere(inside, Form::lessThan(counts[i], Form::all(flatMark))));
    }
    std::uint16_t values[Form::lanes];
    Form::store(nearest, values);
    std::uint16_t least = values[0];
    for (const std::uint16_t value : values) {
        least = value < least ? value : least;
    }
    return least;
}

// Rows far apart first: they find how near surfaces come, also where one slopes from row to row,
// and leave little to count in those between.
template <class Form>
FlatnessResult findNearestInBlocks(const DepthView& image, const FlatnessSettings& settings,
                                   std::uint8_t* counted, std::uint8_t* mask) {
    if (!takesImage(image, settings)) {
        return markFlatPixels(image, settings, mask);
    }
    const std::uint32_t width = image.width;
    const std::size_t rowBlocks = blocksInRow(width);
    for (std::size_t i = 0; i < rowBlocks * image.height; ++i) {
        counted[i] = 0;
    }
    const auto upTo = [&settings](std::uint32_t farthest) {
        return typename Form::Interval(Form::all(settings.nearLimit + 1),
                                       Form::all(static_cast<int>(farthest)));
    };
    const BlockCounter<Form> counter(image, settings);
    typename Form::Interval nearer = upTo(settings.farLimit - 1U);
    FlatnessResult result;
    constexpr std::uint32_t steps[] = {16, 1};
    for (const std::uint32_t step : steps) {
        for (std::uint32_t y = 0; y < image.height; y += step) {
            const NeighbourRows rows(image, y, settings.radius);
            if (!anyWithin<Form>(nearer, rows.starts[2], width)) {
                continue;
            }
            std::uint8_t* const countedRow = counted + y * rowBlocks;
            for (std::size_t block = 0; block < rowBlocks; ++block) {
                const std::uint32_t column = columnOfBlock(block, width);
                const std::uint16_t* const depth = rows.starts[2] + column;
                if (countedRow[block] != 0 || !anyWithin<Form>(nearer, depth, blockColumns)) {
                    continue;
                }
                typename BlockCounter<Form>::Counts counts;
                counter.count(rows, column, counts);
                Form::storeMarks(counts, mask + std::size_t{y} * width + column);
                countedRow[block] = 1;
                result.anyInRange = true;
                const std::uint16_t nearest = nearestFlatWithin<Form>(nearer, depth, counts);
                if (nearest >= result.nearest) {
                    continue;
                }
                result.nearest = nearest;
                if (nearest == settings.nearLimit + 1U) {
                    return result;
                }
                nearer = upTo(nearest - 1U);
            }
        }
    }
    return result;
}

inline void clearMarks(std::uint8_t* marks, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        marks[i] = 0;
    }
}

template <class Form>
void markBlocksUpTo(const DepthView& image, const FlatnessSettings& settings, std::uint16_t cut,
                    const std::uint8_t* counted, std::uint8_t* mask) {
    const std::uint32_t width = image.width;
    const std::size_t pixelCount = std::size_t{width} * image.height;
    if (!takesImage(image, settings)) {
        clearBeyondCut(image.pixels, pixelCount, cut, mask);
        return;
    }
    if (cut <= settings.nearLimit) {
        clearMarks(mask, pixelCount);
        return;
    }
    const typename Form::Interval kept(
        Form::all(settings.nearLimit + 1),
        Form::all(cut < settings.farLimit ? cut : settings.farLimit - 1));
    const std::size_t rowBlocks = blocksInRow(width);
    const BlockCounter<Form> counter(image, settings);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const NeighbourRows rows(image, y, settings.radius);
        std::uint8_t* const maskRow = mask + std::size_t{y} * width;
        if (!anyWithin<Form>(kept, rows.starts[2], width)) {
            clearMarks(maskRow, width);
            continue;
        }
        const std::uint8_t* const countedRow = counted + y * rowBlocks;
        for (std::size_t block = 0; block < rowBlocks; ++block) {
            const std::uint32_t column = columnOfBlock(block, width);
            std::uint8_t* const marks = maskRow + column;
            typename Form::Lanes cleared[vectorsInBlock<Form>];
            for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
                cleared[i] =
                    Form::outside(kept, Form::load(rows.starts[2] + column + i * Form::lanes));
            }
            if (Form::everyLane(cleared)) {
                Form::storeNoMarks(marks);
                continue;
            }
            if (countedRow[block] != 0) {
                Form::clearMarks(cleared, marks);
                continue;
            }
            typename BlockCounter<Form>::Counts counts;
            counter.count(rows, column, counts);
            for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
                counts[i] = Form::clearWhere(counts[i], cleared[i]);
            }
            Form::storeMarks(counts, marks);
        }
    }
}

} // namespace
} // namespace QVR
