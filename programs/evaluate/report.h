// The results for people and for programs.
#pragma once

#include "evaluate/Evaluation.h"
#include "evaluate/Goals.h"

#include <string>
#include <vector>

namespace evaluate {

struct Report {
    std::string settings; // the document's path
    unsigned long long seed = 1;
    std::vector<SceneResult> results;
    double seconds = 0.0; // that the evaluation took
};

// Tables of the scenes and their total, then the goals.
std::string textOf(const Report& report);

// The same as a JSON document; what could not be measured is null.
std::string jsonOf(const Report& report);

} // namespace evaluate
