// In place of everything else here in a build without libpng.
#include "images/sources.h"

#include <stdexcept>

namespace camera {

std::unique_ptr<FrameSource> openImages(const SourceOptions& options) {
    throw std::runtime_error("camera source \"" + options.scheme() +
                             "\" needs libpng, which this build is without. Configure anew with "
                             "-DQVR_IMAGE_SOURCE=ON");
}

} // namespace camera
