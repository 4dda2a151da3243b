// Many errors in two figures.
#pragma once

#include <vector>

namespace programs {

struct ErrorFigures {
    double mean = 0;
    double p95 = 0; // 95 of 100 errors are not larger
};

// Zeros without any error.
ErrorFigures figuresOf(std::vector<double> errors);

} // namespace programs
