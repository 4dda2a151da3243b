#include "cases.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    bench::registerDetection();
    bench::registerTextures();
    bench::registerTextureForms();
    bench::registerFrameCopies();
    bench::registerIntake();
    bench::registerCalibration();
    benchmark::AddCustomContext("compiler", QVR_BENCH_COMPILER);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
