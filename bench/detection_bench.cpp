// Detection of one frame in each form that this processor has, beside a plain pass over the same
// pixels and beside the form without any of them.
#include "benchImages.h"
#include "cases.h"
#include "detection/detectionKernels.h"
#include "memoryPass.h"
#include "scalarDetection.h"

#include <benchmark/benchmark.h>

namespace bench {

namespace {

const char* const formNames[] = {"plain", "sse", "avx2", "avx512"};

std::string memoryPassName(const literal::Image& image) {
    return "memoryPass/" + std::to_string(image.width) + "x" + std::to_string(image.height);
}

void countPixels(benchmark::State& state, const literal::Image& image) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(image.pixels.size()));
}

void memoryPassCase(benchmark::State& state, const Scene& scene) {
    std::vector<std::uint8_t> marks(scene.image.pixels.size());
    for (auto step : state) {
        memoryPass(scene.image.data(), marks.size(), marks.data());
        benchmark::ClobberMemory();
    }
    countPixels(state, scene.image);
}

// A blob manager set up for the scene, with a form forced as long as the case runs.
class ForcedManager {
  public:
    ForcedManager(benchmark::State& state, const Scene& scene, const char* form) {
        QVR::forceKernels(*QVR::findKernels(form));
        if (manager.getKernelReadout() != form || !prepare(manager, scene)) {
            state.SkipWithError("the result is wrong");
        }
    }
    ~ForcedManager() { QVR::forceKernels(QVR::chooseKernels(nullptr)); }
    ForcedManager(const ForcedManager&) = delete;
    ForcedManager& operator=(const ForcedManager&) = delete;

    QVR::blobManager manager;
};

void scalarProcessFrameCase(benchmark::State& state, const Scene& scene) {
    QVR::blobManager expected;
    std::vector<std::uint8_t> mask(scene.image.pixels.size());
    const std::uint16_t cut = scalarProcessFrame(scene.image, scene.settings, 0, mask.data());
    if (!prepare(expected, scene) || mask != expected.mask || cut != expected.cutoffDepth) {
        state.SkipWithError("the result is wrong");
    }
    for (auto step : state) {
        benchmark::DoNotOptimize(scalarProcessFrame(scene.image, scene.settings, cut, mask.data()));
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image));
    countPixels(state, scene.image);
}

void processFrameCase(benchmark::State& state, const Scene& scene, const char* form) {
    ForcedManager forced(state, scene, form);
    for (auto step : state) {
        forced.manager.processFrame(scene.image.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image) + " processFrame/" + scene.name + "/scalar");
    countPixels(state, scene.image);
}

void extractBlobsCase(benchmark::State& state, const Scene& scene, const char* form) {
    ForcedManager forced(state, scene, form);
    for (auto step : state) {
        forced.manager.extractBlobs(scene.image.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image) + " extractBlobs/" + scene.name + "/plain");
    countPixels(state, scene.image);
}

void wholeFrameCase(benchmark::State& state, const Scene& scene, const char* form) {
    ForcedManager forced(state, scene, form);
    for (auto step : state) {
        forced.manager.processFrame(scene.image.data());
        forced.manager.extractBlobs(scene.image.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image) + " wholeFrame/" + scene.name + "/plain");
    countPixels(state, scene.image);
}

QVR::DepthView viewOf(const Scene& scene) {
    return {scene.image.data(), scene.image.width, scene.image.height};
}

QVR::FlatnessSettings flatnessOf(const Scene& scene) {
    return {scene.settings.nearNoiseCutoff, scene.settings.farLimit, scene.settings.flatnessRadius,
            scene.settings.flatnessThreshold};
}

std::vector<std::uint8_t> roomForCounted(const Scene& scene) {
    return std::vector<std::uint8_t>(QVR::blocksInRow(scene.image.width) * scene.image.height);
}

void findNearestCase(benchmark::State& state, const Scene& scene, const char* form) {
    const QVR::DetectionKernels& kernels = *QVR::findKernels(form);
    std::vector<std::uint8_t> marks(scene.image.pixels.size());
    std::vector<std::uint8_t> counted = roomForCounted(scene);
    for (auto step : state) {
        benchmark::DoNotOptimize(
            kernels.findNearest(viewOf(scene), flatnessOf(scene), counted.data(), marks.data()));
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image) + " findNearest/" + scene.name + "/plain");
}

// Completes the same marks again and again: as many blocks are to be counted or cut as in a new
// frame.
void markUpToCase(benchmark::State& state, const Scene& scene, const char* form) {
    ForcedManager forced(state, scene, form);
    const QVR::DetectionKernels& kernels = *QVR::findKernels(form);
    std::vector<std::uint8_t> counted = roomForCounted(scene);
    kernels.findNearest(viewOf(scene), flatnessOf(scene), counted.data(),
                        forced.manager.mask.data());
    for (auto step : state) {
        kernels.markUpTo(viewOf(scene), flatnessOf(scene), forced.manager.cutoffDepth,
                         counted.data(), forced.manager.mask.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(memoryPassName(scene.image) + " markUpTo/" + scene.name + "/plain");
}

struct MaskImage {
    std::string name;
    std::vector<std::uint8_t> marks;
    std::uint32_t width;
    QVR::RunSettings settings;
};

MaskImage maskOf(const Scene& scene) {
    QVR::blobManager manager;
    prepare(manager, scene);
    return {scene.name,
            manager.mask,
            scene.image.width,
            {scene.settings.minBlobSize, scene.settings.minBlobSpace,
             scene.settings.allowedBlobNoiseGap}};
}

// Masks that no surface leaves, but noise may come near to: marks and gaps as short as can be,
// and runs that just count, one after the other.
MaskImage stripedMask(const char* name, std::uint32_t marked, std::uint32_t period) {
    MaskImage mask{name, std::vector<std::uint8_t>(std::size_t{640} * 480), 640, {11, 3, 3}};
    for (std::size_t i = 0; i < mask.marks.size(); ++i) {
        mask.marks[i] = i % period < marked ? 16 : 0;
    }
    return mask;
}

void findRunsCase(benchmark::State& state, const MaskImage& mask, const char* form) {
    const QVR::DetectionKernels& kernels = *QVR::findKernels(form);
    std::vector<QVR::BlobRun> runs(QVR::mostRuns(mask.width));
    for (auto step : state) {
        for (std::size_t row = 0; row < mask.marks.size(); row += mask.width) {
            benchmark::DoNotOptimize(
                kernels.findRuns(mask.marks.data() + row, mask.width, mask.settings, runs.data()));
        }
        benchmark::ClobberMemory();
    }
    state.SetLabel("- findRuns/" + mask.name + "/plain");
}

// The blob of a hand held flat before the camera.
void addRowToCenterCase(benchmark::State& state, const char* form) {
    const QVR::DetectionKernels& kernels = *QVR::findKernels(form);
    const Scene scene = sparseScene(640, 480);
    for (auto step : state) {
        QVR::CenterSums sums;
        for (std::uint32_t y = 0; y < 200; ++y) {
            kernels.addRowToCenter(scene.image.data() + std::size_t{y} * 640, 10, 309, y, 1100, 45,
                                   sums);
        }
        benchmark::DoNotOptimize(sums);
    }
    state.SetLabel("- addRowToCenter/300x200/plain");
}

} // namespace

void registerDetection() {
    for (const Scene& scene : {sparseScene(640, 480), sparseScene(1920, 1080)}) {
        benchmark::RegisterBenchmark(memoryPassName(scene.image).c_str(), memoryPassCase, scene);
    }
    std::vector<MaskImage> masks = {stripedMask("everyOther", 1, 2),
                                    stripedMask("shortRuns", 12, 15)};
    for (const Scene& scene : allScenes()) {
        masks.push_back(maskOf(scene));
        benchmark::RegisterBenchmark(("processFrame/" + scene.name + "/scalar").c_str(),
                                     scalarProcessFrameCase, scene);
    }
    for (const char* form : formNames) {
        if (QVR::findKernels(form) == nullptr) {
            continue;
        }
        const auto add = [form](const std::string& name, const auto& function, const auto& input) {
            benchmark::RegisterBenchmark((name + "/" + form).c_str(), function, input, form);
        };
        for (const Scene& scene : allScenes()) {
            add("processFrame/" + scene.name, processFrameCase, scene);
            add("findNearest/" + scene.name, findNearestCase, scene);
            add("markUpTo/" + scene.name, markUpToCase, scene);
            add("extractBlobs/" + scene.name, extractBlobsCase, scene);
            add("wholeFrame/" + scene.name, wholeFrameCase, scene);
        }
        for (const MaskImage& mask : masks) {
            add("findRuns/" + mask.name, findRunsCase, mask);
        }
        benchmark::RegisterBenchmark((std::string("addRowToCenter/300x200/") + form).c_str(),
                                     addRowToCenterCase, form);
    }
}

} // namespace bench
