// What people would use instead: a general vision library finds regions and converts pictures.
#include "benchImages.h"
#include "cases.h"
#include "literalTextures.h"

#include <algorithm>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace bench {

namespace {

// The usual recipe for touches from depth: the band between the clips, then its connected parts
// with their sizes and centres. Neither tests flatness nor cuts at the nearest finger.
void regionsCase(benchmark::State& state, const Scene& scene) {
    const int width = static_cast<int>(scene.image.width);
    const int height = static_cast<int>(scene.image.height);
    std::vector<std::uint16_t> pixels = scene.image.pixels;
    const cv::Mat depth(height, width, CV_16UC1, pixels.data());
    cv::Mat inRange;
    cv::Mat labels;
    cv::Mat statistics;
    cv::Mat centers;
    const auto lower = static_cast<double>(scene.settings.nearNoiseCutoff) + 1.0;
    const auto upper = static_cast<double>(scene.settings.farLimit) - 1.0;
    for (auto step : state) {
        cv::inRange(depth, cv::Scalar(lower), cv::Scalar(upper), inRange);
        benchmark::DoNotOptimize(
            cv::connectedComponentsWithStats(inRange, labels, statistics, centers));
    }
    state.SetLabel("memoryPass/" + std::to_string(width) + "x" + std::to_string(height));
}

void convertCase(benchmark::State& state, cv::Size size, int channels, int code) {
    const auto samples = static_cast<std::size_t>(channels);
    std::vector<unsigned char> picture =
        patternPicture(static_cast<std::size_t>(size.area()), samples);
    const cv::Mat source(size, CV_8UC(channels), picture.data());
    cv::Mat rgba(size, CV_8UC4);
    for (auto step : state) {
        cv::cvtColor(source, rgba, code);
        benchmark::ClobberMemory();
    }
    const std::vector<unsigned char> expected = literalRgba(picture, samples);
    if (!std::equal(expected.begin(), expected.end(), rgba.data)) {
        state.SkipWithError("not the same picture");
    }
    state.SetLabel("memcpyOfRgba/" + std::to_string(size.width) + "x" +
                   std::to_string(size.height));
}

} // namespace

void registerOpenCv() {
    cv::setNumThreads(1); // as everything it is compared with
    for (const Scene& scene : allScenes()) {
        benchmark::RegisterBenchmark(("instead:opencv/detectFrame/" + scene.name).c_str(),
                                     regionsCase, scene);
    }
    for (const cv::Size size : {cv::Size(640, 480), cv::Size(1920, 1080)}) {
        const std::string name = std::to_string(size.width) + "x" + std::to_string(size.height);
        benchmark::RegisterBenchmark(("instead:opencv/colorToRgba/" + name).c_str(), convertCase,
                                     size, 3, cv::COLOR_RGB2RGBA);
        benchmark::RegisterBenchmark(("instead:opencv/maskToRgba/" + name).c_str(), convertCase,
                                     size, 1, cv::COLOR_GRAY2RGBA);
    }
}

} // namespace bench
