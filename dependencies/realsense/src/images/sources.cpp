#include "images/sources.h"

#include "images/image_folder_source.h"

namespace camera {

std::unique_ptr<FrameSource> openImages(const SourceOptions& options) {
    return std::make_unique<ImageFolderSource>(options);
}

} // namespace camera
