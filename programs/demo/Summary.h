// The demo's findings in words.
#pragma once

#include "demo/Findings.h"

#include <string>
#include <vector>

namespace demo {

// The figures, for someone who sees the project for the first time.
std::string figuresText(const Findings& findings, double tolerance);

// The pictures in `folder`, one a line with what is on it; those that are not there are left out.
std::string picturesText(const std::string& folder);

} // namespace demo
