// Detection over the size of the image and the number of fingertips in it, and whole frames.
#include "benchImages.h"
#include "cases.h"
#include "detection/touchManager.h"
#include "memoryPass.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 4> sizes{
    {{320, 240}, {640, 480}, {1280, 720}, {1920, 1080}}};
constexpr std::array<std::uint32_t, 5> blobCounts{0, 1, 2, 5, 10};

// One scene and the detection set up for it, made and compared with the literal algorithm at
// the first use: that comparison takes longer than a measurement.
class Subject {
  public:
    explicit Subject(Scene of) : scene(std::move(of)) {}

    bool ready() {
        if (!prepared_) {
            right_ = prepare(manager, scene);
            prepared_ = true;
        }
        return right_;
    }
    std::uint32_t blobCount() const {
        const auto valid = [](const QVR::cImageBlob& blob) { return blob.valid; };
        return static_cast<std::uint32_t>(
            std::count_if(manager.blobs.begin(), manager.blobs.end(), valid));
    }
    std::string sizeName() const {
        return std::to_string(scene.image.width) + "x" + std::to_string(scene.image.height);
    }

    Scene scene;
    QVR::blobManager manager;
    QVR::touchManager touches;

  private:
    bool prepared_ = false;
    bool right_ = false;
};

using SharedSubject = std::shared_ptr<Subject>;

struct Steps {
    const char* name;
    void (*run)(Subject& subject);
};

void mask(Subject& subject) {
    subject.manager.processFrame(subject.scene.image.data());
}

void blobs(Subject& subject) {
    subject.manager.extractBlobs(subject.scene.image.data());
}

// All that happens to a depth frame, up to the records that are sent.
void detect(Subject& subject) {
    mask(subject);
    blobs(subject);
    subject.manager.updateTouches(&subject.touches);
    const QVR::NetworkTouch* records = nullptr;
    subject.touches.getTouches(&records);
    benchmark::DoNotOptimize(records);
}

constexpr std::array<Steps, 3> allSteps{
    {{"processFrame", mask}, {"extractBlobs", blobs}, {"detectFrame", detect}}};

void add(const std::string& name, const SharedSubject& subject, const Steps& steps) {
    benchmark::RegisterBenchmark(name.c_str(), [subject, steps](benchmark::State& state) {
        if (!subject->ready()) {
            state.SkipWithError("the result is wrong");
        }
        for (auto step : state) {
            steps.run(*subject);
            benchmark::ClobberMemory();
        }
        state.SetLabel("memoryPass/" + subject->sizeName());
    });
}

void addMemoryPass(std::uint32_t width, std::uint32_t height) {
    const std::string name = "memoryPass/" + std::to_string(width) + "x" + std::to_string(height);
    benchmark::RegisterBenchmark(name.c_str(), [width, height](benchmark::State& state) {
        const Scene scene = sparseScene(width, height);
        std::vector<std::uint8_t> marks(scene.image.pixels.size());
        for (auto step : state) {
            memoryPass(scene.image.data(), marks.size(), marks.data());
            benchmark::ClobberMemory();
        }
    });
}

// Fingertips of 30 x 40 pixels in two rows, nothing else within the clips.
Scene fingertips(std::uint32_t count) {
    std::mt19937 random(1);
    literal::Image image(640, 480);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const std::uint32_t number = x / 128 + 5 * (y / 240);
            const bool finger =
                number < count && x % 128 >= 49 && x % 128 < 79 && y % 240 >= 100 && y % 240 < 140;
            image.at(x, y) = static_cast<std::uint16_t>((finger ? 1000U : 9000U) + random() % 9);
        }
    }
    return {std::to_string(count), {}, image};
}

void addFingertips(std::uint32_t count, const Steps& steps) {
    const auto subject = std::make_shared<Subject>(fingertips(count));
    const std::string name = "blobs/" + std::to_string(count) + "/" + steps.name;
    benchmark::RegisterBenchmark(name.c_str(), [subject, steps, count](benchmark::State& state) {
        if (!subject->ready() || subject->blobCount() != count) {
            state.SkipWithError("the result is wrong");
        }
        for (auto step : state) {
            steps.run(*subject);
            benchmark::ClobberMemory();
        }
        state.SetLabel("memoryPass/" + subject->sizeName());
    });
}

} // namespace

void registerDetectionGrowth() {
    addMemoryPass(320, 240);
    addMemoryPass(1280, 720);
    for (const auto& [width, height] : sizes) {
        for (const Scene& scene : {sparseScene(width, height), denseScene(width, height)}) {
            const auto subject = std::make_shared<Subject>(scene);
            for (const Steps& steps : allSteps) {
                add("size/" + std::string(steps.name) + "/" + scene.name, subject, steps);
            }
        }
    }
    for (const Scene& scene : allScenes()) {
        add("detectFrame/" + scene.name, std::make_shared<Subject>(scene), allSteps.back());
    }
    for (const std::uint32_t count : blobCounts) {
        for (const Steps& steps : allSteps) {
            addFingertips(count, steps);
        }
    }
}

} // namespace bench
