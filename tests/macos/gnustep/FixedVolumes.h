// Volumes of the test's choice behind NSWorkspace. Only for programs that link FixedVolumes.mm: a
// category there takes the place of the workspace's own method, in the whole program.
#pragma once

#include <string>
#include <vector>

namespace gnustep {

// What NSWorkspace lists from now on; nothing at the program's start.
void setFixedVolumes(std::vector<std::string> volumes);

// How often it was asked since the program's start, and how many of the temporary objects that it
// made for that are gone again.
struct Lookups {
    int made = 0;
    int released = 0;
};
Lookups fixedVolumeLookups();

} // namespace gnustep
