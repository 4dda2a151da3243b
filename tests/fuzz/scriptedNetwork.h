// A camera server without a network: replaces the system calls below the TCP client in the program
// it is linked into. No name is ever looked up, no host ever reached.
#pragma once

#include <cstddef>
#include <string>

namespace fuzzing {

struct Network {
    bool reachable = true; // otherwise every connection is refused
    std::string bytes;     // what the server sends, over all connections together
    std::size_t sent = 0;  // of these
    std::size_t piece = 0; // most bytes that one read gets; 0: as many as it asks for
    bool breaks = false;   // at the end a read fails; otherwise the server has closed
};

// What the next calls see.
Network& network();

} // namespace fuzzing
