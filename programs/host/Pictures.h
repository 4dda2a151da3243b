// Saves what a host saw as PNG files.
#pragma once

#include "host/Snapshot.h"

#include <string>
#include <vector>

namespace host {

class Pictures {
  public:
    struct Report {
        std::vector<std::string> written; // paths
        std::vector<std::string> skipped; // why a picture was not written: its stream is not sent
        std::string problem;              // empty, or why the rest could not be written
    };

    // color.png, depth.png, processed.png and touches.png in `folder`, which is made if need be.
    static Report save(const Snapshot& snapshot, const std::string& folder);

    // The mask with its marks (1 to 16) spread over the greys that an eye tells apart.
    static programs::GrayImage readableMask(const programs::GrayImage& mask);
    // The depth picture (else the colour picture, else the mask) twice as large, with the outlines
    // of what the detection marked and the touches as numbered circles. Empty without any stream.
    static programs::ColorImage compose(const Snapshot& snapshot);
};

} // namespace host
