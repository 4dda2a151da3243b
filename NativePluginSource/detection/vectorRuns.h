// Run extraction from bits, written once for all vector forms and, like vectorFlatness.h, private
// to each form's source.
//
// A row's marks become words of 64 bits, bit i the i-th column, and three more words tell where
// something happens, whatever the lengths in between:
// - long enough: columns where minBlobSize + 1 marked pixels in a row end. The first of them after
//   a run was dropped or emitted is where a run can no longer be dropped;
// - ended: columns where the run's gap is complete. Between the two nothing drops the run, so its
//   length is the distance from its first to its last marked pixel;
// - openings: marked columns after a gap of minBlobSpace pixels. The last one before the end is
//   the run's start, be it in the run or before it.
// Each word is made from the row's word and the one before it, so settings up to 63 work. No
// column is lost at the row's end: the last word is read from the row's last 64 columns and
// shifted, and a run that is still open there is dropped as it should be.
#pragma once

#include "detection/detectionKernels.h"

namespace QVR {
namespace {

inline std::uint32_t lowestBit(std::uint64_t bits) {
    return static_cast<std::uint32_t>(__builtin_ctzll(bits));
}

inline std::uint32_t highestBit(std::uint64_t bits) {
    return wordColumns - 1 - static_cast<std::uint32_t>(__builtin_clzll(bits));
}

// Bits of `here` where `length` set bits in a row end; `before` is the word before. 1 to 63.
inline std::uint64_t endsOfStretches(std::uint64_t before, std::uint64_t here,
                                     std::uint32_t length) {
    for (std::uint32_t done = 1; done < length;) {
        const std::uint32_t step = done < length - done ? done : length - done;
        here &= (here << step) | (before >> (wordColumns - step));
        before &= before << step;
        done += step;
    }
    return here;
}

// Set bits of `here` with `space` unset ones before them; 0 to 63.
inline std::uint64_t afterGaps(std::uint64_t before, std::uint64_t here, std::uint32_t space) {
    if (space == 0) {
        return here;
    }
    // Set where a pixel is unmarked; shifted by one, so that stretches end beside the pixel.
    const std::uint64_t unmarked = (~here << 1) | (~before >> (wordColumns - 1));
    return here & endsOfStretches(~before << 1, unmarked, space);
}

template <class Form>
std::size_t findRunsInBits(const std::uint8_t* maskRow, std::uint32_t width,
                           const RunSettings& settings, BlobRun* runs) {
    constexpr std::uint32_t most = wordColumns - 1;
    // Runs that may come every few pixels cost more here than in the plain form.
    constexpr std::uint32_t shortestPeriod = 10;
    const std::uint32_t gap = settings.allowedBlobNoiseGap > 1 ? settings.allowedBlobNoiseGap : 1;
    if (width < wordColumns || settings.minBlobSize >= most || settings.minBlobSpace > most ||
        gap > most || settings.minBlobSize + 1 + gap < shortestPeriod) {
        return findRuns(maskRow, width, settings, runs);
    }
    const std::uint32_t size = settings.minBlobSize + 1;

    std::size_t found = 0;
    bool open = false;                        // a run is long enough
    std::uint32_t first = 0;                  // its first marked column
    std::uint32_t start = 0;                  // the last opening in the words before
    std::uint64_t before = 0;                 // the word before; no mark lies before the row,
    std::uint64_t spaced = ~std::uint64_t{0}; // but no gap does either
    for (std::uint32_t base = 0; base < width; base += wordColumns) {
        const std::uint32_t columns = width - base;
        const bool whole = columns >= wordColumns;
        const std::uint64_t here =
            whole ? Form::markBits(maskRow + base)
                  : Form::markBits(maskRow + width - wordColumns) >> (wordColumns - columns);
        if (here == 0 && !open) {
            before = 0;
            spaced = 0;
            continue;
        }
        const std::uint64_t inRow = whole ? ~std::uint64_t{0} : (std::uint64_t{1} << columns) - 1;
        const std::uint64_t longEnough = endsOfStretches(before, here, size);
        const std::uint64_t ended = endsOfStretches(~before, ~here, gap) & inRow;
        const std::uint64_t openings = afterGaps(spaced, here, settings.minBlobSpace);

        std::uint64_t ahead = ~std::uint64_t{0};
        while (const std::uint64_t events = (open ? ended : longEnough) & ahead) {
            const std::uint32_t bit = lowestBit(events);
            ahead = ~std::uint64_t{1} << bit;
            const std::uint32_t x = base + bit;
            if (open) {
                const std::uint64_t earlier = openings & ((std::uint64_t{1} << bit) - 1);
                const unsigned long from = earlier != 0 ? base + highestBit(earlier) : start;
                runs[found] = BlobRun{from, from + (x - gap + 1 - first)};
                found += 1;
            } else {
                first = x + 1 - size;
            }
            open = !open;
        }
        if (openings != 0) {
            start = base + highestBit(openings);
        }
        before = here;
        spaced = here;
    }
    return found;
}

} // namespace
} // namespace QVR
