// Counts the allocations of the test program it is linked into.
#pragma once

// Calls of operator new since the program's start.
int countedAllocations();
