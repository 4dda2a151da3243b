// The two passes over a whole image, written once for all vector forms. Only a form's own source
// includes this: everything in it is private to that source, because the same code compiled for
// wider registers must never be taken for the narrow one by the linker. For the same reason there
// is no standard library in it.
//
// An image row is cut into blocks of 32 columns, whatever the vectors' width. A block reads its
// own pixels and the sixteen blocks that lie one and two radii away in eight directions. Nothing
// is lost at an edge:
// - above and below, rows are held at the image's border by choosing the row's address;
// - left and right, where a neighbour's column may lie outside, a block reads from strips instead
//   of the image: copies of a row's first and last columns with the border pixel repeated beyond.
//   A row's strips are made when the row comes within reach and are kept in a ring as long as it
//   stays there;
// - the last block of a row overlaps the one before it. It computes the same marks once more.
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

// A block's neighbours: each row's address of the column that the block's first pixel is in.
struct BlockRows {
    const std::uint16_t* above2;
    const std::uint16_t* above;
    const std::uint16_t* middle;
    const std::uint16_t* below;
    const std::uint16_t* below2;
};

// Copies of the ends of the image rows that are within reach of the current one. A right strip
// begins two radii before the image's last 64 columns, a left one two radii before the first.
template <class Form>
class Strips {
  public:
    Strips(const DepthView& image, std::uint32_t radius, std::uint16_t* room)
        : image_(image), reach_(2 * radius), slots_(4 * radius + 1), room_(room) {}

    // Makes the strips of all rows up to the last that row y needs. Rows ask in order.
    void prepareFor(std::uint32_t y) {
        const std::uint32_t last = image_.height - 1 - y > reach_ ? y + reach_ : image_.height - 1;
        for (; made_ <= last; ++made_) {
            const std::uint16_t* const row = image_.pixels + std::size_t{made_} * image_.width;
            if (image_.width >= 2 * blockColumns + reach_) {
                copyEnds(row, strip(made_));
            } else {
                copyNarrow(row, strip(made_));
            }
        }
    }

    const std::uint16_t* left(std::uint32_t y) const { return strip(y) + reach_; }

    // The address of the column, which is one of the image's last 64.
    const std::uint16_t* right(std::uint32_t y, std::uint32_t column) const {
        return strip(y) + stripColumns + reach_ + (column + 2 * blockColumns - image_.width);
    }

  private:
    std::uint16_t* strip(std::uint32_t y) const {
        return room_ + std::size_t{y % slots_} * 2 * stripColumns;
    }

    // In whole blocks: each store covers what the one before wrote too much.
    void copyEnds(const std::uint16_t* row, std::uint16_t* left) const {
        std::uint16_t* const right = left + stripColumns;
        const std::uint16_t* const tail = row + image_.width - 2 * blockColumns;
        fillBlock(row[0], left);
        copyBlock(row, left + reach_);
        copyBlock(row + reach_, left + 2 * reach_);
        copyBlock(tail - reach_, right);
        copyBlock(tail, right + reach_);
        copyBlock(tail + blockColumns, right + reach_ + blockColumns);
        fillBlock(tail[2 * blockColumns - 1], right + reach_ + 2 * blockColumns);
    }

    // In an image that ends within a strip.
    void copyNarrow(const std::uint16_t* row, std::uint16_t* left) const {
        const std::int64_t last = std::int64_t{image_.width} - 1;
        const auto held = [row, last](std::int64_t x) {
            return row[x < 0 ? 0 : x > last ? last : x];
        };
        const std::int64_t rightStart = last + 1 - 2 * blockColumns;
        for (std::int64_t i = 0; i < std::int64_t{2 * blockColumns + 2 * reach_}; ++i) {
            left[i] = held(i - reach_);
            left[std::int64_t{stripColumns} + i] = held(rightStart + i - reach_);
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

    const DepthView image_;
    const std::uint32_t reach_;
    const std::uint32_t slots_;
    std::uint16_t* const room_;
    std::uint32_t made_ = 0;
};

// Marks blocks and remembers what it saw.
template <class Form>
class BlockMarker {
  public:
    using Vector = typename Form::Vector;
    using Lanes = typename Form::Lanes;

    explicit BlockMarker(const FlatnessSettings& settings)
        : radius_(settings.radius),
          range_(Form::all(static_cast<std::uint16_t>(settings.nearLimit + 1)),
                 Form::all(static_cast<std::uint16_t>(settings.farLimit - 1))),
          difference_(Form::all(static_cast<std::uint16_t>(settings.threshold - 1))),
          nearest_(Form::all(static_cast<std::uint16_t>(noFlatPixel))) {}

    // Marks so many blocks side by side. What they share is held in local variables, for the
    // compiler must take every written mark for a change of any member.
    void mark(const BlockRows rows, std::uint32_t blocks, std::uint8_t* marks) {
        const typename Form::Interval range = range_;
        const Vector difference = difference_;
        const auto radius = static_cast<std::ptrdiff_t>(radius_);
        Vector nearest = nearest_;
        bool anyInRange = anyInRange_;
        const std::ptrdiff_t end = std::ptrdiff_t{blocks} * blockColumns;
        for (std::ptrdiff_t x = 0; x < end; x += blockColumns) {
            Vector centers[vectors];
            Lanes ignored[vectors];
            for (std::ptrdiff_t i = 0; i < vectors; ++i) {
                centers[i] = Form::load(rows.middle + x + i * Form::lanes);
                ignored[i] = Form::outside(range, centers[i]);
            }
            if (Form::everyLane(ignored)) {
                Form::storeNoMarks(marks + x);
                continue;
            }
            anyInRange = true;
            Vector counts[vectors];
            for (std::ptrdiff_t i = 0; i < vectors; ++i) {
                const typename Form::Interval same(Form::subtractHeld(centers[i], difference),
                                                   Form::addHeld(centers[i], difference));
                counts[i] = Form::clearWhere(countWithin(same, rows, x + i * Form::lanes, radius),
                                             ignored[i]);
                const Lanes notFlat = Form::lessThan(counts[i], Form::all(flatMark));
                nearest = Form::least(nearest, Form::fillWhere(centers[i], notFlat));
            }
            Form::storeMarks(counts, marks + x);
        }
        nearest_ = nearest;
        anyInRange_ = anyInRange;
    }

    FlatnessResult result() const {
        std::uint16_t values[Form::lanes];
        Form::store(nearest_, values);
        std::uint32_t nearest = noFlatPixel;
        for (const std::uint16_t value : values) {
            nearest = value < nearest ? value : nearest;
        }
        return FlatnessResult{anyInRange_, nearest};
    }

  private:
    static constexpr std::ptrdiff_t vectors = blockColumns / Form::lanes;

    static Vector countWithin(const typename Form::Interval& same, const BlockRows& rows,
                              std::ptrdiff_t x, std::ptrdiff_t inner) {
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
        testThree(rows.above2 + x, outer);
        testThree(rows.above + x, inner);
        test(rows.middle + x - outer);
        test(rows.middle + x - inner);
        test(rows.middle + x + inner);
        test(rows.middle + x + outer);
        testThree(rows.below + x, inner);
        testThree(rows.below2 + x, outer);
        return count;
    }

    const std::uint32_t radius_;
    const typename Form::Interval range_;
    const Vector difference_;
    Vector nearest_;
    bool anyInRange_ = false;
};

// Whether the blocks, strips and intervals are made for this image. A threshold of 0 and limits
// with nothing between them make no interval.
inline bool takesImage(const DepthView& image, const FlatnessSettings& settings) {
    return image.width >= blockColumns && settings.radius <= mostStripRadius &&
           settings.threshold > 0 && settings.farLimit > settings.nearLimit + 1;
}

template <class Form>
FlatnessResult markFlatBlocks(const DepthView& image, const FlatnessSettings& settings,
                              std::uint16_t* stripRoom, std::uint8_t* mask) {
    if (!takesImage(image, settings)) {
        return markFlatPixels(image, settings, mask);
    }
    const std::uint32_t radius = settings.radius;
    const std::uint32_t width = image.width;
    // Blocks after the first whose neighbours all lie in the image.
    const std::uint32_t innerBlocks =
        width > 2 * blockColumns + 2 * radius ? (width - 2 * radius) / blockColumns - 1 : 0;
    Strips<Form> strips(image, radius, stripRoom);
    BlockMarker<Form> marker(settings);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        strips.prepareFor(y);
        const std::uint32_t rowsBelow = image.height - 1 - y;
        const std::uint32_t above2 = y > 2 * radius ? y - 2 * radius : 0;
        const std::uint32_t above = y > radius ? y - radius : 0;
        const std::uint32_t below = y + (rowsBelow > radius ? radius : rowsBelow);
        const std::uint32_t below2 = y + (rowsBelow > 2 * radius ? 2 * radius : rowsBelow);
        std::uint8_t* const maskRow = mask + std::size_t{y} * width;

        marker.mark({strips.left(above2), strips.left(above), strips.left(y), strips.left(below),
                     strips.left(below2)},
                    1, maskRow);
        const auto inImage = [&image](std::uint32_t row) {
            return image.pixels + std::size_t{row} * image.width + blockColumns;
        };
        marker.mark({inImage(above2), inImage(above), inImage(y), inImage(below), inImage(below2)},
                    innerBlocks, maskRow + blockColumns);
        for (std::uint32_t x = (1 + innerBlocks) * blockColumns; x < width; x += blockColumns) {
            const std::uint32_t column = x < width - blockColumns ? x : width - blockColumns;
            marker.mark({strips.right(above2, column), strips.right(above, column),
                         strips.right(y, column), strips.right(below, column),
                         strips.right(below2, column)},
                        1, maskRow + column);
        }
    }
    return marker.result();
}

// Blocks without a mark need no look at the depths. The last block overlaps, clearing twice.
template <class Form>
void clearBlocksBeyondCut(const unsigned short* depth, std::size_t pixelCount, std::uint16_t cut,
                          std::uint8_t* mask) {
    if (pixelCount < blockColumns) {
        clearBeyondCut(depth, pixelCount, cut, mask);
        return;
    }
    const typename Form::Interval kept(Form::all(0), Form::all(cut));
    for (std::size_t i = 0; i < pixelCount; i += blockColumns) {
        const std::size_t block = i < pixelCount - blockColumns ? i : pixelCount - blockColumns;
        if (!Form::anyMark(mask + block)) {
            continue;
        }
        typename Form::Lanes beyond[blockColumns / Form::lanes];
        for (std::size_t part = 0; part < blockColumns / Form::lanes; ++part) {
            beyond[part] = Form::outside(kept, Form::load(depth + block + part * Form::lanes));
        }
        Form::clearMarks(beyond, mask + block);
    }
}

} // namespace
} // namespace QVR
