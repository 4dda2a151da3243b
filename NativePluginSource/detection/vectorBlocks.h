// Counting the same neighbours of a block of pixels, written once for all vector forms. Only a
// form's own source includes this: everything in it is private to that source, because the same
// code compiled for wider registers must never be taken for the narrow one by the linker. For the
// same reason there is no standard library in it.
//
// An image row is cut into blocks of 32 columns, whatever the vectors' width. A block reads its
// own pixels and the sixteen blocks that lie one and two radii away in eight directions. Nothing
// is lost at an edge:
// - above and below, rows are held at the image's border by choosing the row's address;
// - left and right, where a neighbour's column would lie outside, a block reads from copies of the
//   rows' ends with the border pixel repeated beyond;
// - the last block of a row overlaps the one before it. It computes the same counts once more.
//
// A pixel differs by less than t from its neighbour d when d lies in the interval from c - (t - 1)
// to c + (t - 1), both held to 16 bits: held ends change nothing, for d has 16 bits, too.
//
// A Form has: Vector (unsigned 16-bit depths), Lanes (a choice of some of its lanes), Interval
// (made of its two ends), and the functions that are called on them below.
#pragma once

#include "detection/detectionKernels.h"

namespace QVR {
namespace {

template <class Form>
constexpr std::ptrdiff_t vectorsInBlock = std::ptrdiff_t{blockColumns} / Form::lanes;

// The five rows that the neighbours of a row's pixels lie in.
struct NeighbourRows {
    NeighbourRows(const DepthView& image, std::uint32_t y, std::uint32_t radius) {
        const std::uint32_t rowsBelow = image.height - 1 - y;
        const auto above = [y](std::uint32_t distance) { return y > distance ? y - distance : 0; };
        const auto below = [y, rowsBelow](std::uint32_t distance) {
            return y + (rowsBelow > distance ? distance : rowsBelow);
        };
        const std::uint32_t rows[] = {above(2 * radius), above(radius), y, below(radius),
                                      below(2 * radius)};
        for (int i = 0; i < 5; ++i) {
            starts[i] = image.pixels + std::size_t{rows[i]} * image.width;
        }
    }

    const std::uint16_t* starts[5]; // from top to bottom
};

// Whether blocks, their edges and intervals are made for this image. A threshold of 0 and limits
// with nothing between them make no interval.
inline bool takesImage(const DepthView& image, const FlatnessSettings& settings) {
    return image.width >= blockColumns && settings.radius <= mostBlockRadius &&
           settings.threshold > 0 && settings.farLimit > settings.nearLimit + 1;
}

// A block at the left or right side of the image whose neighbours are partly beyond it: copies of
// the rows around it with two radii of columns on each side.
template <class Form>
class EdgeBlock {
  public:
    EdgeBlock(const NeighbourRows& rows, std::uint32_t width, std::uint32_t column,
              std::uint32_t radius)
        : reach_(2 * radius) {
        for (int i = 0; i < 5; ++i) {
            if (width < 2 * blockColumns + reach_) {
                copyNarrow(rows.starts[i], width, column, copies_[i]);
            } else if (column == 0) {
                copyLeft(rows.starts[i], copies_[i]);
            } else {
                copyRight(rows.starts[i], width, column, copies_[i]);
            }
        }
    }

    // The address of the block's first column in the copy of a row.
    const std::uint16_t* row(int i) const { return copies_[i] + reach_; }

  private:
    // In whole blocks: each store covers what the one before wrote too much.
    void copyLeft(const std::uint16_t* row, std::uint16_t* copy) const {
        fillBlock(row[0], copy);
        copyBlock(row, copy + reach_);
        copyBlock(row + reach_, copy + 2 * reach_);
    }

    void copyRight(const std::uint16_t* row, std::uint32_t width, std::uint32_t column,
                   std::uint16_t* copy) const {
        const std::uint32_t start = column - reach_;
        copyBlock(row + start, copy);
        copyBlock(row + column, copy + reach_);
        copyBlock(row + width - blockColumns, copy + (width - blockColumns - start));
        fillBlock(row[width - 1], copy + (width - start));
    }

    // In an image that ends within reach on both sides.
    void copyNarrow(const std::uint16_t* row, std::uint32_t width, std::uint32_t column,
                    std::uint16_t* copy) const {
        const std::int64_t last = std::int64_t{width} - 1;
        const std::int64_t start = std::int64_t{column} - reach_;
        for (std::int64_t i = 0; i < std::int64_t{blockColumns} + 2 * reach_; ++i) {
            const std::int64_t x = start + i;
            copy[i] = row[x < 0 ? 0 : x > last ? last : x];
        }
    }

    static void fillBlock(std::uint16_t value, std::uint16_t* to) {
        const typename Form::Vector all = Form::all(value);
        for (std::uint32_t i = 0; i < blockColumns; i += Form::lanes) {
            Form::store(all, to + i);
        }
    }

    static void copyBlock(const std::uint16_t* from, std::uint16_t* to) {
        for (std::uint32_t i = 0; i < blockColumns; i += Form::lanes) {
            Form::store(Form::load(from + i), to + i);
        }
    }

    // The last store begins where the block's right neighbours end, at the latest.
    static constexpr std::size_t room = 2 * blockColumns + 4 * mostBlockRadius;

    const std::uint32_t reach_;
    std::uint16_t copies_[5][room];
};

// Counts the same neighbours of blocks.
template <class Form>
class BlockCounter {
  public:
    using Vector = typename Form::Vector;
    using Counts = Vector[vectorsInBlock<Form>];

    BlockCounter(const DepthView& image, const FlatnessSettings& settings)
        : width_(image.width), radius_(settings.radius),
          difference_(Form::all(static_cast<std::uint16_t>(settings.threshold - 1))) {}

    void count(const NeighbourRows& rows, std::uint32_t column, Counts& counts) const {
        const std::uint32_t reach = 2 * radius_;
        if (column >= reach && width_ - column >= blockColumns + reach) {
            const auto inImage = [&rows, column](int i) { return rows.starts[i] + column; };
            countFrom(inImage, counts);
        } else {
            countAtEdge(rows, column, counts);
        }
    }

  private:
    [[gnu::noinline]] void countAtEdge(const NeighbourRows& rows, std::uint32_t column,
                                       Counts& counts) const {
        const EdgeBlock<Form> edge(rows, width_, column, radius_);
        countFrom([&edge](int i) { return edge.row(i); }, counts);
    }

    template <class RowAddress>
    void countFrom(const RowAddress& row, Counts& counts) const {
        for (std::ptrdiff_t i = 0; i < vectorsInBlock<Form>; ++i) {
            const std::ptrdiff_t x = i * Form::lanes;
            const Vector center = Form::load(row(2) + x);
            const typename Form::Interval same(Form::subtractHeld(center, difference_),
                                               Form::addHeld(center, difference_));
            counts[i] =
                countWithin(same, row(0) + x, row(1) + x, row(2) + x, row(3) + x, row(4) + x);
        }
    }

    Vector countWithin(const typename Form::Interval& same, const std::uint16_t* above2,
                       const std::uint16_t* above, const std::uint16_t* middle,
                       const std::uint16_t* below, const std::uint16_t* below2) const {
        const auto inner = static_cast<std::ptrdiff_t>(radius_);
        const std::ptrdiff_t outer = 2 * inner;
        Vector count = Form::all(16);
        const auto test = [&count, &same](const std::uint16_t* neighbours) {
            count = Form::oneLessWhere(count, Form::outside(same, Form::load(neighbours)));
        };
        const auto testThree = [&test](const std::uint16_t* row, std::ptrdiff_t distance) {
            test(row - distance);
            test(row);
            test(row + distance);
        };
        testThree(above2, outer);
        testThree(above, inner);
        test(middle - outer);
        test(middle - inner);
        test(middle + inner);
        test(middle + outer);
        testThree(below, inner);
        testThree(below2, outer);
        return count;
    }

    const std::uint32_t width_;
    const std::uint32_t radius_;
    const Vector difference_;
};

} // namespace
} // namespace QVR
