// The thread locals of a bundle. Each has a descriptor in the file: a function that gives the
// calling thread's copy, and the variable's place in the initial values.
#pragma once

#include <cstdint>

namespace loader {

class MachOFile;

// Fills in the descriptors, before their memory is protected.
void placeThreadLocals(const MachOFile& file, std::uintptr_t base);

} // namespace loader
