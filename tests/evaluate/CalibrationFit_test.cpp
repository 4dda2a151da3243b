#include "calibration/calibrationBlock.h"
#include "evaluate/CalibrationFit.h"
#include "evaluate/LeastSquares.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace {

using evaluate::CalibrationFit;
using evaluate::Grid;
using evaluate::LeastSquares;
using evaluate::Point3;
using evaluate::Volume;

constexpr Volume volume{640, 480, 1600, 2240};

// A pinhole camera whose corners read too far.
Point3 truthBehind(const Point3& measured) {
    const double u = (measured[0] - 320) / 400;
    const double v = (measured[1] - 240) / 400;
    const double z = measured[2] / 8 / (1 + 0.125 * (u * u + v * v));
    return {(measured[0] - 314) / 476 * z + 170, (measured[1] - 242) / 476 * z + 106, 430 - z};
}

template <typename Visit>
void everywhere(Visit visit) {
    for (int x = 30; x <= 610; x += 45) {
        for (int y = 30; y <= 450; y += 40) {
            for (int z = 1620; z <= 2220; z += 120) {
                visit(Point3{double(x), double(y), double(z)});
            }
        }
    }
}

TEST(LeastSquares, FindsTheCoefficientsOfALine) {
    LeastSquares equations(2);
    for (int x = -3; x <= 5; ++x) {
        equations.add({1.0, double(x)}, {2.0 + 3.0 * x, -1.0 * x, 7.0});
    }
    const auto solution = equations.solve();
    ASSERT_EQ(solution.size(), 2u);
    EXPECT_NEAR(solution[0][0], 2, 1e-6);
    EXPECT_NEAR(solution[1][0], 3, 1e-6);
    EXPECT_NEAR(solution[1][1], -1, 1e-6);
    EXPECT_NEAR(solution[0][2], 7, 1e-6);
}

TEST(LeastSquares, TakesTheMiddleOfContradictions) {
    LeastSquares equations(1);
    equations.add({1.0}, {1, 0, 0});
    equations.add({1.0}, {3, 0, 0});
    EXPECT_NEAR(equations.solve()[0][0], 2, 1e-6);
}

TEST(LeastSquares, KeepsWhatNothingIsSaidAboutSmall) {
    LeastSquares equations(2);
    equations.add({1.0, 0.0}, {1, 1, 1});
    const auto solution = equations.solve();
    EXPECT_NEAR(solution[0][0], 1, 1e-6);
    EXPECT_NEAR(solution[1][0], 0, 1e-6);
    EXPECT_TRUE(LeastSquares(2).solve().empty());
}

TEST(CalibrationFit, TheGridCarriesMeasuredPointsToTheTruth) {
    CalibrationFit fit(volume);
    everywhere([&](const Point3& point) { fit.add(point, truthBehind(point)); });
    ASSERT_GT(fit.samples(), CalibrationFit::fewest);
    const Grid grid = fit.fit();
    EXPECT_LT(grid.residual, 0.3);
    EXPECT_GE(grid.samples, fit.samples() * 9 / 10);
    ASSERT_EQ(grid.vertices.size(), static_cast<std::size_t>(grid.sizeX * grid.sizeY * grid.sizeZ));

    std::vector<QVR::Vector3> vertices;
    for (const Point3& vertex : grid.vertices) {
        vertices.push_back({vertex[0], vertex[1], vertex[2]});
    }
    QVR::calibrationBlock block;
    block.importCellCalibration(640, 480, 1600, 2240, grid.sizeX, grid.sizeY, grid.sizeZ, vertices);
    everywhere([&](const Point3& point) {
        QVR::Vector3 position{point[0], point[1], point[2]};
        block.calibrateVector(position);
        const Point3 truth = truthBehind(point);
        EXPECT_NEAR(position.x, truth[0], 0.8);
        EXPECT_NEAR(position.y, truth[1], 0.8);
        EXPECT_NEAR(position.z, truth[2], 0.8);
    });
}

TEST(CalibrationFit, LeavesOutSamplesFarOffTheOthers) {
    CalibrationFit fit(volume);
    std::size_t count = 0;
    everywhere([&](const Point3& point) {
        Point3 truth = truthBehind(point);
        truth[0] += ++count % 100 == 0 ? 60 : 0;
        fit.add(point, truth);
    });
    const Grid grid = fit.fit();
    EXPECT_LE(grid.samples, count - count / 100);
    EXPECT_LT(grid.residual, 0.5);
}

} // namespace
