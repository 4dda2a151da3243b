// What the detection is held to.
#pragma once

#include "evaluate/Evaluation.h"

#include <optional>
#include <string>
#include <vector>

namespace evaluate {

struct Goal {
    std::string name;
    double limit = 0.0;
    bool atLeast = false; // the figure may not be below the limit; else not above it
    std::string unit;
    std::optional<double> figure;     // nothing: no scene that was played tells
    std::vector<std::string> missing; // scenes that do not reach the goal by themselves

    bool met() const { return figure && (atLeast ? *figure >= limit : *figure <= limit); }
};

// `total` is all the results together.
std::vector<Goal> goalsOf(const std::vector<SceneResult>& results, const Tally& total);

Tally totalOf(const std::vector<SceneResult>& results);

} // namespace evaluate
