#include "demo/Alignment.h"

#include <algorithm>
#include <cmath>

namespace demo {

namespace {

bool sameNumber(float a, float b) {
    if (std::isnan(a) || std::isnan(b)) {
        return std::isnan(a) && std::isnan(b);
    }
    return std::fabs(a - b) <= 1e-6f * std::max({1.0f, std::fabs(a), std::fabs(b)});
}

bool sameTouch(const Touch& a, const Touch& b) {
    return a.slot == b.slot &&
           std::equal(a.position.begin(), a.position.end(), b.position.begin(), sameNumber);
}

} // namespace

bool sameTouches(const HostFrame& host, const ServerFrame& server) {
    return std::equal(host.touches.begin(), host.touches.end(), server.touches.begin(),
                      server.touches.end(),
                      [](const Touch& a, const ServerTouch& b) { return sameTouch(a, b.touch); });
}

Alignment align(const std::vector<HostFrame>& host, const std::vector<ServerFrame>& server) {
    Alignment alignment;
    std::size_t next = 0;
    std::size_t before = 0; // frames received before the first pair
    std::size_t after = 0;  // and since the last one
    for (std::size_t i = 0; i < host.size(); ++i) {
        if (host[i].result < 0) {
            continue;
        }
        (alignment.pairs.empty() ? before : after) += 1;
        if (host[i].touches.empty()) {
            continue;
        }
        std::size_t found = next;
        while (found < server.size() && !sameTouches(host[i], server[found])) {
            ++found;
        }
        if (found == server.size()) {
            ++alignment.strangers;
            continue;
        }
        if (alignment.pairs.empty()) {
            --before; // the pair itself
        }
        alignment.pairs.push_back({i, found});
        after = 0;
        next = found + 1;
    }
    if (alignment.pairs.empty()) {
        alignment.endHeard = before > 0 ? server.size() : 0;
    } else {
        const std::size_t first = alignment.pairs.front().server;
        const std::size_t last = alignment.pairs.back().server;
        alignment.firstHeard = first - std::min(first, before);
        alignment.endHeard = std::min(server.size(), last + 1 + after);
    }
    return alignment;
}

} // namespace demo
