#include "common/nearestPairs.h"

#include <algorithm>

namespace programs {

std::vector<NearestPair>
nearestPairs(std::size_t firsts, std::size_t seconds, double farthest,
             const std::function<double(std::size_t, std::size_t)>& distance) {
    std::vector<NearestPair> candidates;
    for (std::size_t first = 0; first < firsts; ++first) {
        for (std::size_t second = 0; second < seconds; ++second) {
            const double apart = distance(first, second);
            if (apart <= farthest) {
                candidates.push_back({first, second, apart});
            }
        }
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const NearestPair& a, const NearestPair& b) { return a.distance < b.distance; });
    std::vector<NearestPair> pairs;
    for (const NearestPair& candidate : candidates) {
        const bool taken = std::any_of(pairs.begin(), pairs.end(), [&](const NearestPair& pair) {
            return pair.first == candidate.first || pair.second == candidate.second;
        });
        if (!taken) {
            pairs.push_back(candidate);
        }
    }
    return pairs;
}

} // namespace programs
