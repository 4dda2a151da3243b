#include "detection/detectionKernels.h"

#include "detection/vectorForms.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace QVR {

namespace {

FlatnessResult markAll(const DepthView& image, const FlatnessSettings& settings, std::uint8_t*,
                       std::uint8_t* mask) {
    return markFlatPixels(image, settings, mask);
}

void cutAll(const DepthView& image, const FlatnessSettings&, std::uint16_t cut, const std::uint8_t*,
            std::uint8_t* mask) {
    clearBeyondCut(image.pixels, std::size_t{image.width} * image.height, cut, mask);
}

constexpr DetectionKernels plainKernels{"plain", markAll, cutAll, findRuns, addRowToCenter};

std::atomic<const DetectionKernels*> inUse{nullptr};

} // namespace

const DetectionKernels* findKernels(const char* name) {
    for (const VectorForm& form : vectorForms()) {
        if (std::strcmp(form.kernels->name, name) == 0) {
            return form.supported ? form.kernels : nullptr;
        }
    }
    return std::strcmp(plainKernels.name, name) == 0 ? &plainKernels : nullptr;
}

const DetectionKernels& chooseKernels(const char* name) {
    const DetectionKernels* chosen = name == nullptr ? nullptr : findKernels(name);
    if (chosen != nullptr) {
        return *chosen;
    }
    chosen = &plainKernels;
    for (const VectorForm& form : vectorForms()) {
        chosen = form.supported ? form.kernels : chosen;
    }
    return *chosen;
}

const DetectionKernels& activeKernels() {
    const DetectionKernels* kernels = inUse.load(std::memory_order_acquire);
    if (kernels == nullptr) {
        const DetectionKernels& chosen = chooseKernels(std::getenv("QVR_DETECTION_KERNELS"));
        // Whoever was first, and be it a forced form, stays.
        inUse.compare_exchange_strong(kernels, &chosen, std::memory_order_acq_rel);
        kernels = inUse.load(std::memory_order_acquire);
    }
    return *kernels;
}

void forceKernels(const DetectionKernels& kernels) {
    inUse.store(&kernels, std::memory_order_release);
}

} // namespace QVR
