// The part of the volume list that is read from the kernel's mount table.
#pragma once

#include <string>
#include <vector>

namespace QVR {

// "/", then in mount order every mount point whose visible file system lies on a local block
// device, according to the mount table in the file `tablePath`. Only the table is read: no mount
// point is touched. Just "/" when there is no such file.
std::vector<std::string> localMountPoints(const char* tablePath);

} // namespace QVR
