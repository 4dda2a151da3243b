// How much a process holds.
#pragma once

#include <cstddef>

#include <sys/types.h>

namespace soak {

struct Vitals {
    double residentMiB = 0.0;
    std::size_t descriptors = 0;
};

// Throws std::runtime_error when there is no such process.
Vitals vitalsOf(pid_t process);

} // namespace soak
