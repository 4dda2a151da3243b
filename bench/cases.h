// The groups of cases in this program. A case's label names the case that is its limit: the
// report divides the one by the other.
#pragma once

namespace bench {

void registerDetection();
void registerTextures();
void registerIntake();
void registerCalibration();

} // namespace bench
