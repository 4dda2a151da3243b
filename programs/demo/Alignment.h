// Which frame of the server each frame of the host is.
#pragma once

#include "demo/TouchRecords.h"

#include <cstddef>
#include <vector>

namespace demo {

// Frames carry no number on the network, and a host receives some of the server's frames, in
// their order. So the two logs are walked together and frames joined that hold the same touches.
// Frames without touches say nothing and are not joined.
struct Alignment {
    struct Pair {
        std::size_t host = 0; // indices into the two logs
        std::size_t server = 0;
    };
    std::vector<Pair> pairs;
    std::size_t strangers = 0; // frames of the host with touches that the server never sent

    // The server's frames during which the host listened, first and one past the last: as far as
    // the pairs tell, counting a server frame for every frame the host received before and after.
    std::size_t firstHeard = 0;
    std::size_t endHeard = 0;
};

Alignment align(const std::vector<HostFrame>& host, const std::vector<ServerFrame>& server);

// The same slots at the same places, up to the last digits of single precision.
bool sameTouches(const HostFrame& host, const ServerFrame& server);

} // namespace demo
