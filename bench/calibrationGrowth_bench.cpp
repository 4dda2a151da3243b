// The calibration over the size of its grid: looking a point up, and reading the document beside
// a bare parse of the same text.
#include "calibration/calibrationBlock.h"
#include "cases.h"

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <json11.hpp>
#include <nlohmann/json.hpp>

namespace bench {

namespace {

constexpr std::array<int, 6> vertexCounts{2, 4, 8, 16, 32, 64};
constexpr std::size_t pointCount = 1000;
constexpr int imageWidth = 640;
constexpr int imageHeight = 480;
constexpr int nearClip = 1600;
constexpr int farClip = 2240;

// The position of a vertex as a camera might have measured it: near its place, never on it.
QVR::Vector3 vertex(int x, int y, int z, int sizeX, int sizeY, int sizeZ) {
    return {1.003 * x * imageWidth / (sizeX - 1) - 0.1 * y,
            0.998 * y * imageHeight / (sizeY - 1) + 0.1 * x,
            nearClip + 1.0 * z * (farClip - nearClip) / (sizeZ - 1) + 0.01 * x};
}

std::vector<QVR::Vector3> vertices(int sizeX, int sizeY, int sizeZ) {
    std::vector<QVR::Vector3> all;
    for (int z = 0; z < sizeZ; ++z) {
        for (int y = 0; y < sizeY; ++y) {
            for (int x = 0; x < sizeX; ++x) {
                all.push_back(vertex(x, y, z, sizeX, sizeY, sizeZ));
            }
        }
    }
    return all;
}

// Within `extent` pixels of the image's middle: a finger's path, or the whole grid.
std::vector<QVR::Vector3> points(int extent) {
    std::mt19937 random(1);
    const auto within = [&](int middle, int most) {
        const int half = std::min(extent, most) / 2;
        return middle + static_cast<int>(random() % static_cast<unsigned>(2 * half)) - half;
    };
    std::vector<QVR::Vector3> all(pointCount);
    for (QVR::Vector3& point : all) {
        point = {within(imageWidth / 2, imageWidth) + 0.5,
                 within(imageHeight / 2, imageHeight) + 0.5,
                 within((nearClip + farClip) / 2, farClip - nearClip) + 0.5};
    }
    return all;
}

void addLookup(int count, const char* name, int extent) {
    const std::string caseName = "grid/" + std::to_string(count) + "/" + name;
    const std::string limit = std::string("grid/2/") + name;
    benchmark::RegisterBenchmark(caseName.c_str(), [=](benchmark::State& state) {
        QVR::calibrationBlock block;
        block.importCellCalibration(imageWidth, imageHeight, nearClip, farClip, count, count, count,
                                    vertices(count, count, count));
        const std::vector<QVR::Vector3> raw = points(extent);
        std::vector<QVR::Vector3> calibrated(raw);
        block.calibrateVector(calibrated[0]);
        if (calibrated[0].x == -1.0 || calibrated[0].x == raw[0].x) {
            state.SkipWithError("the grid is not in use");
        }
        for (auto step : state) {
            for (std::size_t i = 0; i < raw.size(); ++i) {
                calibrated[i] = raw[i];
                block.calibrateVector(calibrated[i]);
            }
            benchmark::ClobberMemory();
        }
        if (caseName != limit) {
            state.SetLabel(limit);
        }
    });
}

// A calibration document with a grid of 64 x 48 x 16 vertices.
std::string largeDocument() {
    json11::Json::array numbers;
    for (const QVR::Vector3& position : vertices(64, 48, 16)) {
        numbers.insert(numbers.end(), {position.x, position.y, position.z});
    }
    return json11::Json(json11::Json::object{
                            {"depthResX", imageWidth},
                            {"depthResY", imageHeight},
                            {"nearClipMeters", 0.2},
                            {"farClipMeters", 0.28},
                            {"calibration",
                             json11::Json::object{
                                 {"sizeX", 64}, {"sizeY", 48}, {"sizeZ", 16}, {"verts", numbers}}},
                        })
        .dump();
}

void importCase(benchmark::State& state) {
    const std::string text = largeDocument();
    for (auto step : state) {
        QVR::calibrationBlock block;
        if (block.importCellCalibration(text, 8000.0f) != 0 || block.cells.size() != 63 * 47 * 15) {
            state.SkipWithError("the grid was not read");
            break;
        }
    }
    state.SetLabel("bareParse/64x48x16");
}

void parseCase(benchmark::State& state) {
    const std::string text = largeDocument();
    for (auto step : state) {
        std::string error;
        benchmark::DoNotOptimize(json11::Json::parse(text, error));
        if (!error.empty()) {
            state.SkipWithError("the text is no JSON");
            break;
        }
    }
}

// Counts the numbers and keeps nothing.
struct NumberCounter : nlohmann::json_sax<nlohmann::json> {
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return count(); }
    bool number_unsigned(number_unsigned_t) override { return count(); }
    bool number_float(number_float_t, const string_t&) override { return count(); }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }
    bool count() {
        ++numbers;
        return true;
    }
    std::size_t numbers = 0;
};

void scanCase(benchmark::State& state) {
    const std::string text = largeDocument();
    for (auto step : state) {
        NumberCounter counter;
        if (!nlohmann::json::sax_parse(text, &counter) || counter.numbers < 3 * 64 * 48 * 16) {
            state.SkipWithError("the text is no JSON");
            break;
        }
    }
    state.SetLabel("bareParse/64x48x16");
}

} // namespace

void registerCalibrationGrowth() {
    for (const int count : vertexCounts) {
        addLookup(count, "nearbyPoints", 40);
        addLookup(count, "scatteredPoints", imageWidth);
    }
    benchmark::RegisterBenchmark("bareParse/64x48x16", parseCase);
    benchmark::RegisterBenchmark("bareScan/64x48x16", scanCase);
    benchmark::RegisterBenchmark("importGrid/64x48x16", importCase);
}

} // namespace bench
