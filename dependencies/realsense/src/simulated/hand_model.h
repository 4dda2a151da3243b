// The flesh on a pose: which capsules make up the hands.
#pragma once

#include "simulated/capsule.h"
#include "simulated/choreography.h"

#include <vector>

namespace camera::simulated {

// Radius of a fingertip in millimetres.
inline constexpr double fingertipRadius = 8.5;

// Stretched fingers where the pose has them, folded ones where it has none, palm, wrist and sleeve.
std::vector<Capsule> capsulesOf(const ScenePose& pose);

} // namespace camera::simulated
