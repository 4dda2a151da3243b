// Detection of one frame, beside a plain pass over the same pixels.
#include "benchImages.h"
#include "cases.h"
#include "memoryPass.h"

#include <benchmark/benchmark.h>

namespace bench {

namespace {

std::string memoryPassName(const literal::Image& image) {
    return "memoryPass/" + std::to_string(image.width) + "x" + std::to_string(image.height);
}

void countPixels(benchmark::State& state, const Scene& scene) {
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(scene.image.pixels.size()));
}

void memoryPassCase(benchmark::State& state, const Scene& scene) {
    std::vector<std::uint8_t> marks(scene.image.pixels.size());
    for (auto step : state) {
        memoryPass(scene.image.data(), marks.size(), marks.data());
        benchmark::ClobberMemory();
    }
    countPixels(state, scene);
}

void processFrameCase(benchmark::State& state, const Scene& scene) {
    QVR::blobManager manager;
    if (!prepare(manager, scene)) {
        state.SkipWithError("the result is wrong");
    }
    for (auto step : state) {
        manager.processFrame(scene.image.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image));
    countPixels(state, scene);
}

void extractBlobsCase(benchmark::State& state, const Scene& scene) {
    QVR::blobManager manager;
    if (!prepare(manager, scene)) {
        state.SkipWithError("the result is wrong");
    }
    for (auto step : state) {
        manager.extractBlobs(scene.image.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image));
    countPixels(state, scene);
}

} // namespace

void registerDetection() {
    for (const Scene& scene : {sparseScene(640, 480), sparseScene(1920, 1080)}) {
        benchmark::RegisterBenchmark(memoryPassName(scene.image).c_str(), memoryPassCase, scene);
    }
    for (const Scene& scene : allScenes()) {
        benchmark::RegisterBenchmark(("processFrame/" + scene.name).c_str(), processFrameCase,
                                     scene);
        benchmark::RegisterBenchmark(("extractBlobs/" + scene.name).c_str(), extractBlobsCase,
                                     scene);
    }
}

} // namespace bench
