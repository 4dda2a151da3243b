// Joining what was found with what is there.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace programs {

struct NearestPair {
    std::size_t first = 0;
    std::size_t second = 0;
    double distance = 0;
};

// Joins things of two kinds, counted `firsts` and `seconds`: the nearest two first, each once, none
// that are further apart than `farthest`. Of equal distances the lower numbers come first; what
// has no distance (NaN) is not joined.
std::vector<NearestPair>
nearestPairs(std::size_t firsts, std::size_t seconds, double farthest,
             const std::function<double(std::size_t, std::size_t)>& distance);

} // namespace programs
