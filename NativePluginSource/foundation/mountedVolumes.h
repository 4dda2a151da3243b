// The places where a calibration folder may lie: the roots of the mounted local volumes.
#pragma once

#include <string>
#include <vector>

namespace QVR {

// Root paths of the mounted local volumes as UTF-8, in the platform's stable order. Paths are as
// the platform gives them ("/" for the root volume). Network and pseudo file systems are left
// out: a file test on a dead network mount would hang the host.
std::vector<std::string> mountedVolumes();

} // namespace QVR
