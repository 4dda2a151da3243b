// Conversion of received images for the host, beside memcpy of the bytes that come out.
#include "cases.h"
#include "foundation/textureConversion.h"

#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

struct Size {
    std::size_t width;
    std::size_t height;
    std::size_t pixels() const { return width * height; }
    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

std::string limitName(const Size& size) {
    return "memcpyOfRgba/" + size.name();
}

void copyCase(benchmark::State& state, Size size) {
    const std::vector<unsigned char> source(4 * size.pixels(), 77);
    std::vector<unsigned char> target(source.size());
    for (auto step : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
}

template <typename Sample, typename Convert>
void convertCase(benchmark::State& state, Size size, std::size_t samplesPerPixel, Convert convert) {
    const std::vector<Sample> source(samplesPerPixel * size.pixels(), Sample{77});
    std::vector<unsigned char> rgba(4 * size.pixels());
    for (auto step : state) {
        convert(source, size.pixels(), rgba.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(limitName(size));
}

void colorCase(benchmark::State& state, Size size) {
    convertCase<unsigned char>(state, size, 3, QVR::colorToRgba);
}

void depthCase(benchmark::State& state, Size size) {
    convertCase<unsigned short>(state, size, 1, QVR::depthToRgba);
}

void maskCase(benchmark::State& state, Size size) {
    convertCase<unsigned char>(state, size, 1, QVR::maskToRgba);
}

} // namespace

void registerTextures() {
    for (const Size size : {Size{640, 480}, Size{1920, 1080}}) {
        benchmark::RegisterBenchmark(limitName(size).c_str(), copyCase, size);
        benchmark::RegisterBenchmark(("colorToRgba/" + size.name()).c_str(), colorCase, size);
        benchmark::RegisterBenchmark(("depthToRgba/" + size.name()).c_str(), depthCase, size);
        benchmark::RegisterBenchmark(("maskToRgba/" + size.name()).c_str(), maskCase, size);
    }
}

} // namespace bench
