// Fitting a sum of known functions to measurements.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace evaluate {

// Collects equations `terms . coefficients = values`, for three values at once, and solves them in
// the least-squares sense.
class LeastSquares {
  public:
    using Values = std::array<double, 3>;

    explicit LeastSquares(std::size_t unknowns);

    void add(const std::vector<double>& terms, const Values& values);

    // By unknown; what the equations leave open stays small. Empty when there is nothing to solve.
    std::vector<Values> solve() const;

  private:
    double& at(std::size_t row, std::size_t column) { return matrix_[row * size_ + column]; }

    std::size_t size_;
    std::vector<double> matrix_; // the normal equations, lower triangle
    std::vector<Values> right_;
};

} // namespace evaluate
