#include "evaluate/CalibrationFit.h"

#include "evaluate/LeastSquares.h"

#include <array>
#include <cmath>

namespace evaluate {

namespace {

constexpr int degree = 4;
constexpr double farOff = 3.0; // times the residual
constexpr std::array<int, 3> gridSize = {17, 13, 5};

double centered(double value, double low, double high) {
    return 2.0 * (value - low) / (high - low) - 1.0;
}

double lerp(double low, double high, int step, int steps) {
    return low + (high - low) * step / steps;
}

std::size_t termCount() {
    std::size_t count = 0;
    for (int a = 0; a <= degree; ++a) {
        for (int b = 0; a + b <= degree; ++b) {
            count += static_cast<std::size_t>(degree - a - b + 1);
        }
    }
    return count;
}

} // namespace

std::vector<double> CalibrationFit::terms(const Point3& measured) const {
    const double u = centered(measured[0], 0.0, volume_.width);
    const double v = centered(measured[1], 0.0, volume_.height);
    const double w = centered(measured[2], volume_.nearest, volume_.farthest);
    std::vector<double> result;
    double forU = 1.0;
    for (int a = 0; a <= degree; ++a) {
        double forV = forU;
        for (int b = 0; a + b <= degree; ++b) {
            double forW = forV;
            for (int c = 0; a + b + c <= degree; ++c) {
                result.push_back(forW);
                forW *= w;
            }
            forV *= v;
        }
        forU *= u;
    }
    return result;
}

std::vector<Point3> CalibrationFit::coefficients(const std::vector<Sample>& samples) const {
    LeastSquares equations(termCount());
    for (const Sample& sample : samples) {
        equations.add(terms(sample.measured), sample.display);
    }
    return equations.solve();
}

Point3 CalibrationFit::apply(const std::vector<Point3>& coefficients,
                             const Point3& measured) const {
    const std::vector<double> parts = terms(measured);
    Point3 result{};
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        for (std::size_t axis = 0; axis < result.size(); ++axis) {
            result[axis] += coefficients[i][axis] * parts[i];
        }
    }
    return result;
}

double CalibrationFit::distance(const std::vector<Point3>& coefficients,
                                const Sample& sample) const {
    const Point3 fitted = apply(coefficients, sample.measured);
    return std::hypot(fitted[0] - sample.display[0], fitted[1] - sample.display[1]);
}

double CalibrationFit::residual(const std::vector<Point3>& coefficients,
                                const std::vector<Sample>& samples) const {
    double sum = 0.0;
    for (const Sample& sample : samples) {
        const double off = distance(coefficients, sample);
        sum += off * off;
    }
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

Grid CalibrationFit::fit() const {
    std::vector<Point3> fitted = coefficients(samples_);
    const double limit = farOff * residual(fitted, samples_);
    std::vector<Sample> kept;
    for (const Sample& sample : samples_) {
        if (distance(fitted, sample) <= limit) {
            kept.push_back(sample);
        }
    }
    fitted = coefficients(kept);

    Grid grid;
    grid.sizeX = gridSize[0];
    grid.sizeY = gridSize[1];
    grid.sizeZ = gridSize[2];
    grid.samples = kept.size();
    grid.residual = residual(fitted, kept);
    for (int k = 0; k < grid.sizeZ; ++k) {
        for (int j = 0; j < grid.sizeY; ++j) {
            for (int i = 0; i < grid.sizeX; ++i) {
                grid.vertices.push_back(
                    apply(fitted, {lerp(0.0, volume_.width, i, grid.sizeX - 1),
                                   lerp(0.0, volume_.height, j, grid.sizeY - 1),
                                   lerp(volume_.nearest, volume_.farthest, k, grid.sizeZ - 1)}));
            }
        }
    }
    return grid;
}

} // namespace evaluate
