#include "evaluate/LeastSquares.h"

#include <cmath>

namespace evaluate {

namespace {

// Keeps unknowns finite that no equation speaks of; far below what any measurement says.
constexpr double damping = 1e-9;

} // namespace

LeastSquares::LeastSquares(std::size_t unknowns)
    : size_(unknowns), matrix_(unknowns * unknowns, 0.0), right_(unknowns, Values{}) {}

void LeastSquares::add(const std::vector<double>& terms, const Values& values) {
    for (std::size_t row = 0; row < size_; ++row) {
        for (std::size_t column = 0; column <= row; ++column) {
            at(row, column) += terms[row] * terms[column];
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            right_[row][i] += terms[row] * values[i];
        }
    }
}

std::vector<LeastSquares::Values> LeastSquares::solve() const {
    // Cholesky: the matrix becomes lower * transposed(lower).
    std::vector<double> lower = matrix_;
    const auto entry = [&](std::size_t row, std::size_t column) -> double& {
        return lower[row * size_ + column];
    };
    double trace = 0.0;
    for (std::size_t i = 0; i < size_; ++i) {
        trace += entry(i, i);
    }
    if (!(trace > 0.0)) {
        return {};
    }
    std::vector<Values> result = right_;
    for (std::size_t row = 0; row < size_; ++row) {
        entry(row, row) += damping * trace / static_cast<double>(size_);
        for (std::size_t column = 0; column <= row; ++column) {
            double sum = entry(row, column);
            for (std::size_t k = 0; k < column; ++k) {
                sum -= entry(row, k) * entry(column, k);
            }
            entry(row, column) = row == column ? std::sqrt(sum) : sum / entry(column, column);
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t row = 0; row < size_; ++row) {
            for (std::size_t k = 0; k < row; ++k) {
                result[row][i] -= entry(row, k) * result[k][i];
            }
            result[row][i] /= entry(row, row);
        }
        for (std::size_t row = size_; row-- > 0;) {
            for (std::size_t k = row + 1; k < size_; ++k) {
                result[row][i] -= entry(k, row) * result[k][i];
            }
            result[row][i] /= entry(row, row);
        }
    }
    return result;
}

} // namespace evaluate
