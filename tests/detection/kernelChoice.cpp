// kernel_choice NAME: succeeds when a process whose environment asks for NAME runs detection in
// that form, or in the best one where NAME is none that this processor has.
#include "detection/blobManager.h"
#include "detection/detectionKernels.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const char* const best = QVR::chooseKernels(nullptr).name;
    const std::string expected = QVR::findKernels(argv[1]) != nullptr ? argv[1] : best;
    const std::string chosen = QVR::blobManager().getKernelReadout();
    std::printf("asked for '%s', runs '%s'\n", argv[1], chosen.c_str());
    return chosen == expected ? 0 : 1;
}
