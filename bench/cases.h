// The groups of cases in this program. A case's label names the case that is its limit, "-" for
// none, and after a blank the slower form that it replaces: the report divides by both.
#pragma once

namespace bench {

void registerDetection();
void registerTextures();
void registerTextureForms();
void registerFrameCopies();
void registerIntake();
void registerCalibration();

} // namespace bench
