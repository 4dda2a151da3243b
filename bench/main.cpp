#include "cases.h"
#include "detection/detectionKernels.h"
#include "foundation/textureForms.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    bench::registerDetection();
    bench::registerDetectionGrowth();
    bench::registerTextures();
    bench::registerTextureForms();
    bench::registerFrameCopies();
    bench::registerIntake();
    bench::registerClients();
    bench::registerCalibration();
    bench::registerCalibrationGrowth();
#if QVR_BENCH_OPENCV
    bench::registerOpenCv();
#endif
#if QVR_BENCH_LIBYUV
    bench::registerLibyuv();
#endif
    benchmark::AddCustomContext("compiler", QVR_BENCH_COMPILER);
    benchmark::AddCustomContext("detection form", QVR::activeKernels().name);
    benchmark::AddCustomContext("texture form", QVR::activeTextureForm().name);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
