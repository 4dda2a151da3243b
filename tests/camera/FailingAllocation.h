// Lets one allocation of a given size fail, as it does when memory runs out.
#pragma once

#include <cstddef>

namespace support {

// The next `new` of exactly `bytes` bytes throws std::bad_alloc; later ones succeed again.
void refuseNextAllocationOf(std::size_t bytes);
// Whether the refused allocation is still to come.
bool allocationRefusalPending();

} // namespace support
