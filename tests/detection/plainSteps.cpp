#include "plainSteps.h"

#include "detection/blobRuns.h"
#include "detection/centerSums.h"
#include "detection/flatnessMask.h"

namespace {

std::size_t marks = 0;
std::size_t cuts = 0;
std::size_t runs = 0;
std::size_t sums = 0;

} // namespace

namespace literal {

std::size_t plainMarks() {
    return marks;
}
std::size_t plainCuts() {
    return cuts;
}
std::size_t plainRuns() {
    return runs;
}
std::size_t plainSums() {
    return sums;
}

} // namespace literal

// The names are the linker's: __wrap_ and __real_ before the mangled name.
#define REAL(name) asm("__real_" name)
#define WRAP(name) asm("__wrap_" name)

#define MARK "_ZN3QVR14markFlatPixelsERKNS_9DepthViewERKNS_16FlatnessSettingsEPh"
#define CUT "_ZN3QVR14clearBeyondCutEPKtmtPh"
#define RUNS "_ZN3QVR8findRunsEPKhjRKNS_11RunSettingsEPNS_7BlobRunE"
#define SUMS "_ZN3QVR14addRowToCenterEPKtjjjtjRNS_10CenterSumsE"

QVR::FlatnessResult realMark(const QVR::DepthView&, const QVR::FlatnessSettings&, std::uint8_t*)
    REAL(MARK);
void realCut(const unsigned short*, std::size_t, std::uint16_t, std::uint8_t*) REAL(CUT);
std::size_t realRuns(const std::uint8_t*, std::uint32_t, const QVR::RunSettings&, QVR::BlobRun*)
    REAL(RUNS);
void realSums(const unsigned short*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
              std::uint32_t, QVR::CenterSums&) REAL(SUMS);

QVR::FlatnessResult countedMark(const QVR::DepthView&, const QVR::FlatnessSettings&, std::uint8_t*)
    WRAP(MARK);
void countedCut(const unsigned short*, std::size_t, std::uint16_t, std::uint8_t*) WRAP(CUT);
std::size_t countedRuns(const std::uint8_t*, std::uint32_t, const QVR::RunSettings&, QVR::BlobRun*)
    WRAP(RUNS);
void countedSums(const unsigned short*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                 std::uint32_t, QVR::CenterSums&) WRAP(SUMS);

QVR::FlatnessResult countedMark(const QVR::DepthView& image, const QVR::FlatnessSettings& settings,
                                std::uint8_t* mask) {
    marks += 1;
    return realMark(image, settings, mask);
}

void countedCut(const unsigned short* depth, std::size_t pixelCount, std::uint16_t cut,
                std::uint8_t* mask) {
    cuts += 1;
    realCut(depth, pixelCount, cut, mask);
}

std::size_t countedRuns(const std::uint8_t* maskRow, std::uint32_t width,
                        const QVR::RunSettings& settings, QVR::BlobRun* found) {
    runs += 1;
    return realRuns(maskRow, width, settings, found);
}

void countedSums(const unsigned short* depthRow, std::uint32_t first, std::uint32_t last,
                 std::uint32_t y, std::uint16_t cutoff, std::uint32_t bias,
                 QVR::CenterSums& result) {
    sums += 1;
    realSums(depthRow, first, last, y, cutoff, bias, result);
}
