// Makes the functions of a mapped bundle known to the unwinder of this system, so that exceptions
// are thrown and caught in it.
#pragma once

#include <cstdint>

namespace loader {

class MachOFile;

// For the life of the process.
void registerUnwindTables(const MachOFile& file, std::uintptr_t base);

} // namespace loader
