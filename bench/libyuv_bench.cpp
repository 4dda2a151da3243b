// What people would use instead: a library of picture conversions.
#include "cases.h"
#include "literalTextures.h"

#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <libyuv/convert_argb.h>

namespace bench {

namespace {

struct Size {
    int width;
    int height;
    std::size_t pixels() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

// The library names bytes from the highest of a little-endian word, so what it calls 24-bit RGB
// and ARGB keeps the order of the three bytes and puts 255 behind them, as ours does.
void convertCase(benchmark::State& state, Size size, int channels,
                 int (*convert)(const std::uint8_t*, int, std::uint8_t*, int, int, int)) {
    const auto samples = static_cast<std::size_t>(channels);
    const std::vector<unsigned char> source = patternPicture(size.pixels(), samples);
    std::vector<unsigned char> rgba(4 * size.pixels());
    for (auto step : state) {
        convert(source.data(), channels * size.width, rgba.data(), 4 * size.width, size.width,
                size.height);
        benchmark::ClobberMemory();
    }
    if (rgba != literalRgba(source, samples)) {
        state.SkipWithError("not the same picture");
    }
    state.SetLabel("memcpyOfRgba/" + size.name());
}

} // namespace

void registerLibyuv() {
    for (const Size size : {Size{640, 480}, Size{1920, 1080}}) {
        benchmark::RegisterBenchmark(("instead:libyuv/colorToRgba/" + size.name()).c_str(),
                                     convertCase, size, 3, libyuv::RGB24ToARGB);
        benchmark::RegisterBenchmark(("instead:libyuv/maskToRgba/" + size.name()).c_str(),
                                     convertCase, size, 1, libyuv::J400ToARGB);
    }
}

} // namespace bench
