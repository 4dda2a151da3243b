// Every form of the texture conversion that this processor has, beside memcpy of the bytes that
// come out (see textures_bench.cpp).
#include "cases.h"
#include "foundation/textureForms.h"

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

template <typename Sample>
using Convert = void (*)(const Sample*, std::size_t, unsigned char*);

template <typename Sample>
void convertCase(benchmark::State& state, std::size_t pixels, std::size_t samplesPerPixel,
                 Convert<Sample> convert, const std::string& limit) {
    const std::vector<Sample> source(samplesPerPixel * pixels, Sample{77});
    std::vector<unsigned char> rgba(4 * pixels);
    for (auto step : state) {
        convert(source.data(), pixels, rgba.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(limit);
}

template <typename Sample>
void add(const std::string& name, std::size_t pixels, std::size_t samplesPerPixel,
         Convert<Sample> convert, const std::string& limit) {
    benchmark::RegisterBenchmark(name.c_str(), convertCase<Sample>, pixels, samplesPerPixel,
                                 convert, limit);
}

} // namespace

void registerTextureForms() {
    for (const char* name : {"plain", "ssse3", "avx2"}) {
        const QVR::TextureForm* const form = QVR::findTextureForm(name);
        if (form == nullptr) {
            continue;
        }
        for (const auto& [width, height] : {std::pair{640U, 480U}, std::pair{1920U, 1080U}}) {
            const std::size_t pixels = std::size_t{width} * height;
            const std::string size = std::to_string(width) + "x" + std::to_string(height);
            const std::string place = "/" + size + "/" + name;
            const std::string limit = "memcpyOfRgba/" + size;
            add("colorToRgba" + place, pixels, 3, form->colorToRgba, limit);
            add("depthToRgba" + place, pixels, 1, form->depthToRgba, limit);
            add("maskToRgba" + place, pixels, 1, form->maskToRgba, limit);
        }
    }
}

} // namespace bench
