// How well the host saw what happened.
#pragma once

#include "common/ErrorFigures.h"
#include "demo/Alignment.h"
#include "demo/TouchRecords.h"

#include <cstddef>
#include <string>
#include <vector>

namespace demo {

struct Findings {
    std::size_t frames = 0; // received by the host
    double frameRate = 0;
    std::size_t touchDowns = 0;
    std::size_t mostAtOnce = 0;
    std::size_t strangers = 0; // host frames with touches that the server never sent

    // With a scene that knows its truth:
    bool truthKnown = false;
    std::size_t compared = 0; // touches of single frames that were compared with a finger
    programs::ErrorFigures pixels;
    programs::ErrorFigures millimeters; // on the display's plane
    std::size_t ghosts = 0;             // touches of single frames without any finger near
    std::size_t contacts = 0;           // times that a finger touched long enough to be reported
    std::size_t missed = 0;             // contacts that the host never heard of
};

// A finger that touches for fewer frames may be over before it is believed.
inline constexpr std::size_t shortestContact = 5;

Findings judge(const std::vector<HostFrame>& host, const std::vector<ServerFrame>& server);

// What is wrong, in words; empty when all is fine. `tolerance` is in millimetres.
std::vector<std::string> problemsOf(const Findings& findings, double tolerance);

} // namespace demo
