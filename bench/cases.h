// The groups of cases in this program. A case's label names the case that is its limit, "-" for
// none, and after a blank the slower form that it replaces: the report divides by both. Names the
// report makes tables of:
//
//   STEP/SCENE                  a step on its own, such as processFrame/640x480/dense
//   size/STEP/WxH/SCENE         the same step on images of several sizes
//   blobs/N/STEP                a step on an image with so many fingertips
//   grid/N/STEP                 a step with a calibration grid of N vertices an axis
//   clients/N/STREAMS           a frame from the server's network half to N clients
//   instead:LIBRARY/STEP/SCENE  what people would use instead of STEP/SCENE
#pragma once

namespace bench {

void registerDetection();
void registerDetectionGrowth();
void registerTextures();
void registerTextureForms();
void registerFrameCopies();
void registerIntake();
void registerCalibration();
void registerCalibrationGrowth();
void registerClients();
void registerOpenCv(); // only with QVR_BENCH_OPENCV
void registerLibyuv(); // only with QVR_BENCH_LIBYUV

} // namespace bench
