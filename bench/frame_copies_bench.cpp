// What the server does to a frame's bytes on their way out: the reduced depth image beside a plain
// indexed copy, the frame for the network beside memcpy of as many bytes.
#include "FrameLayout.h"
#include "cases.h"
#include "detection/ImageDownsampler.h"

#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

struct Size {
    unsigned int width;
    unsigned int height;
    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
    std::size_t pixels() const { return std::size_t{width} * height; }
};

struct Reduction {
    Size from;
    Size to;
    std::string name() const { return from.name() + "To" + to.name(); }
    QVR::ImageDownsampler downsampler() const {
        return {from.width, from.height, to.width, to.height};
    }
};

std::string copyName(const Reduction& reduction) {
    return "indexedCopy/" + reduction.name();
}

void indexedCopyCase(benchmark::State& state, Reduction reduction) {
    const QVR::ImageDownsampler downsampler = reduction.downsampler();
    const std::vector<unsigned short> source(reduction.from.pixels(), 1234);
    std::vector<unsigned short> target(reduction.to.pixels());
    const int* const map = downsampler.sourceIndexMap.get();
    for (auto step : state) {
        const unsigned short* const in = source.data();
        unsigned short* const out = target.data();
        const std::size_t count = target.size();
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = in[map[i]];
        }
        benchmark::ClobberMemory();
    }
}

void downsampleCase(benchmark::State& state, Reduction reduction) {
    QVR::ImageDownsampler downsampler = reduction.downsampler();
    const std::vector<unsigned short> source(reduction.from.pixels(), 1234);
    for (auto step : state) {
        benchmark::DoNotOptimize(downsampler.downSample16bitImage(source.data()));
        benchmark::ClobberMemory();
    }
    state.SetLabel(copyName(reduction));
}

// Ten touches, colour, depth and marks.
QVR::ProtocolHeader everyStream(Size color) {
    QVR::ProtocolHeader header;
    header.touchCount = 10;
    header.colorX = color.width;
    header.colorY = color.height;
    header.colorChannels = 3;
    header.depthX = header.processedX = 640;
    header.depthY = header.processedY = 480;
    header.depthDepth = 2;
    header.colorDepth = header.depthChannels = 1;
    header.processedChannels = header.processedDepth = 1;
    return header;
}

std::string frameCopyName(Size color) {
    return "memcpyOfFrame/" + color.name();
}

void frameCopyCase(benchmark::State& state, Size color) {
    const std::vector<std::byte> source(server::FrameLayout(everyStream(color)).frameBytes(),
                                        std::byte{77});
    std::vector<std::byte> target(source.size());
    for (auto step : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
}

void composeCase(benchmark::State& state, Size color) {
    const server::FrameLayout layout(everyStream(color));
    const std::vector<QVR::NetworkTouch> touches(10);
    const std::vector<unsigned char> colors(layout.colorBytes(), 77);
    const std::vector<unsigned short> depth(layout.depthBytes() / 2, 77);
    const std::vector<unsigned char> marks(layout.processedBytes(), 7);
    const QVR::networkFrameData parts{touches.data(), colors.data(), depth.data(), marks.data()};
    std::vector<std::byte> frame(layout.frameBytes());
    for (auto step : state) {
        layout.compose(parts, {}, frame);
        benchmark::ClobberMemory();
    }
    state.SetLabel(frameCopyName(color));
}

} // namespace

void registerFrameCopies() {
    for (const Reduction reduction :
         {Reduction{{640, 480}, {320, 240}}, Reduction{{1920, 1080}, {640, 480}}}) {
        benchmark::RegisterBenchmark(copyName(reduction).c_str(), indexedCopyCase, reduction);
        benchmark::RegisterBenchmark(("downSample16bitImage/" + reduction.name()).c_str(),
                                     downsampleCase, reduction);
    }
    for (const Size color : {Size{640, 480}, Size{1920, 1080}}) {
        benchmark::RegisterBenchmark(frameCopyName(color).c_str(), frameCopyCase, color);
        benchmark::RegisterBenchmark(("composeFrame/" + color.name()).c_str(), composeCase, color);
    }
}

} // namespace bench
