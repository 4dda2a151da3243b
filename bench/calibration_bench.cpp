// Calibration of a batch of points through both maps, beside a copy of the points.
#include "calibration/calibrationManager.h"
#include "cases.h"

#include <array>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

constexpr std::size_t pointCount = 1000;

std::vector<QVR::Vector3> pointsInTheGrid() {
    std::mt19937 random(1);
    std::vector<QVR::Vector3> points(pointCount);
    for (QVR::Vector3& point : points) {
        point = {static_cast<double>(random() % 640), static_cast<double>(random() % 480),
                 3600.0 + static_cast<double>(random() % 1500)};
    }
    return points;
}

// A grid of 9 x 7 x 3 measured positions, each a little off, and a projection to 346 x 195 mm.
void fill(QVR::calibrationManager& calibration) {
    std::vector<QVR::Vector3> vertices;
    for (int z = 0; z < 3; ++z) {
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 9; ++x) {
                vertices.push_back({x * 80.0 + y, y * 80.0 - z, 3600.0 + z * 760.0 + x});
            }
        }
    }
    calibration.distortionMap.importCellCalibration(640, 480, 3600, 5120, 9, 7, 3, vertices);
    QVR::cellCoord corners;
    corners.corners = {{{0, 0, 0},
                        {346, 0, 0},
                        {346, 195, 0},
                        {0, 195, 0},
                        {0, 195, 90},
                        {346, 195, 90},
                        {346, 0, 90},
                        {0, 0, 90}}};
    calibration.projectionMap.set({3600, 5120, 0, 480, 0, 640}, corners);
}

void copyCase(benchmark::State& state) {
    const std::vector<QVR::Vector3> points = pointsInTheGrid();
    std::vector<QVR::Vector3> copy(points.size());
    for (auto step : state) {
        std::memcpy(copy.data(), points.data(), points.size() * sizeof points[0]);
        benchmark::ClobberMemory();
    }
}

void calibrateCase(benchmark::State& state) {
    QVR::calibrationManager calibration;
    fill(calibration);
    const std::vector<QVR::Vector3> points = pointsInTheGrid();
    std::vector<QVR::Vector3> calibrated(points.size());
    QVR::Vector3 probe = points[0];
    calibration.calibrateVector(probe);
    if (probe.x <= 0.0 || probe.x > 346.0) {
        state.SkipWithError("the maps are not in use");
    }
    for (auto step : state) {
        for (std::size_t i = 0; i < points.size(); ++i) {
            calibrated[i] = points[i];
            calibration.calibrateVector(calibrated[i]);
        }
        benchmark::ClobberMemory();
    }
    state.SetLabel("memcpyOf1000Points");
}

} // namespace

void registerCalibration() {
    benchmark::RegisterBenchmark("memcpyOf1000Points", copyCase);
    benchmark::RegisterBenchmark("calibrate1000Points", calibrateCase);
}

} // namespace bench
