// Lets AddressSanitizer report reads of pictures that are no longer good; no effect without it.
#pragma once

#include <span>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVR_CAMERA_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QVR_CAMERA_ADDRESS_SANITIZER 1
#endif

#ifdef QVR_CAMERA_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace camera {

template <class Sample>
void markStale([[maybe_unused]] std::span<Sample> picture) {
#ifdef QVR_CAMERA_ADDRESS_SANITIZER
    __asan_poison_memory_region(picture.data(), picture.size_bytes());
#endif
}

template <class Sample>
void markUsable([[maybe_unused]] std::span<Sample> picture) {
#ifdef QVR_CAMERA_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(picture.data(), picture.size_bytes());
#endif
}

} // namespace camera
