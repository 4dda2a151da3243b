#include "common/ErrorFigures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace programs {

ErrorFigures figuresOf(std::vector<double> errors) {
    if (errors.empty()) {
        return {};
    }
    std::sort(errors.begin(), errors.end());
    const auto count = static_cast<double>(errors.size());
    const auto place = static_cast<std::size_t>(std::ceil(0.95 * count)) - 1;
    return {std::accumulate(errors.begin(), errors.end(), 0.0) / count, errors[place]};
}

} // namespace programs
