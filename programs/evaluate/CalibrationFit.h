// A calibration grid from fingers whose places are known.
#pragma once

#include "evaluate/FrameRecord.h"

#include <cstddef>
#include <vector>

namespace evaluate {

// The volume that a grid covers: a depth picture and the clip distances in depth units.
struct Volume {
    double width = 0.0;
    double height = 0.0;
    double nearest = 0.0;
    double farthest = 0.0;
};

// As the settings document has it: display positions of the vertices, x fastest, then y, then z.
struct Grid {
    int sizeX = 0;
    int sizeY = 0;
    int sizeZ = 0;
    std::vector<Point3> vertices;
    std::size_t samples = 0; // that it was fitted to
    double residual = 0.0;   // millimetres, root mean square: what the fit leaves of them
};

// Fits one smooth function from measured points to display points, a polynomial of the fourth
// degree in column, row and depth: enough for a lens, a tilt, a bent depth picture and for a blob's
// centre that lies a little off the tip. Samples far off the others are left out once.
class CalibrationFit {
  public:
    static constexpr std::size_t fewest = 150; // samples

    explicit CalibrationFit(const Volume& volume) : volume_(volume) {}

    void add(const Point3& measured, const Point3& display) {
        samples_.push_back({measured, display});
    }
    std::size_t samples() const { return samples_.size(); }

    // Needs at least `fewest` samples, spread over the volume.
    Grid fit() const;

  private:
    struct Sample {
        Point3 measured;
        Point3 display;
    };

    std::vector<double> terms(const Point3& measured) const;
    std::vector<Point3> coefficients(const std::vector<Sample>& samples) const;
    Point3 apply(const std::vector<Point3>& coefficients, const Point3& measured) const;
    double distance(const std::vector<Point3>& coefficients, const Sample& sample) const;
    double residual(const std::vector<Point3>& coefficients,
                    const std::vector<Sample>& samples) const;

    Volume volume_;
    std::vector<Sample> samples_;
};

} // namespace evaluate
